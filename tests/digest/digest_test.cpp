// Base64, sums and the digest through the exports, beside plain models, zlib and md5sum. Sources and destinations are
// of exact size.

#include <gtest/gtest.h>
#include <qzvest/qzvest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "digest/guarded.h"
#include "os/folder.h"
#include "support/ownlocale.h"

namespace {

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string EncodeModel(const std::string &bytes, const std::string &alphabet)
{
    std::string text;
    uint32_t bits = 0;
    int count = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<uint8_t>(byte);
        for (count += 8; count >= 6; count -= 6)
            text += alphabet[bits >> (count - 6) & 63];
    }
    if (count > 0)
        text += alphabet[bits << (6 - count) & 63];
    return text.append((4 - text.size() % 4) % 4, '=');
}

std::string DecodeModel(const std::string &text)
{
    std::string bytes;
    for (size_t at = 0; at + 4 <= text.size(); at += 4) {
        const std::string group = text.substr(at, 4);
        const size_t pad = group.find('=');
        if (pad < 2)
            continue;
        uint32_t bits = 0;
        for (const char character : group)
            bits = bits << 6 | static_cast<uint32_t>(std::min<size_t>(kAlphabet.find(character), 63));
        const char three[] = {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
        bytes.append(three, pad == std::string::npos ? 3 : pad - 1);
    }
    return bytes;
}

// The text with its terminator, by a call that may write and read no more.
std::string Encoded(const std::string &bytes, const char *alphabet)
{
    const Guarded source(bytes), text((bytes.size() + 2) / 3 * 4 + 1);
    EXPECT_EQ(SMBase64Encode(text.bytes, source.bytes, static_cast<int32_t>(bytes.size()), alphabet), SM_STATUS_OK);
    return text.Content();
}

void ExpectDecoded(const std::string &text)
{
    const std::string expected = DecodeModel(text) + '\0';
    const Guarded source(text), bytes(expected.size());
    EXPECT_EQ(SMBase64Decode(bytes.bytes, source.bytes, static_cast<int32_t>(text.size())), SM_STATUS_OK);
    ASSERT_EQ(bytes.Content(), expected) << text;
}

TEST(Base64, VectorsMeasureTheModelToo)
{
    EXPECT_EQ(EncodeModel("\xFB\xEF\xFFr", kAlphabet), "++//cg==");
    const std::pair<std::string, std::string> kCases[] = {
        {"Zm9vYg==++//", "foob\xFB\xEF\xFF"},
        {"T\nFu", "\x4F\xF1\x6E"},  // a line break is the value 63
        {"\x80\xFF~=", "\xFF\xFF"}, // as is a byte above ASCII
        {"TQ==TQ==", "MM"},         // a pad character does not end the text
        {"T=FuTWFu", "Man"},
        {"TW=uTWFu", "MMan"}, // the third place cuts the group whatever follows
        {"TWF", ""},
    };
    for (const auto &[text, bytes] : kCases) {
        EXPECT_EQ(DecodeModel(text), bytes) << text;
        ExpectDecoded(text);
    }
    const Guarded text(std::string(1, 'x')), bytes(std::string(1, 'x'));
    EXPECT_EQ(SMBase64Encode(text.bytes, "abc", INT32_MIN, nullptr), SM_STATUS_OK);
    EXPECT_EQ(SMBase64Decode(bytes.bytes, "TWFu", INT32_MIN), SM_STATUS_OK);
    EXPECT_EQ(text.Content() + bytes.Content(), std::string(2, '\0'));
}

TEST(Base64, EncodesAnySizeWithAnyAlphabet)
{
    std::mt19937 random(63);
    const std::string reversed(kAlphabet.rbegin(), kAlphabet.rend());
    for (size_t size = 0; size <= 200; ++size) {
        const std::string bytes = RandomBytes(random, size);
        ASSERT_EQ(Encoded(bytes, nullptr), EncodeModel(bytes, kAlphabet) + '\0');
        ASSERT_EQ(Encoded(bytes, reversed.c_str()), EncodeModel(bytes, reversed) + '\0');
    }
}

TEST(Base64, DecodesAnyLengthCleanOrNot)
{
    std::mt19937 random(65);
    for (size_t length = 0; length < 256; ++length) {
        for (const unsigned strangers : {0u, 20u}) { // of 100 characters
            std::string text(length, '\0');
            for (char &character : text) {
                const bool strange = random() % 100 < strangers;
                character = strange ? random() % 8 == 0 ? '=' : static_cast<char>(random()) : kAlphabet[random() % 64];
            }
            ExpectDecoded(text);
        }
        std::string text = EncodeModel(RandomBytes(random, 66), kAlphabet); // with one stranger, which goes round
        for (size_t place = 0; place < text.size(); ++place) {
            const char own = std::exchange(text[place], static_cast<char>(length + 5 * place));
            ExpectDecoded(text);
            text[place] = own;
        }
    }
}

uint32_t Zlib(const std::string &bytes)
{
    return static_cast<uint32_t>(crc32_z(0, reinterpret_cast<const Bytef *>(bytes.data()), bytes.size()));
}

TEST(CRC32, BuffersOfAnySizeAgreeWithZlib)
{
    std::mt19937 random(61);
    for (uint32_t size = 0; size <= 1u << 21; size += size < 1200 ? 1 : 1 + size / 2) {
        const std::string bytes = RandomBytes(random, size);
        ASSERT_EQ(SMCRC32Compute_vn(Guarded(bytes).bytes, size), Zlib(bytes)) << size;
    }
}

TEST(CRC32, TextsEndAtTheTerminator)
{
    for (const size_t length : {0u, 1u, 63u, 511u, 512u, 513u, 1024u, 5000u}) { // the fold works in pieces
        const std::string upper(length, 'Q'), lower(length, 'q');
        EXPECT_EQ(SMCRC32Compute_str(upper.c_str()), Zlib(upper)) << length;
        EXPECT_EQ(SMCRC32Compute_strncase(upper.c_str()), Zlib(lower)) << length;
    }
}

TEST(CRC32, CaseFoldsAsTheLocaleSays)
{
    const char *const mixed = "aAZ@[`{09\xC4\xE4\xD7";
    EXPECT_EQ(SMCRC32Compute_strncase(mixed), Zlib("aaz@[`{09\xC4\xE4\xD7"));
    // A locale that folds bytes above ASCII, and not all letters below.
    const OwnLocale four("LC_CTYPE", LC_CTYPE,
                         "upper <U0041>;<U00C4>\nlower <U0061>;<U00E4>\n"
                         "toupper (<U0061>,<U0041>);(<U00E4>,<U00C4>)\n"
                         "tolower (<U0041>,<U0061>);(<U00C4>,<U00E4>)\n");
    ASSERT_TRUE(four.isSet);
    EXPECT_EQ(SMCRC32Compute_strncase(mixed), Zlib("aaZ@[`{09\xE4\xE4\xD7")) << "this locale has A and \xC4 alone";
}

TEST(CRC32, GeneratedSumIsOfItsOwnKind)
{
    // The bytes are all that may be read; the number to process is padded with zeros, or with data behind it.
    const std::tuple<std::string, uint32_t, uint32_t, uint32_t> kCases[] = {
        {"123456789", 9, 9, 0x5B531060}, {"123456789", 9, 0, 0xFFFFFFFF}, {"", 0, 4, 0xDEBB20E3},
        {"\x41", 1, 3, 0x7024AB2D},      {"1234", 8, 4, 0xC0AC60C4},
    };
    for (const auto &[bytes, size, processed, sum] : kCases) {
        const Guarded block(bytes);
        EXPECT_EQ(SMGenerateCRC32(block.bytes, size, processed), sum) << bytes << ' ' << processed;
    }
}

std::string Hex(const SMRFC1321Ctx &ctx)
{
    char text[33];
    for (int i = 0; i < 16; ++i)
        snprintf(text + 2 * i, 3, "%02x", ctx.digest[i]);
    return text;
}

void Add(SMRFC1321Ctx *ctx, const std::string &piece)
{
    const Guarded block(piece);
    SMRFC1321AddMsg(ctx, block.bytes, static_cast<uint32_t>(piece.size()));
}

std::string DigestOf(const std::vector<std::string> &pieces)
{
    SMRFC1321Ctx ctx;
    memset(&ctx, 0xA5, sizeof ctx);
    SMRFC1321Load(&ctx);
    for (const std::string &piece : pieces)
        Add(&ctx, piece);
    SMRFC1321ComputeMsgDigest(&ctx);
    return Hex(ctx);
}

// A digest per message, by the program of the same name.
std::vector<std::string> Md5sum(const std::vector<std::string> &messages)
{
    const Folder folder;
    std::string command = std::string("cd ") + folder.Path() + " && md5sum";
    for (size_t i = 0; i < messages.size(); ++i) {
        folder.Make(std::to_string(i), messages[i]);
        command += " " + std::to_string(i);
    }
    std::vector<std::string> digests;
    if (FILE *lines = popen(command.c_str(), "r")) {
        for (char line[64]; fgets(line, sizeof line, lines) != nullptr;)
            digests.emplace_back(line, 32);
        pclose(lines);
    }
    return digests;
}

TEST(RFC1321, MessagesInPiecesAgreeWithMd5sum)
{
    std::mt19937 random(62);
    std::vector<std::string> messages;
    for (size_t size = 0; size <= 300; ++size)
        messages.push_back(RandomBytes(random, size));
    messages.push_back(RandomBytes(random, 70000));
    const std::vector<std::string> expected = Md5sum(messages);
    ASSERT_EQ(expected.size(), messages.size());
    for (size_t i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(DigestOf({messages[i]}), expected[i]) << "message " << i;
        for (int round = 0; round < 5; ++round) {
            std::vector<std::string> pieces; // within a block, filling one, and several at once
            for (size_t at = 0; at < messages[i].size(); at += pieces.back().size())
                pieces.push_back(messages[i].substr(at, random() % 131));
            EXPECT_EQ(DigestOf(pieces), expected[i]) << "message " << i;
        }
    }
}

TEST(RFC1321, RecordShowsWhereItStands)
{
    SMRFC1321Ctx ctx;
    memset(&ctx, 0xA5, sizeof ctx);
    SMRFC1321Load(&ctx);
    EXPECT_EQ(ctx.buffer[0], 0xA5) << "loading leaves the buffer";
    EXPECT_EQ(Hex(ctx), std::string(32, '0'));
    Add(&ctx, std::string(130, 'x'));
    EXPECT_EQ(ctx.bitCount, 1040u);
    EXPECT_EQ(ctx.bufferCount, 2u);
    SMRFC1321Load(&ctx);
    SMRFC1321AddMsg(&ctx, nullptr, 0);
    Add(&ctx, "abc");
    SMRFC1321ComputeMsgDigest(&ctx);
    EXPECT_EQ(Hex(ctx), "900150983cd24fb0d6963f7d28e17f72") << "a used record starts over";
    EXPECT_EQ(ctx.bufferCount, 56u);
    SMRFC1321ComputeMsgDigest(&ctx);
    EXPECT_EQ(Hex(ctx), "7b64620c6b89d6317dde150f6de71ea5") << "a second padding";

    SMRFC1321UnLoad(&ctx);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&ctx), sizeof ctx), std::string(sizeof ctx, '\0'));
}

} // namespace
