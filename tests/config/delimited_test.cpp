#include <gtest/gtest.h>
#include <qzvest/delimited.h>
#include <qzvest/module.h>

#include <random>
#include <string>
#include <string_view>

namespace {

using namespace std::string_literals;

struct List {
    std::string bytes; // as many as size tells
    uint32_t count, size;
};

List Convert(const std::string &source, char from, char to)
{
    List list = {};
    char *text = SMUTF8ConvertXSVToYSV(source.c_str(), from, to, &list.count, &list.size);
    list.bytes.assign(text, list.size);
    SMFreeMem(text);
    return list;
}

TEST(Delimited, ListsByTheirSeparators)
{
    const struct {
        std::string source; // its own terminator closes a multi-string
        char from, to;
        std::string bytes;
        uint32_t count;
    } cases[] = {
        {"a, \tb c\r\n,d", ',', '\0', "a\0b c\0d\0\0"s, 3},
        {"a\va\f,b", ',', '|', "a\va\f|b|\0"s, 2}, // no blanks in this sense
        {"\xC3\xA9\xFFx", '\xFF', '\xFE', "\xC3\xA9\xFEx\xFE\0"s, 2},
        {"a\0b c\0d\0"s, '\0', ',', "a,b c,d\0"s, 2}, // here delimiters are counted
        {"one\0"s, '\0', ',', "one\0"s, 0},
        {" a \0,\0"s, '\0', ',', " a ,,\0"s, 1}, // texts stay as they are
        {"a\0\0b\0"s, '\0', ',', "a\0"s, 0},
    };
    for (const auto &c : cases) {
        const List list = Convert(c.source, c.from, c.to);
        EXPECT_EQ(list.bytes, c.bytes) << c.source;
        EXPECT_EQ(list.count, c.count) << c.source;
    }
    char *copy = SMUTF8ConvertXSVToYSV("a\0b\0", '\0', '\0', nullptr, nullptr);
    EXPECT_EQ(std::string_view(copy, 5), "a\0b\0\0"s); // still closed
    SMFreeMem(copy);
}

TEST(Delimited, NothingGivesNull)
{
    const std::pair<const char *, char> cases[] = {{"", '\0'}, {nullptr, '\0'}, {nullptr, ','}};
    for (const auto &[source, from] : cases) {
        uint32_t count = 7, size = 7;
        EXPECT_EQ(SMUTF8ConvertXSVToYSV(source, from, '|', &count, &size), nullptr);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(size, 0u);
    }
}

// Random texts of few letters against a model that knows nothing of buffers.
TEST(Delimited, RandomTextsFollowTheModel)
{
    std::mt19937 random(20240611);
    const std::string letters = "ab,| \t\n;";
    for (int round = 0; round < 20000; ++round) {
        std::string source(random() % 14, ' ');
        for (char &c : source)
            c = letters[random() % letters.size()];
        const char from = letters[random() % letters.size()];
        const char to = random() % 2 == 0 ? '\0' : letters[random() % letters.size()];
        std::string expected;
        uint32_t items = 0;
        std::string item;
        for (const char c : source + from) {
            if (c != from) {
                item += c;
                continue;
            }
            const size_t first = item.find_first_not_of(" \t\n\r");
            if (first != std::string::npos) {
                expected += item.substr(first, item.find_last_not_of(" \t\n\r") + 1 - first) + to;
                ++items;
            }
            item.clear();
        }
        expected += '\0';
        const List list = Convert(source, from, to);
        ASSERT_EQ(list.bytes, expected) << '"' << source << "\" at " << static_cast<int>(from);
        ASSERT_EQ(list.count, items) << source;
    }
}

} // namespace
