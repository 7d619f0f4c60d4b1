#include <gtest/gtest.h>
#include <qzvest/module.h>
#include <qzvest/utf8.h>

#include <cstring>
#include <string>

namespace {

TEST(UTF8Trim, ZeroesWhatItTakes)
{
    const std::tuple<const char *, const char *, const char *, const char *> cases[] = {
        {"", "", "", ""},        {"a b", "a b", "a b", "a b"},           {"  a\t", "a\t", "  a", "a"},
        {" \t\r\n", "", "", ""}, {"\va\v ", "\va\v ", "\va\v", "\va\v"}, {" \xA0é ", "\xA0é ", " \xA0é", "\xA0é"},
    };
    for (const auto &[text, left, right, both] : cases) {
        std::string copies[3] = {text, text, text};
        const size_t taken = std::strlen(text) - std::strlen(left);
        EXPECT_EQ(SMUTF8ltrim(copies[0].data()), copies[0].data() + taken);
        EXPECT_EQ(copies[0], std::string(taken, '\0') + left);
        EXPECT_EQ(SMUTF8rtrim(copies[1].data()), copies[1].data());
        EXPECT_EQ(copies[1], right + std::string(std::strlen(text) - std::strlen(right), '\0'));
        EXPECT_STREQ(SMUTF8trim(copies[2].data()), both);
    }
    EXPECT_EQ(SMUTF8ltrim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8rtrim(nullptr), nullptr);
}

TEST(UTF8Bytes, ChangeInPlace)
{
    const std::tuple<char *(*)(char *), const char *, const char *> cases[] = {
        {SMUTF8StrUpperCase, "Az1{é", "AZ1{é"}, {SMUTF8StrLowerCase, "Az1[É", "az1[É"}, {SMUTF8Strrev, "", ""},
        {SMUTF8Strrev, "abc", "cba"},           {SMUTF8Strrev, "\xC3\xA9", "\xA9\xC3"},
    };
    for (const auto &[call, text, result] : cases) {
        std::string copy = text;
        EXPECT_EQ(call(copy.data()), copy.data());
        EXPECT_EQ(copy, result);
    }
}

TEST(UTF8Copies, AreComparedWithASCIIFoldedAlone)
{
    const std::tuple<const char *, const char *, uint32_t, int32_t> cases[] = {
        {"ab", "AB", 3, 0},
        {"ax", "ay", 1, 0},
        {"aX", "Ay", 2, -1},
        {"ab", "A", 5, 'b'},
        {"\xC3", "A", 1, 0xC3 - 0x61},
        {"@", "`", 1, 0x40 - 0x60},
    };
    for (const auto &[first, second, maximum, difference] : cases)
        EXPECT_EQ(SMUTF8Strnicmp(first, second, maximum), difference) << first << " " << second;
    EXPECT_EQ(SMUTF8Strnicmp(nullptr, nullptr, 0), 0);
    char *copy = SMUTF8Strdup("text \xFF");
    EXPECT_STREQ(copy, "text \xFF");
    SMFreeGeneric(copy);
    EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);
}

TEST(UTF8Strstri, FindsTheFirstPlace)
{
    // place: -1: nowhere
    const std::tuple<const char *, const char *, ptrdiff_t> cases[] = {
        {"abc", "", 0},   {"", "", 0},         {"", "a", -1},         {"Host name", "NAME", 5},
        {"aab", "AB", 1}, {"same", "SAME", 0}, {"same", "samE!", -1}, {"abcab", "BX", -1},
        {"xéÉ", "É", 3},  {"abcABC", "cA", 2}, {"end", "D", 2},
    };
    for (const auto &[haystack, needle, place] : cases) {
        const char *found = SMUTF8Strstri(haystack, needle);
        EXPECT_EQ(found == nullptr ? -1 : found - haystack, place) << haystack << " " << needle;
    }
    EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
    EXPECT_EQ(SMUTF8Strstri("a", nullptr), nullptr);
}

} // namespace
