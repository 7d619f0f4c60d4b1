#include <gtest/gtest.h>
#include <iconv.h>
#include <qzvest/transcode.h>
#include <qzvest/ucs2.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "text/units.h"

namespace {

constexpr uint16_t kGuard = 0xABCD;

std::u16string RandomText(std::mt19937 &random, uint32_t letters, uint32_t most)
{
    std::u16string text(random() % (most + 1), u' ');
    for (char16_t &unit : text)
        unit = static_cast<char16_t>(u'a' + random() % letters);
    return text;
}

// The sizes are not looked at; counted copies neither pad nor terminate, counted appends always terminate.
TEST(UCS2, ChangesInPlace)
{
    std::vector<uint16_t> room(8, kGuard);
    const auto holds = [&](std::vector<uint16_t> units) {
        units.resize(8, kGuard);
        EXPECT_EQ(room, units);
    };
    EXPECT_EQ(SMUCS2Strcpy_s(room.data(), 1, Units(u"xyz").data()), room.data());
    holds({'x', 'y', 'z', 0});
    EXPECT_EQ(SMUCS2Strcat_s(room.data(), 1, Units(u"de").data()), room.data());
    holds({'x', 'y', 'z', 'd', 'e', 0});
    SMUCS2Strncpy(room.data(), Units(u"abcde").data(), 2);
    SMUCS2Strncpy(room.data(), Units(u"w").data(), 0);
    holds({'a', 'b', 'z', 'd', 'e', 0});
    SMUCS2Strncpy_s(room.data(), 0, Units(u"q").data(), 5);
    holds({'q', 0, 'z', 'd', 'e', 0});
    SMUCS2Strncat(room.data(), Units(u"abcde").data(), 2);
    holds({'q', 'a', 'b', 0, 'e', 0});
    SMUCS2Strncat_s(room.data(), 0, Units(u"c").data(), 9);
    SMUCS2Strncat(room.data(), Units(u"d").data(), 0);
    holds({'q', 'a', 'b', 'c', 0, 0});
    SMUCS2Strset_s(room.data(), 1, 'x');
    holds({'x', 'x', 'x', 'x', 0, 0});
    SMUCS2Strnset_s(room.data(), 1, 'y', 7);
    holds({'y', 'y', 'y', 'y', 'y', 'y', 'y'});
}

TEST(UCS2, CompareGivesACutDifference)
{
    EXPECT_EQ(SMUCS2Strcmp(Units(u"ab").data(), Units(u"ab").data()), 0u);
    EXPECT_EQ(SMUCS2Strcmp(Units(u"abz").data(), Units(u"ab").data()), uint32_t{'z'});
    EXPECT_EQ(SMUCS2Strcmp(Units(u"ab").data(), Units(u"abz").data()), 0xFF86u);
    EXPECT_EQ(SMUCS2Strcmp(Units(u"\xFFFF").data(), Units(u"\x0001").data()), 0xFFFEu);
}

// The searches and spans beside std::u16string over short texts of few letters.
TEST(UCS2, SearchesAndSpansAgreeWithTheStandardLibrary)
{
    std::mt19937 random(52);
    for (int round = 0; round < 20000; ++round) {
        const std::u16string hay = RandomText(random, 3, 12);
        const std::u16string set = RandomText(random, 2, 3);
        const auto h = Units(hay), s = Units(set);
        const size_t at = hay.find(set);
        EXPECT_EQ(SMUCS2Strstr(h.data(), s.data()), at == hay.npos ? nullptr : h.data() + at);
        const size_t outside = std::min(hay.find_first_not_of(set), hay.size());
        EXPECT_EQ(SMUCS2Strspn(h.data(), s.data()), set.empty() ? 0 : outside);
        EXPECT_EQ(SMUCS2Strcspn(h.data(), s.data()), std::min(hay.find_first_of(set), hay.size()));
        const size_t b = hay.find(u'b');
        EXPECT_EQ(SMUCS2Strchr(h.data(), 'b'), b == hay.npos ? nullptr : h.data() + b);
        EXPECT_EQ(SMUCS2Strchr(h.data(), 0), h.data() + hay.size());
        EXPECT_EQ(SMUCS2Strlen(h.data()), hay.size());
        auto reversed = h;
        EXPECT_EQ(Text(SMUCS2Strrev(reversed.data())), std::u16string(hay.rbegin(), hay.rend()));
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST(UCS2, TokensShareOnePosition)
{
    auto list = Units(u",,a,,b,");
    const auto comma = Units(u",");
    EXPECT_EQ(Text(SMUCS2Strtok(list.data(), comma.data())), u"a");
    uint16_t *context = list.data();
    EXPECT_EQ(Text(SMUCS2Strtok_s(nullptr, comma.data(), &context)), u"b"); // goes on where the plain call was
    EXPECT_EQ(context, list.data());
    EXPECT_EQ(SMUCS2Strtok(nullptr, comma.data()), nullptr);
    EXPECT_EQ(SMUCS2Strtok_s(nullptr, comma.data(), nullptr), nullptr);

    EXPECT_EQ(Text(SMUCS2Strtok(Units(u"a,b").data(), Units(u"").data())), u"a,b");
    auto first = Units(u"a,b"), empty = Units(u"");
    SMUCS2Strtok(first.data(), comma.data());
    EXPECT_EQ(SMUCS2Strtok(empty.data(), comma.data()), nullptr); // and the old position is gone
    EXPECT_EQ(SMUCS2Strtok(nullptr, comma.data()), nullptr);
}

TEST(UCS2ToEscape, EveryUnitHasItsText)
{
    const std::string specials = "\t\n\r\\", letters = "tnr\\";
    for (uint32_t unit = 1; unit < 0x10000; ++unit) {
        const uint16_t source[] = {static_cast<uint16_t>(unit), 0};
        char expected[8];
        const size_t special = unit < 0x80 ? specials.find(static_cast<char>(unit)) : specials.npos;
        std::snprintf(expected, sizeof expected, unit >= 0x20 && unit < 0x80 ? "%c" : "\\u%04x", unit);
        if (special != specials.npos)
            std::snprintf(expected, sizeof expected, "\\%c", letters[special]);
        char text[8];
        uint32_t size = sizeof text;
        ASSERT_EQ(SMUCS2ToEscape(text, &size, source), SM_STATUS_OK);
        ASSERT_STREQ(text, expected) << unit;
        ASSERT_EQ(size, std::strlen(expected) + 1);
    }
}

TEST(UCS2ToEscape, SizeRules)
{
    const auto source = Units(u"\tA\u00e9");
    char text[12] = "untouched";
    uint32_t size = 9;
    EXPECT_EQ(SMUCS2ToEscape(text, &size, nullptr), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMUCS2ToEscape(text, &size, source.data()), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 10u);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, source.data()), SM_STATUS_OK);
    EXPECT_EQ(SMUCS2ToEscape(text, nullptr, source.data()), SM_STATUS_OK);
    EXPECT_STREQ(text, "\\tA\\u00e9");
}

// All of the plane that is no surrogate, in one text, both ways.
TEST(Transcode, AgreesWithIconv)
{
    std::vector<uint16_t> units;
    for (uint32_t unit = 1; unit < 0x10000; unit += unit == 0xD7FF ? 0x801 : 1)
        units.push_back(static_cast<uint16_t>(unit));
    units.push_back(0);
    std::string bytes(units.size() * 3, '\0');
    const iconv_t converter = iconv_open("UTF-8", "UTF-16LE");
    char *in = reinterpret_cast<char *>(units.data()), *out = bytes.data();
    size_t inLeft = units.size() * 2, outLeft = bytes.size();
    ASSERT_EQ(iconv(converter, &in, &inLeft, &out, &outLeft), 0u);
    iconv_close(converter);
    bytes.resize(bytes.size() - outLeft);

    std::string ours(bytes.size(), '\0');
    auto size = static_cast<uint32_t>(ours.size());
    EXPECT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, units.data()), SM_STATUS_OK);
    EXPECT_TRUE(ours == bytes);
    std::vector<uint16_t> back(units.size());
    size = static_cast<uint32_t>(2 * back.size());
    EXPECT_EQ(SMUTF8StrToUCS2Str(back.data(), &size, bytes.data()), SM_STATUS_OK);
    EXPECT_TRUE(back == units);
    EXPECT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(back.data(), nullptr, bytes.data()), SM_STATUS_INVALID_PARAMETER);
}

} // namespace
