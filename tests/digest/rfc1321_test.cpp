// The digest through the exports, beside md5sum for all the ways to cut a message.

#include <gtest/gtest.h>
#include <qzvest/qzvest.h>

#include <cstdio>
#include <vector>

#include "digest/guarded.h"
#include "os/folder.h"

namespace {

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
