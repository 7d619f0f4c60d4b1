// The swap of a new version into place, and what calls do when memory runs out.

#include <gtest/gtest.h>

#include "os/file.h"
#include "os/folder.h"
#include "os/system.h"
#include "support/faults.h"

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

long OpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(FileFault, EachCallSaysSo)
{
    const Folder folder;
    const std::string source = folder.Make("source", "new"), target = folder.Make("target", "old");
    SMFileList *list = nullptr;
    const long blocks = LiveBlocks(), descriptors = OpenDescriptors();
    char name[9] = "untouch";
    uint32_t size = 3; // memory is asked for before the room is looked at
    EXPECT_EQ(Failing(1, [&] { return qzvest::SMGetTmpFile(folder.Path(), name, &size); }), SM_STATUS_NO_MEMORY);
    EXPECT_EQ(size, 3u);

    EXPECT_EQ(Failing(1, [&] { return qzvest::SMSafeFileReplace(target.c_str(), source.c_str()); }),
              SM_STATUS_NO_MEMORY);
    EXPECT_EQ(Content(target), "old");
    EXPECT_EQ(Content(source), "new");

    EXPECT_EQ(Failing(1, [&] { return qzvest::SMFileCopy(source.c_str(), target.c_str(), 1); }), SM_STATUS_NO_MEMORY);
    EXPECT_EQ(Content(target), ""); // cut when it was opened

    for (int nth = 1; nth <= 4; ++nth) { // a string and a growth for each entry
        EXPECT_EQ(Failing(nth, [&] { return qzvest::SMFileListGet(folder.Path(), SM_FILE_LIST_SPARING, &list); }),
                  SM_STATUS_NO_MEMORY);
        EXPECT_EQ(list, nullptr);
    }
    for (const int nth : {1, 2})
        EXPECT_EQ(Failing(nth, [&] { return qzvest::SMFilePropAlloc(source.c_str()); }), nullptr);
    EXPECT_EQ(Failing(1, [] { return qzvest::SMEnvDup("PATH", nullptr); }), nullptr);
    EXPECT_EQ(Failing(1, [] { return qzvest::SMAppendToOSSysLog(1, 1, 1, "test", "no text"); }), SM_STATUS_FAILED);
    EXPECT_EQ(LiveBlocks(), blocks);
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

} // namespace
