// Base64 through the exports, beside a plain model. Sources and destinations are of exact size.

#include <gtest/gtest.h>
#include <qzvest/qzvest.h>

#include <algorithm>

#include "digest/guarded.h"

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

} // namespace
