#include <gtest/gtest.h>
#include <qzvest/delimited.h>
#include <qzvest/module.h>

#include <string>

namespace {

using namespace std::string_literals;

// Lists that are split have a model in their fuzz target.
TEST(Delimited, MultiStringsAreJoined)
{
    const struct {
        std::string source, bytes; // its own terminator closes a multi-string
        uint32_t count;            // of the delimiters
    } cases[] = {
        {"a\0b c\0d\0"s, "a,b c,d\0"s, 2},
        {"one\0"s, "one\0"s, 0},
        {" a \0,\0"s, " a ,,\0"s, 1}, // texts stay as they are
        {"a\0\0b\0"s, "a\0"s, 0},
    };
    for (const auto &c : cases) {
        uint32_t count, size;
        char *list = SMUTF8ConvertXSVToYSV(c.source.c_str(), '\0', ',', &count, &size);
        EXPECT_EQ(std::string(list, size), c.bytes) << c.source;
        EXPECT_EQ(count, c.count) << c.source;
        SMFreeMem(list);
    }
    char *copy = SMUTF8ConvertXSVToYSV("a\0b\0", '\0', '\0', nullptr, nullptr);
    EXPECT_EQ(std::string(copy, 5), "a\0b\0\0"s); // still closed
    SMFreeMem(copy);
    const std::pair<const char *, char> nothing[] = {{"", '\0'}, {nullptr, '\0'}, {nullptr, ','}};
    for (const auto &[source, from] : nothing) {
        uint32_t count = 7, size = 7;
        EXPECT_EQ(SMUTF8ConvertXSVToYSV(source, from, '|', &count, &size), nullptr);
        EXPECT_EQ(count + size, 0u);
    }
}

} // namespace
