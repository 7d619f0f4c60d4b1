// What property files and tables of messages do when memory runs out.

#include "config/ini_fixture.h"
#include "config/property.h"
#include "config/stringid.h"
#include "ipc/filelock.h"
#include "support/sweep.h"

namespace {

class StoreFault : public IniFile {
protected:
    // The record of its lock stays for good, so that it would look like a leak.
    void PutLocked(const std::string &content)
    {
        Put(path, content);
        ASSERT_NE(qzvest::SMFileLockOpen(path.c_str()), nullptr);
    }
};

TEST_F(StoreFault, PropertyReadTellsAndGivesTheDefault)
{
    PutLocked("key=value\n");
    for (const char *key : {"key", static_cast<const char *>(nullptr)}) {
        const int faults = SweepAllocations([&](int nth) {
            char text[16] = "*";
            uint32_t size = sizeof text;
            FailAllocation(nth);
            const uint32_t status =
                qzvest::SMPropertyFileReadValue(key, SMXLT_TYPE_UTF8, text, &size, "default", 8, path.c_str(), 1);
            const bool failed = StopFault();
            EXPECT_EQ(status, failed ? SM_STATUS_NO_MEMORY : SM_STATUS_OK);
            EXPECT_STREQ(text, failed ? "default" : key != nullptr ? "value" : "key");
            EXPECT_TRUE(!failed || size == 8);
            return failed;
        });
        EXPECT_GT(faults, 0);
    }
}

TEST_F(StoreFault, PropertyWriteLeavesTheFile)
{
    PutLocked("");
    const int faults = SweepAllocations([&](int nth) {
        Put("a=1\nkey=old\nz=2\n");
        FailAllocation(nth);
        const uint32_t status = qzvest::SMPropertyFileWriteValue("key", SMXLT_TYPE_UTF8, "new", 4, path.c_str(), 1);
        const bool failed = StopFault();
        // No name for the temporary file, or no memory from there on.
        EXPECT_EQ(status, !failed ? SM_STATUS_OK : nth <= 3 ? SM_STATUS_FAILED : SM_STATUS_NO_MEMORY);
        EXPECT_EQ(Get(), failed ? "a=1\nkey=old\nz=2\n" : "a=1\nkey=new\nz=2\n");
        return failed;
    });
    EXPECT_GT(faults, 4);
}

TEST_F(StoreFault, MessagesSayWhatFailed)
{
    const std::string complaint = "Failed to allocate memory";
    std::filesystem::create_directory(folder + "/ini");
    path = folder + "/ini/qzsdst64.ini";
    PutLocked("[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1=text\n");
    bool complained = false;
    SweepAllocations([&](int nth) {
        char text[32] = "";
        uint32_t size = sizeof text;
        FailAllocation(nth);
        const uint32_t count = qzvest::SMGetUTF8StrFromIDPathFile(1, nullptr, path.c_str(), text, &size);
        const bool failed = StopFault();
        EXPECT_EQ(count, size);
        EXPECT_EQ(count, *text != '\0' ? std::strlen(text) + 1 : 0);
        EXPECT_TRUE(failed ? *text == '\0' || text == complaint : std::string(text) == "text") << text;
        complained = complained || text == complaint;
        return failed;
    });
    EXPECT_TRUE(complained);

    setenv("gaugeworkinstallpath", folder.c_str(), 1);
    uint16_t units[32];
    uint32_t size = 0; // a new place is refused once, and the band of moved ids is read once
    (void)SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_INI, nullptr, &size);
    (void)qzvest::SMGetUCS2StrFromID(1, nullptr, units, &size);
    SweepAllocations([&](int nth) {
        size = sizeof units;
        FailAllocation(nth);
        const uint32_t count = qzvest::SMGetUCS2StrFromID(1, nullptr, units, &size);
        const bool failed = StopFault();
        EXPECT_EQ(count, size);
        EXPECT_TRUE(failed ? count == 0 || count == 2 || count == 2 * complaint.size() + 2 : count == 10) << count;
        return failed;
    });
}

} // namespace
