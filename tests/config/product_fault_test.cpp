// Product paths when memory runs out.

#include <qzvest/module.h>
#include <qzvest/product.h>

#include "config/places.h"
#include "config/product.h"
#include "support/sweep.h"

namespace {

constexpr uint32_t kUnknownProduct = 7;

class ProductFault : public testing::Test {
protected:
    ProductFault()
    {
        for (const char *name : {"LANG", "gaugeworkinstallpath", "GAUGEWORKINSTALLPATH"})
            unsetenv(name);
        WriteText(kRegistrationFile, "Gaugework.installpath=/run\nGaugework.logpath=/etc\n");
        Reattach();
    }
};

TEST_F(ProductFault, AttachFailsAndLeavesNothing)
{
    qzvest::ProductPathsDetach();
    const int faults = SweepAllocations([](int nth) {
        FailAllocation(nth);
        const int attached = qzvest::ProductPathsAttach();
        const bool failed = StopFault();
        EXPECT_EQ(attached, failed ? 0 : 1);
        return failed;
    });
    EXPECT_GE(faults, 10); // the lock, the table, the reader and texts
}

TEST_F(ProductFault, FailedReloadEndsWithoutATable)
{
    const long before = LiveBlocks();
    char path[64] = "x";
    uint32_t size = sizeof path;
    FailAllocation(3);
    EXPECT_EQ(SMGetPathByProductIDandType(kUnknownProduct, SM_PATH_INSTALL, path, &size), SM_STATUS_NOT_FOUND);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(size, 0u);
    EXPECT_STREQ(path, "");
    EXPECT_LT(LiveBlocks(), before);

    size = sizeof path;
    FailAllocation(1);
    EXPECT_EQ(SMGetInstallPath(path, &size), SM_STATUS_NOT_FOUND);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(size, 0u);

    size = sizeof path;
    EXPECT_EQ(SMGetInstallPath(path, &size), SM_STATUS_BUFFER_TOO_SMALL); // there was no table when it began
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(SMGetInstallPath(path, &size), SM_STATUS_OK);
    EXPECT_STREQ(path, "/run");
    EXPECT_EQ(LiveBlocks(), before);
}

TEST_F(ProductFault, TextsAreMissing)
{
    WriteText("/run/root/texts/file", "");
    const struct {
        char *(*make)();
        const char *text;
        int allocations;
    } cases[] = {
        {[] { return SMProductIDToSID(SM_PRODUCT_DEFAULT); }, "Gaugework", 1},
        {[] { return SMMakePathFileNameByPIDAndType(SM_PRODUCT_DEFAULT, SM_PATH_LOG, "a", "b"); }, "/etc/a/b", 1},
        {[] { return SMGetLocalizedPathFileName("/run/root", "texts", nullptr, nullptr, "file"); },
         "/run/root/texts/file", 2}};
    for (const auto &c : cases) {
        const int faults = SweepAllocations([&](int nth) {
            FailAllocation(nth);
            char *text = c.make();
            const bool failed = StopFault();
            EXPECT_STREQ(text, failed ? nullptr : c.text);
            SMFreeGeneric(text);
            return failed;
        });
        EXPECT_EQ(faults, c.allocations);
    }
}

} // namespace
