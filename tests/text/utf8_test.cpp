#include <gtest/gtest.h>
#include <qzvest/module.h>
#include <qzvest/utf8.h>

#include <cstring>
#include <string>

namespace {

TEST(UTF8Trim, ZeroesWhatItTakes)
{
    const struct {
        const char *text;
        const char *left, *right, *both;
    } cases[] = {
        {"", "", "", ""},
        {"a b", "a b", "a b", "a b"},
        {"  a\t", "a\t", "  a", "a"},
        {" \t\r\n", "", "", ""},
        {"\va\v ", "\va\v ", "\va\v", "\va\v"}, // vertical tab and form feed stay
        {"\fa ", "\fa ", "\fa", "\fa"},
        {" \xA0é ", "\xA0é ", " \xA0é", "\xA0é"},
    };
    for (const auto &c : cases) {
        std::string copies[3] = {c.text, c.text, c.text};
        const size_t taken = std::strlen(c.text) - std::strlen(c.left);
        EXPECT_EQ(SMUTF8ltrim(copies[0].data()), copies[0].data() + taken);
        EXPECT_EQ(copies[0], std::string(taken, '\0') + c.left);
        EXPECT_EQ(SMUTF8rtrim(copies[1].data()), copies[1].data());
        EXPECT_EQ(copies[1], c.right + std::string(std::strlen(c.text) - std::strlen(c.right), '\0'));
        EXPECT_STREQ(SMUTF8trim(copies[2].data()), c.both);
    }
    EXPECT_EQ(SMUTF8ltrim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8rtrim(nullptr), nullptr);
    EXPECT_EQ(SMUTF8trim(nullptr), nullptr);
}

TEST(UTF8Bytes, ChangeInPlace)
{
    const struct {
        char *(*call)(char *);
        const char *text, *result;
    } cases[] = {
        {SMUTF8StrUpperCase, "Az1{é", "AZ1{é"}, {SMUTF8StrLowerCase, "Az1[É", "az1[É"}, {SMUTF8Strrev, "", ""},
        {SMUTF8Strrev, "abc", "cba"},           {SMUTF8Strrev, "\xC3\xA9", "\xA9\xC3"},
    };
    for (const auto &c : cases) {
        std::string copy = c.text;
        EXPECT_EQ(c.call(copy.data()), copy.data());
        EXPECT_EQ(copy, c.result);
    }
}

TEST(UTF8Strdup, CopiesToTheHeap)
{
    const char text[] = "text \xFF";
    char *copy = SMUTF8Strdup(text);
    EXPECT_STREQ(copy, text);
    EXPECT_NE(copy, text);
    SMFreeGeneric(copy);
    EXPECT_EQ(SMUTF8Strdup(nullptr), nullptr);
}

TEST(UTF8Strnicmp, FoldsASCIIAlone)
{
    const struct {
        const char *first, *second;
        uint32_t maximum;
        int32_t difference;
    } cases[] = {
        {"ab", "AB", 3, 0},
        {"ab", "AB", 0xFFFFFFFF, 0},
        {"ax", "ay", 1, 0},
        {"aX", "Ay", 2, -1},
        {"a", "ab", 5, -'b'},
        {"ab", "A", 5, 'b'},
        {"\xC3", "A", 1, 0xC3 - 0x61}, // bytes are unsigned
        {"@", "`", 1, 0x40 - 0x60},
        {"[", "{", 1, 0x5B - 0x7B},
        {"\xC9", "\xE9", 1, -0x20},
    };
    for (const auto &c : cases)
        EXPECT_EQ(SMUTF8Strnicmp(c.first, c.second, c.maximum), c.difference) << c.first << " " << c.second;
    EXPECT_EQ(SMUTF8Strnicmp(nullptr, nullptr, 0), 0);
}

TEST(UTF8Strstri, FindsTheFirstPlace)
{
    const struct {
        const char *haystack, *needle;
        ptrdiff_t place; // -1: nowhere
    } cases[] = {
        {"abc", "", 0},   {"", "", 0},         {"", "a", -1},         {"Host name", "NAME", 5},
        {"aab", "AB", 1}, {"same", "SAME", 0}, {"same", "samE!", -1}, {"abcab", "BX", -1},
        {"xéÉ", "É", 3},  {"abcABC", "cA", 2}, {"end", "D", 2},
    };
    for (const auto &c : cases) {
        const char *found = SMUTF8Strstri(c.haystack, c.needle);
        EXPECT_EQ(found == nullptr ? -1 : found - c.haystack, c.place) << c.haystack << " " << c.needle;
    }
    EXPECT_EQ(SMUTF8Strstri(nullptr, "a"), nullptr);
    EXPECT_EQ(SMUTF8Strstri("a", nullptr), nullptr);
}

} // namespace
