#include <gtest/gtest.h>
#include <qzvest/module.h>
#include <qzvest/utf8.h>

#include <string>

namespace {

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

} // namespace
