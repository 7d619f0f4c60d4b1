// The sums through the exports. zlib is the measure of the first three; the fourth has literals of its own.

#include <gtest/gtest.h>
#include <qzvest/qzvest.h>
#include <zlib.h>

#include <clocale>
#include <cstdio>

#include "digest/guarded.h"
#include "digest/scratch.h"

namespace {

uint32_t Zlib(const std::string &bytes)
{
    return static_cast<uint32_t>(crc32_z(0, reinterpret_cast<const Bytef *>(bytes.data()), bytes.size()));
}

void ExpectZlib(const std::string &bytes)
{
    const Guarded block(bytes);
    ASSERT_EQ(SMCRC32Compute_vn(block.Bytes(), static_cast<uint32_t>(bytes.size())), Zlib(bytes)) << bytes.size();
}

TEST(CRC32, BuffersOfAnySizeAgreeWithZlib)
{
    std::mt19937 random(61);
    for (size_t size = 0; size <= 1200; ++size)
        ExpectZlib(RandomBytes(random, size));
    for (const size_t size : {4095u, 4096u, 4097u, 8767u, 100001u, (1u << 20) + 13})
        ExpectZlib(RandomBytes(random, size));
}

TEST(CRC32, TextsEndAtTheTerminator)
{
    EXPECT_EQ(SMCRC32Compute_str("123456789"), 0xCBF43926u);
    EXPECT_EQ(SMCRC32Compute_str(""), 0u);
    EXPECT_EQ(SMCRC32Compute_strncase(""), 0u);
    for (const size_t length : {1u, 63u, 511u, 512u, 513u, 1024u, 5000u}) { // the fold works in pieces
        const std::string upper(length, 'Q'), lower(length, 'q');
        EXPECT_EQ(SMCRC32Compute_str(upper.c_str()), Zlib(upper)) << length;
        EXPECT_EQ(SMCRC32Compute_strncase(upper.c_str()), Zlib(lower)) << length;
    }
}

// A locale of our own, as a machine may have none that folds bytes above ASCII: Latin 1 with four letters.
bool MakeLocale(const ScratchFolder &folder)
{
    std::string map = "<code_set_name> LATIN\n<mb_cur_min> 1\n<mb_cur_max> 1\n<escape_char> /\nCHARMAP\n";
    char line[32];
    for (int i = 0; i < 256; ++i)
        map.append(line, static_cast<size_t>(snprintf(line, sizeof line, "<U%04X> /x%02x\n", i, i)));
    folder.Write("map", map + "END CHARMAP\n");
    folder.Write("letters", "escape_char /\nLC_CTYPE\nupper <U0041>;<U00C4>\nlower <U0061>;<U00E4>\n"
                            "toupper (<U0061>,<U0041>);(<U00E4>,<U00C4>)\n"
                            "tolower (<U0041>,<U0061>);(<U00C4>,<U00E4>)\nEND LC_CTYPE\n");
    const std::string command = "cd '" + folder.path + "' && localedef -c -f ./map -i ./letters ./four 2>/dev/null";
    (void)std::system(command.c_str()); // 1 for the categories that are left out
    setenv("LOCPATH", folder.path.c_str(), 1);
    return setlocale(LC_CTYPE, "four") != nullptr;
}

TEST(CRC32, CaseFoldsAsTheLocaleSays)
{
    const char *const mixed = "aAZ@[`{09\xC4\xE4\xD7";
    EXPECT_EQ(SMCRC32Compute_strncase(mixed), Zlib("aaz@[`{09\xC4\xE4\xD7"));
    const ScratchFolder folder;
    ASSERT_TRUE(MakeLocale(folder));
    const uint32_t folded = SMCRC32Compute_strncase(mixed);
    setlocale(LC_CTYPE, "C");
    EXPECT_EQ(folded, Zlib("aaZ@[`{09\xE4\xE4\xD7")) << "this locale has A and \xC4 alone";
}

TEST(CRC32, GeneratedSumIsOfItsOwnKind)
{
    const struct {
        std::string bytes; // all that may be read
        uint32_t size, processed, sum;
    } kCases[] = {
        {"A", 1, 1, 0x5B2151E2},         {std::string(1, '\0'), 1, 1, 0x2DFD1072},
        {"123456789", 9, 9, 0x5B531060}, {"123456789", 9, 0, 0xFFFFFFFF},
        {"", 0, 4, 0xDEBB20E3},     // four zeros
        {"\x41", 1, 3, 0x7024AB2D}, // padded
        {"1234", 8, 4, 0xC0AC60C4}, // data behind the number to process
    };
    for (const auto &c : kCases) {
        const Guarded block(c.bytes);
        EXPECT_EQ(SMGenerateCRC32(block.Bytes(), c.size, c.processed), c.sum) << c.bytes << ' ' << c.processed;
    }
}

} // namespace
