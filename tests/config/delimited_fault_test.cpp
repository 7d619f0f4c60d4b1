// What lists and the PCI names file do when memory runs out.

#include <gtest/gtest.h>
#include <qzvest/status.h>

#include <cstdlib>

#include "config/delimited.h"
#include "config/pcinames.h"
#include "support/faults.h"

namespace {

TEST(DelimitedFault, NoMemoryGivesNull)
{
    const struct {
        const char *source;
        char from;
    } cases[] = {{"a,b", ','}, {",", ','}, {"a\0b\0", '\0'}};
    const long before = LiveBlocks();
    for (const auto &c : cases) {
        bool failed = true;
        for (int nth = 1; failed; ++nth) {
            uint32_t count = 7;
            uint32_t size = 7;
            FailAllocation(nth);
            char *list = qzvest::SMUTF8ConvertXSVToYSV(c.source, c.from, '|', &count, &size);
            failed = StopFault();
            EXPECT_EQ(list == nullptr, failed);
            EXPECT_EQ(size == 0, failed);
            EXPECT_TRUE(!failed || count == 0);
            EXPECT_TRUE(failed || nth > 1);
            std::free(list);
            EXPECT_EQ(LiveBlocks(), before);
        }
    }
}

TEST(PCINamesFault, NoMemoryLeavesEmptyNames)
{
    char vendor[] = "#";
    char device[] = "#";
    uint32_t vendorSize = 2;
    uint32_t deviceSize = 2;
    FailAllocation(1); // comes before the file is missed
    EXPECT_EQ(qzvest::SMReadPCIDevFile(1, 2, 3, 4, "/proc/self/fd/none", vendor, &vendorSize, device, &deviceSize),
              SM_STATUS_NO_MEMORY);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(vendorSize, 0u);
    EXPECT_EQ(deviceSize, 0u);
    EXPECT_STREQ(vendor, "");
    EXPECT_STREQ(device, "");
}

} // namespace
