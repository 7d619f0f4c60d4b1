// Texts of both widths and sized strings, by the exports.

#include <gtest/gtest.h>
#include <iconv.h>
#include <qzvest/module.h>
#include <qzvest/sizedstring.h>
#include <qzvest/transcode.h>
#include <qzvest/ucs2.h>
#include <qzvest/utf8.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "text/units.h"

namespace {

template <typename Base, auto Alloc, auto Free>
struct Record : Base {
    explicit Record(uint32_t size)
    {
        Alloc(this, size);
    }
    ~Record()
    {
        Free(this);
    }
    // All units, the terminator behind them included.
    auto Held() const
    {
        return std::basic_string(this->text, this->length + 1);
    }
};
using UTF8Record = Record<SMSSUTF8Str, SMSSUTF8StrAlloc, SMSSUTF8StrFree>;
using UCS2Record = Record<SMSSUCS2Str, SMSSUCS2StrAlloc, SMSSUCS2StrFree>;

TEST(SizedString, GrowsByTheRule)
{
    // The last step wraps, and gives way to the need alone.
    const std::tuple<uint32_t, uint32_t, uint32_t, uint32_t> cases[] = {
        {16, 15, 1, 32},
        {64, 0, 1000, 1001},
        {0xFFFFF, 0xFFFFE, 1, 0x1FFFFE},
        {34359738, 34359737, 1, 42949672},
        {34359739, 34359738, 1, 34359740},
    };
    for (const auto &[capacity, givenHeld, givenAdded, after] : cases) {
        UTF8Record record(capacity);
        const std::string held(givenHeld, 'h'), added(givenAdded, 'a');
        if (givenHeld != 0)
            SMSSUTF8StrCatUTF8Str(&record, held.c_str());
        ASSERT_EQ(record.capacity, capacity);
        EXPECT_EQ(SMSSUTF8StrCatUTF8Str(&record, added.c_str()), record.text);
        EXPECT_EQ(record.capacity, after) << capacity;
        EXPECT_TRUE(record.Held() == held + added + '\0');
    }
    UCS2Record units(8);
    SMSSUCS2StrCatUCS2Str(&units, Units(u"abc").data());
    EXPECT_EQ(units.capacity, 8u);
    SMSSUCS2StrCatUCS2Str(&units, Units(u"d").data());
    EXPECT_EQ(units.capacity, 16u);
    EXPECT_EQ(Text(units.text), u"abcd");
}

TEST(SizedString, CountsCopyUnseen)
{
    UTF8Record record(8);
    SMSSUTF8StrNCatUTF8Str(&record, "0123456789", 3);
    SMSSUTF8StrNCatUTF8Str(&record, "abcdefghij", 0);
    SMSSUTF8StrNCatUTF8Str(&record, "xy\0zw", 5);
    const std::string once("012abcdefghijxy\0zw", 18);
    SMSSUTF8StrNCatUTF8Str(&record, record.text, 18); // itself: it grows, and may move
    EXPECT_EQ(record.Held(), once + once + '\0');

    UCS2Record units(2);
    const uint16_t some[] = {1, 0, 2, 9}, terminated[] = {1, 0, 2, 0};
    SMSSUCS2StrNCatUCS2Str(&units, some, 3);
    EXPECT_EQ(units.Held(), std::basic_string(terminated, 4));
}

TEST(SizedString, UTF8IntoUCS2CountsSourceBytes)
{
    UCS2Record record(64);
    SMSSUCS2StrCatUTF8Str(&record, "\xC3\xA9");
    EXPECT_EQ(record.length, 2u);
    SMSSUCS2StrCatUTF8Str(&record, "x"); // lies behind the terminator, unseen
    EXPECT_EQ(Text(record.text), u"\u00e9");
    EXPECT_EQ(record.text[2], 'x');
    SMSSUCS2StrNCatUTF8Str(&record, "hello", 2); // never cut short
    SMSSUCS2StrNCatUTF8Str(&record, "\xC3", 9);  // cannot be converted
    EXPECT_EQ(record.length, 3u);
    SMSSUCS2StrNCatUTF8Str(&record, "hi", 5);
    EXPECT_EQ(record.length, 8u);
    EXPECT_EQ(Text(record.text + 3), u"hi");
}

TEST(SizedString, UCS2IntoUTF8HasOneByteAUnit)
{
    UTF8Record record(16);
    SMSSUTF8StrCatUCS2Str(&record, Units(u"plain").data());
    SMSSUTF8StrCatUCS2Str(&record, Units(u"A\u00e9").data());
    EXPECT_EQ(record.Held(), std::string("plain\0", 6));
    SMSSUTF8StrNCatUCS2Str(&record, Units(u"A\u00e9").data(), 3);
    SMSSUTF8StrNCatUCS2Str(&record, Units(u"abc").data(), 2);
    EXPECT_EQ(record.Held(), std::string("plainA\xC3\xA9\0", 9));
}

TEST(SizedString, EmptyRecordsTakeNothing)
{
    SMSSUTF8Str record = {nullptr, 7, 7};
    EXPECT_EQ(SMSSUTF8StrAlloc(&record, 0), nullptr);
    EXPECT_EQ(record.capacity, 7u);
    SMSSUTF8StrAlloc(&record, 4);
    EXPECT_EQ(SMSSUTF8StrCatUTF8Str(&record, nullptr), record.text);
    SMSSUTF8StrFree(&record);
    SMSSUTF8StrFree(&record);
    EXPECT_EQ(record.capacity + record.length, 0u);
    EXPECT_EQ(SMSSUTF8StrCatUTF8Str(&record, "a"), nullptr);
    EXPECT_EQ(SMSSUTF8StrNCatUCS2Str(&record, Units(u"a").data(), 4), nullptr);

    UCS2Record odd(1); // no room even for the terminator, which is written all the same
    EXPECT_EQ(odd.text[0], 0u);
    SMSSUCS2StrCatUTF8Str(&odd, "ab");
    EXPECT_EQ(Text(odd.text), u"ab");
    EXPECT_EQ(odd.capacity, 6u);
}

using namespace std::string_literals;

TEST(UTF8, ChangesInPlace)
{
    // The bytes that are left, and the place of the text among them.
    const std::tuple<char *(*)(char *), const char *, std::string, ptrdiff_t> cases[] = {
        {SMUTF8ltrim, "  a\t", "\0\0a\t"s, 2},
        {SMUTF8rtrim, "  a\t", "  a\0"s, 0},
        {SMUTF8ltrim, " \t\r\n", "\0\0\0\0"s, 4},
        {SMUTF8rtrim, " \t\r\n", "\0\0\0\0"s, 0},
        {SMUTF8ltrim, "\va\v ", "\va\v "s, 0},
        {SMUTF8rtrim, " \xA0é ", " \xA0é\0"s, 0},
        {SMUTF8trim, " \xA0é\v ", "\0\xA0é\v\0"s, 1},
        {SMUTF8trim, "", "", 0},
        {SMUTF8StrUpperCase, "Az1{é", "AZ1{é", 0},
        {SMUTF8StrLowerCase, "Az1[É", "az1[É", 0},
        {SMUTF8Strrev, "abc", "cba", 0},
        {SMUTF8Strrev, "\xC3\xA9", "\xA9\xC3", 0},
    };
    for (const auto &[call, text, result, place] : cases) {
        std::string bytes = text;
        EXPECT_EQ(call(bytes.data()) - bytes.data(), place) << text;
        EXPECT_EQ(bytes, result) << text;
    }
    EXPECT_EQ(SMUTF8ltrim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8rtrim(nullptr), nullptr);
}

TEST(UTF8, IsComparedWithASCIIFoldedAlone)
{
    const std::tuple<const char *, const char *, uint32_t, int32_t> cases[] = {
        {"ab", "AB", 3, 0},  {"ax", "ay", 1, 0},           {"aX", "Ay", 2, -1},
        {"ab", "A", 5, 'b'}, {"\xC3", "A", 1, 0xC3 - 'a'}, {"@", "`", 1, 0x40 - 0x60},
    };
    for (const auto &[first, second, maximum, difference] : cases)
        EXPECT_EQ(SMUTF8Strnicmp(first, second, maximum), difference) << first << " " << second;
    EXPECT_EQ(SMUTF8Strnicmp(nullptr, nullptr, 0), 0);
    char *copy = SMUTF8Strdup("text \xFF");
    EXPECT_STREQ(copy, "text \xFF");
    SMFreeGeneric(copy);
    EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);
}

TEST(UTF8, FindsTheFirstPlace)
{
    const std::tuple<const char *, const char *, ptrdiff_t> cases[] = {
        {"abc", "", 0},  {"", "a", -1},       {"Host name", "NAME", 5}, {"aab", "AB", 1}, {"same", "SAME", 0},
        {"xéÉ", "É", 3}, {"abcab", "BX", -1}, {"same", "samE!", -1},    {"end", "D", 2},
    };
    for (const auto &[haystack, needle, place] : cases) {
        const char *found = SMUTF8Strstri(haystack, needle);
        EXPECT_EQ(found == nullptr ? -1 : found - haystack, place) << haystack << " " << needle;
    }
    EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
}

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
