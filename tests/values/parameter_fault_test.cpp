// What lists of words do when memory runs out.

#include <gtest/gtest.h>

#include <string>

#include "support/faults.h"
#include "values/parameter.h"

namespace {

TEST(ParameterFault, SecondSplitDecides)
{
    const SMNVPEnumEntry table[] = {{nullptr, 99}, {"read", 2}, {"write", 4}};
    const struct {
        const char *parameter;
        int nth;
        uint32_t value;
    } cases[] = {
        {"e=read,write", 1, 6}, // the "," is tried for want of the other list
        {"e=read,write", 2, 0x80000000}, {"e=read|write", 1, 0x80000000},
        {"e=read", 1, 0x80000000},       {"e= read", 1, 2}, // changed, so taken for a list
    };
    const long before = LiveBlocks();
    for (const auto &c : cases) {
        std::string text = c.parameter;
        char *argv[] = {text.data()};
        FailAllocation(c.nth);
        const uint32_t value = qzvest::SMNVPGetEnums32Value(1, argv, "e", 0, table, 3, 1);
        EXPECT_TRUE(StopFault()) << c.parameter;
        EXPECT_EQ(value, c.value) << c.parameter;
    }
    EXPECT_EQ(LiveBlocks(), before);
}

} // namespace
