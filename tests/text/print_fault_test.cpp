// What the formatted print does when memory runs out, and when it asks for none.

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <string>

#include "support/faults.h"
#include "text/format.h"
#include "text/units.h"

namespace {

TEST(PrintFault, UCS2TextWithoutMemoryEndsTheOutput)
{
    const long before = LiveBlocks();
    const auto text = Units(u"\u00e9t\u00e9");
    const char *const expected[] = {"a", "a\xC3\xA9t\xC3\xA9|", "a\xC3\xA9t\xC3\xA9| \xC3\xA9t\xC3\xA9|7"};
    for (size_t nth = 1;; ++nth) {
        char room[32];
        memset(room, '~', sizeof room);
        ASSERT_LE(nth, std::size(expected));
        FailAllocation(static_cast<int>(nth));
        const int32_t stored = qzvest::SMFormatPrint(room, sizeof room, "a%S|%6S|%d", text.data(), text.data(), 7);
        const bool failed = StopFault();
        EXPECT_EQ(stored, static_cast<int32_t>(strlen(expected[nth - 1])));
        EXPECT_EQ(memcmp(room, expected[nth - 1], static_cast<size_t>(stored) + 1), 0) << room;
        EXPECT_EQ(room[stored + 1], '~');
        EXPECT_EQ(LiveBlocks(), before);
        if (!failed) {
            EXPECT_EQ(nth, std::size(expected));
            break;
        }
    }
}

TEST(PrintFault, BadUCS2TextLeavesNoEarlierOneBehind)
{
    const long before = LiveBlocks();
    const auto good = Units(u"good");
    const uint16_t bad[] = {0xDE00, 0};
    char room[32];
    EXPECT_EQ(qzvest::SMFormatPrint(room, sizeof room, "%S, %S, %d", good.data(), bad, 7), 6);
    EXPECT_STREQ(room, "good, ");
    EXPECT_EQ(LiveBlocks(), before);
}

// Big numbers are kept for reuse: what has been printed before needs no memory any more.
TEST(PrintFault, EqualPrintsAllocateNothing)
{
    char room[1200];
    const auto print = [&room] {
        (void)qzvest::SMFormatPrint(room, sizeof room, "%.1074f %.17g %e %#.300e", 5e-324, 1e300, 0.1, 0.1);
    };
    print();
    print(); // powers of five that the first has built late were blocks of its beginning
    const long before = LiveBlocks();
    FailAllocation(1);
    print();
    (void)qzvest::SMFormatPrint(room, sizeof room, "%d %s %08x %p %c %%", 1, "text", 2U, room, 'c');
    EXPECT_FALSE(StopFault());
    EXPECT_EQ(LiveBlocks(), before);
}

} // namespace
