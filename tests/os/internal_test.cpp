// The swap of a new version into place, and the clock of time-outs.

#include <gtest/gtest.h>

#include "os/clock.h"
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

TEST(Clock, MillisecondsAreTruncated)
{
    constexpr struct {
        timespec start, end;
        int64_t milliseconds;
    } kCases[] = {{{5, 1}, {5, 1000001}, 1},
                  {{5, 100}, {5, 999999999}, 999},
                  {{5, 500000000}, {8, 400000000}, 2900},
                  {{0, 0}, {4294968, 0}, INT64_C(4294968000)}}; // beyond 32 bits
    for (const auto &c : kCases)
        EXPECT_EQ(qzvest::MillisecondsBetween(c.start, c.end), c.milliseconds) << c.end.tv_sec << ' ' << c.end.tv_nsec;
}

} // namespace
