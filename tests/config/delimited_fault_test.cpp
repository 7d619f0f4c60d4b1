// What lists and the PCI names file do when memory runs out.

#include <qzvest/status.h>

#include <cstdlib>

#include "config/delimited.h"
#include "config/pcinames.h"
#include "support/sweep.h"

namespace {

TEST(DelimitedFault, NoMemoryGivesNull)
{
    const std::pair<const char *, char> cases[] = {{"a,b", ','}, {",", ','}, {"a\0b\0", '\0'}};
    for (const auto &[source, from] : cases) {
        const int faults = SweepAllocations([&](int nth) {
            uint32_t count = 7, size = 7;
            FailAllocation(nth);
            char *list = qzvest::SMUTF8ConvertXSVToYSV(source, from, '|', &count, &size);
            const bool failed = StopFault();
            EXPECT_EQ(list == nullptr, failed);
            EXPECT_EQ(size == 0, failed);
            EXPECT_TRUE(!failed || count == 0);
            std::free(list);
            return failed;
        });
        EXPECT_GT(faults, 0);
    }
}

TEST(PCINamesFault, NoMemoryLeavesEmptyNames)
{
    char vendor[] = "#", device[] = "#";
    uint32_t vendorSize = 2, deviceSize = 2;
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
