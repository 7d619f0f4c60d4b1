// The swap of a new version into place and the mode that it takes over, and bounded appends.

#include <gtest/gtest.h>

#include <cerrno>

#include "compat/string.h"
#include "os/file.h"
#include "os/folder.h"

namespace {

TEST(Replace, KeepsTheModeButForExecution)
{
    const Folder folder;
    static const std::tuple<mode_t, mode_t> kCases[] = {{0666, 0666}, {06711, 0600}, {01600, 01600}};
    const mode_t mask = umask(077);
    for (const auto &[old, kept] : kCases) {
        const std::string path = folder.Make("file", "old", old);
        const std::string next = folder.Make("next", "new", 0777);
        EXPECT_EQ(qzvest::SMSafeFileReplace(path.c_str(), next.c_str()), SM_STATUS_OK);
        EXPECT_EQ(Content(path), "new");
        EXPECT_EQ(Mode(path), kept);
        EXPECT_FALSE(Exists(next));
        EXPECT_FALSE(Exists(path + ".bak"));
    }
    umask(mask);
}

TEST(Replace, LeavesWhatAReaderCanPutBackAndTellsOfABackupThatStays)
{
    const Folder folder;
    const std::string path = folder / "file", next = folder.Make("next", "new", 0600);
    EXPECT_EQ(qzvest::SMSafeFileReplace(path.c_str(), next.c_str()), SM_STATUS_FAILED); // nothing to replace
    EXPECT_EQ(Content(next), "new");
    EXPECT_FALSE(Exists(path));

    folder.Make("file", "old");
    folder.Make("file.bak", "older");
    EXPECT_EQ(qzvest::SMSafeFileReplace(path.c_str(), (next + "?").c_str()), SM_STATUS_ALREADY_EXISTS);
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(Content(path + ".bak"), "old");

    unlink((path + ".bak").c_str());
    ASSERT_EQ(mkdir(path.c_str(), 0755), 0); // becomes a backup that is no file
    EXPECT_EQ(qzvest::SMSafeFileReplace(path.c_str(), next.c_str()), SM_STATUS_ACCESS_DENIED);
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(Mode(path), 0644u);
    EXPECT_TRUE(Exists(path + ".bak"));
}

TEST(FileMode, IsMaskedOrTheDefault)
{
    const Folder folder;
    const std::string path = folder.Make("file", "", 07753);
    EXPECT_EQ(qzvest::SMFileModeGet(path.c_str(), 0777, qzvest::kKeepSticky), 01642u);
    EXPECT_EQ(qzvest::SMFileModeGet(path.c_str(), 0777, 0), 0642u);
    EXPECT_EQ(qzvest::SMFileModeGet((path + "?").c_str(), 07777, qzvest::kKeepSticky), 07777u);
}

TEST(BoundedAppend, TakesAllOrEmpties)
{
    static const std::tuple<size_t, const char *, int, const char *> kCases[] = {
        {6, "de", 0, "abcde"}, {5, "de", ERANGE, ""}, {3, "", EINVAL, ""}, {0, "de", EINVAL, "abc"}};
    for (const auto &[bound, source, error, givenText] : kCases) {
        char text[8] = "abc";
        EXPECT_EQ(qzvest::strcat_s(text, bound, source), error);
        EXPECT_STREQ(text, givenText);
    }
}

} // namespace
