// The swap of a new version into place.

#include <gtest/gtest.h>

#include "os/file.h"
#include "os/folder.h"

namespace {

TEST(Replace, LeavesWhatAReaderCanPutBackAndTellsOfABackupThatStays)
{
    const Folder folder;
    const std::string path = folder / "file", backup = path + ".bak", next = folder.Make("next", "new", 0600);
    const auto replace = [&path](const std::string &by) { return qzvest::SMSafeFileReplace(path.c_str(), by.c_str()); };
    EXPECT_EQ(replace(next), SM_STATUS_FAILED); // nothing to replace
    EXPECT_EQ(Content(next), "new");
    EXPECT_FALSE(Exists(path));

    folder.Make("file", "old");
    folder.Make("file.bak", "older");
    EXPECT_EQ(replace(next + "?"), SM_STATUS_ALREADY_EXISTS);
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(Content(backup), "old");

    unlink(backup.c_str());
    ASSERT_EQ(mkdir(path.c_str(), 0755), 0); // becomes a backup that is no file
    EXPECT_EQ(replace(next), SM_STATUS_ACCESS_DENIED);
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(Mode(path), 0644u);
    EXPECT_TRUE(Exists(backup));
}

} // namespace
