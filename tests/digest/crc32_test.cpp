// The sums through the exports. zlib is the measure of the first three; the fourth has literals of its own.

#include <gtest/gtest.h>
#include <qzvest/qzvest.h>
#include <zlib.h>

#include "digest/guarded.h"
#include "support/ownlocale.h"

namespace {

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

} // namespace
