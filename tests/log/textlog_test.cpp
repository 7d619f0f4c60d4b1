// The text log byte for byte, and the front end's way to it.

#include "log/textlog.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <qzvest/eventlog.h>

#include "config/places.h"
#include "log/logfile.h"
#include "os/ipv4.h"
#include "support/sweep.h"
#include "support/systemlog.h"
#include "support/trace.h"

namespace {

namespace fs = std::filesystem;

constexpr const char *kBase = "/run/base";
const std::string kLog = "/run/base/log/qzsys64.log";
const std::string kBackup = "/run/base/log/qzsys64.lo_";
const std::string kXML = "/run/base/log/qzsys64.xml";
const std::string kMissing = "(missing)";
constexpr uint32_t kDefaultLimit = 1048576;

std::string Wide(const std::string &latin1)
{
    std::string units;
    for (const char byte : latin1)
        units += {byte, '\0'};
    return units;
}

const std::string kHeader =
    "\xFF\xFE" + Wide("#-------------------------------\r\n# Do not remove this block\r\n"
                      "# This data file is parsed\r\n#------------------------------- \r\n\r\n");

std::string Dump(const std::string &data)
{
    std::string dump;
    for (size_t offset = 0; offset < data.size(); offset += 16) {
        const std::string row = data.substr(offset, 16);
        std::string digits, text;
        char item[32];
        for (size_t i = 0; i < row.size(); ++i) {
            snprintf(item, sizeof item, "%02X%c", static_cast<unsigned char>(row[i]),
                     i % 4 == 3 && i + 1 < row.size() ? ':' : ' ');
            digits += item;
            text += row[i] >= ' ' && row[i] <= 'z' ? row[i] : '.';
        }
        digits.resize(48, ' ');
        text.resize(16, ' ');
        snprintf(item, sizeof item, "0x%08zX: ", offset);
        dump += item + digits + "  " + text + "  \n";
    }
    return dump;
}

// A record with "@" for the time; all texts in Latin-1.
std::string Record(const std::string &eventId, const std::string &source, const std::string &category,
                   const std::string &type, const std::string &description, const std::string &dump = "")
{
    return Wide("EventID: " + eventId + "\r\nSource: " + source + "\r\nCategory: " + category + "\r\nType: " + type +
                "\r\nDate and Time: @\r\nComputer: h\xF6st\r\nDescription:\r\n" + description +
                "\r\nData: Bytes in Hex\r\n" + dump + "\r\n");
}

const std::string kPlain = Record("5", "who", "Volume Service", "Error", "text");
const std::string kNotice = Record("1", "who", "Record Broker", "Information", "Log backup created");

uint32_t Append(uint16_t type, uint16_t category, uint32_t limit = kDefaultLimit, const std::string &data = "",
                const char *source = "who", const char *description = "text")
{
    return qzvest::AppendToTextLog(
        kLog.c_str(), {type, category, 5, source, description, data.data(), static_cast<uint32_t>(data.size())}, limit);
}

void MakeSized(const std::string &path, size_t size)
{
    WriteText(path, std::string(size, '#'));
}

mode_t ModeOf(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class TextLog : public testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("gaugeworkinstallpath");
        unsetenv("GAUGEWORKINSTALLPATH");
        setenv("TZ", "XYZ-5:30", 1);
        tzset();
        ASSERT_EQ(unshare(CLONE_NEWUTS), 0);
        ASSERT_EQ(sethostname("h\xC3\xB6st", 5), 0);
        fs::create_directories("/var/run/qz/.ipc");
        fs::create_directory(kBase);
        WriteText(kRegistrationFile, std::string("Gaugework.logpath=") + kBase + "\n");
        umask(077);
        Reattach();
    }
    // The content, with "@" for each local time between the case's begin and now.
    std::string Content(const std::string &path) const
    {
        std::ifstream file(path, std::ios::binary);
        std::string text = file ? std::string{std::istreambuf_iterator<char>(file), {}} : kMissing;
        const std::string label = Wide("Date and Time: ");
        for (size_t at = text.find(label); at != std::string::npos; at = text.find(label, at)) {
            at += label.size();
            for (time_t t = began_, now = time(nullptr); t <= now; ++t) {
                const std::string line = Wide(std::string(ctime(&t), 24));
                if (text.compare(at, line.size(), line) == 0)
                    text.replace(at, line.size(), Wide("@"));
            }
        }
        return text;
    }

private:
    const time_t began_ = time(nullptr);
};

TEST_F(TextLog, HoldsTheRecordsOfAllKinds)
{
    constexpr struct {
        uint16_t type;
        const char *name;
    } kTypes[] = {{0, "None"},        {1, "Error"},         {2, "Warning"},
                  {4, "Information"}, {8, "Audit Success"}, {16, "Audit Failure"}};
    const char *const kCategories[] = {"Record Broker",       "Gaugework Service", "Volume Service",
                                       "Bridge Link Service", "Host Agent Frame",  "Package Ledger"};
    std::string data, expected = kHeader;
    for (int i = 0; i < 32768; ++i)
        data += static_cast<char>(i * 7);
    for (const auto &type : kTypes) {
        for (uint16_t category = 1; category <= 6; ++category) {
            const uint32_t id = 4294967295u / category * type.type;
            const uint32_t size = type.type + category; // rows that are short, full and more than one
            EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, type.type, category, id, "wh\xC3\xA9", "a\r\nb", data.data(), size),
                      0u);
            expected += Record(std::to_string(id), "wh\xE9", kCategories[category - 1], type.name, "a\r\nb",
                               Dump(data.substr(0, size)));
        }
    }
    EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 0, 1, 4294967295u, "s", "d", data.data(), 32768), 0u);
    EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 0, 1, 0, "s", "d", "yz{|}~ \x1F!0123:;@", 16), 0u);
    expected += Record("4294967295", "s", "Record Broker", "None", "d", Dump(data)) +
                Record("0", "s", "Record Broker", "None", "d",
                       "0x00000000: 79 7A 7B 7C:7D 7E 20 1F:21 30 31 32:33 3A 3B 40   yz.... .!0123:;@  \n");
    EXPECT_TRUE(Content(kLog) == expected);
    EXPECT_EQ(ModeOf(kLog), 0664u);
    EXPECT_EQ(ModeOf(fs::path(kLog).parent_path()), 0700u); // as the mask has it
}

TEST_F(TextLog, ShortFilesGetTheBlock)
{
    for (const size_t size : {0, 1, 100, 255, 256, 257}) {
        MakeSized(kLog, size);
        EXPECT_EQ(Append(1, 3), SM_STATUS_OK);
        EXPECT_EQ(Content(kLog), std::string(size, '#') + (size < 256 ? kHeader : "") + kPlain) << size;
    }
}

TEST_F(TextLog, WhatIsNoEventIsRefused)
{
    const std::string fits(1023, 'x'), over(1024, 'x');
    const struct {
        uint16_t type, category;
        const char *source, *description;
        uint32_t status;
    } cases[] = {
        {3, 3, "who", "text", SM_STATUS_BAD_ARGUMENT},
        {1, 0, "who", "text", SM_STATUS_OK},
        {3, 7, "who", "text", SM_STATUS_OK},
        {1, 7, "", "text", SM_STATUS_BAD_ARGUMENT},
        {1, 7, "who", "", SM_STATUS_BAD_ARGUMENT},
        {1, 7, over.c_str(), "", SM_STATUS_BUFFER_TOO_SMALL},
        {1, 7, "", over.c_str(), SM_STATUS_BUFFER_TOO_SMALL},
        {1, 3, "who", nullptr, SM_STATUS_INVALID_PARAMETER},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(Append(c.type, c.category, kDefaultLimit, "", c.source, c.description), c.status);
        EXPECT_EQ(Content(kLog), kMissing);
    }
    EXPECT_EQ(Append(1, 3, kDefaultLimit, "", fits.c_str(), fits.c_str()), SM_STATUS_OK);
    EXPECT_EQ(Content(kLog), kHeader + Record("5", fits, "Volume Service", "Error", fits));
}

TEST_F(TextLog, ABackupComesWhereTheEstimateReachesTheLimit)
{
    constexpr uint32_t kSize = 300;
    for (const uint32_t dataSize : {0u, 15u, 16u, 40u, 32768u}) {
        const std::string data(dataSize, 'd');
        const uint32_t reached = kSize + (dataSize / 16 * 83 + 1107 + 3 + 4) * 2;
        const std::string old(kSize, '#'), record = Record("5", "who", "Volume Service", "Error", "text", Dump(data));
        MakeSized(kLog, kSize);
        fs::remove(kBackup);
        EXPECT_EQ(Append(1, 3, reached + 1, data), SM_STATUS_OK);
        EXPECT_TRUE(Content(kLog) == old + record) << dataSize;
        EXPECT_EQ(Content(kBackup), kMissing);

        MakeSized(kLog, kSize);
        chmod(kLog.c_str(), 05640);
        EXPECT_EQ(Append(1, 3, reached, data), SM_STATUS_OK);
        EXPECT_TRUE(Content(kLog) == kHeader + kNotice + record) << dataSize;
        EXPECT_EQ(Content(kBackup), old);
        EXPECT_EQ(ModeOf(kLog), 01640u);
    }
    MakeSized(kLog, kSize + 1);
    EXPECT_EQ(Append(3, 7, 0), SM_STATUS_OK); // a category that there is not is found out before
    EXPECT_EQ(Content(kBackup), std::string(kSize, '#'));
    EXPECT_EQ(Append(3, 3, 0), SM_STATUS_BAD_ARGUMENT); // a type is not
    EXPECT_EQ(Content(kBackup), std::string(kSize + 1, '#'));
    EXPECT_EQ(Content(kLog), kHeader + kNotice);

    EXPECT_EQ(SMSetLogMaxSize(kLog.c_str(), kDefaultLimit + 1), SM_STATUS_OK);
    for (const bool isFull : {false, true}) {
        MakeSized(kLog, kDefaultLimit - (1107 + 3 + 4) * 2 + isFull);
        EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 1, 3, 5, "who", "text", nullptr, 0), SM_STATUS_OK);
        EXPECT_EQ(Content(kLog) == kHeader + kNotice + kPlain, isFull);
    }
}

TEST_F(TextLog, BackupsHaveNames)
{
    EXPECT_EQ(qzvest::BackUpLog("a"), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(qzvest::BackUpLog(std::string(256, 'a').c_str()), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(qzvest::BackUpLog(("/run/" + std::string(250, 'a')).c_str()), SM_STATUS_FAILED);
    EXPECT_EQ(Failing(1, [] { return qzvest::BackUpLog("/run/ab"); }), SM_STATUS_NO_MEMORY);

    const struct {
        uint8_t targets;
        uint32_t size;
        uint32_t status, sizeAfter; // of the path
        const char *path;
        uint32_t backupStatus, backupSize;
        const char *backup;
    } cases[] = {{0, 256, 2, 256, "-", 2, 256, "-"},
                 {SM_LOG_SYSTEM | SM_LOG_TEXT, 256, 1, 256, "-", 1, 256, "-"},
                 {SM_LOG_TEXT, 256, 0, 26, "/run/base/log/qzsys64.log", 0, 26, "/run/base/log/qzsys64.lo_"},
                 {SM_LOG_XML, 256, 0, 26, "/run/base/log/qzsys64.xml", 0, 26, "/run/base/log/qzsys64.xm_"},
                 {12, 256, 0, 26, "/run/base/log/qzsys64.xml", 0, 26, "/run/base/log/qzsys64.xm_"},
                 {SM_LOG_TEXT, 255, 16, 256, "-", 0, 26, "/run/base/log/qzsys64.lo_"},
                 {SM_LOG_TEXT, 26, 16, 256, "-", 0, 26, "/run/base/log/qzsys64.lo_"},
                 {SM_LOG_TEXT, 25, 16, 256, "-", 0, 26, "-"}};
    for (const auto &c : cases) {
        char path[256] = "-", backup[256] = "-";
        uint32_t size = c.size, backupSize = c.size;
        EXPECT_EQ(SMGetLogPathFileName(c.targets, path, &size), c.status);
        EXPECT_EQ(size, c.sizeAfter);
        EXPECT_STREQ(path, c.path);
        EXPECT_EQ(SMGetBackupLogPathFileName(c.targets, backup, &backupSize), c.backupStatus);
        EXPECT_EQ(backupSize, c.backupSize);
        EXPECT_STREQ(backup, c.backup);
    }
}

TEST_F(TextLog, EachTargetGetsTheEvent)
{
    const SystemLog systemLog;
    for (int targets = 0; targets < 32; ++targets) {
        fs::remove(kLog);
        fs::remove(kXML);
        EXPECT_EQ(SMAppendToLog(static_cast<uint8_t>(targets), 1, 3, 5, "who", "text", nullptr, 0),
                  targets == 0 ? SM_STATUS_BAD_ARGUMENT : SM_STATUS_OK);
        EXPECT_EQ(systemLog.Next().ends_with("who: Volume Service EventID: 5  text"), (targets & 2) != 0) << targets;
        EXPECT_EQ(Content(kLog), (targets & 4) != 0 ? kHeader + kPlain : kMissing) << targets;
        EXPECT_EQ(fs::exists(kXML), (targets & 8) != 0) << targets;
    }
    const struct {
        const char *source;
        const char *data;
        uint32_t dataSize;
    } noRecords[] = {{nullptr, nullptr, 0}, {"who", nullptr, 1}, {"who", kBase, 32769}, {"", nullptr, 0}};
    fs::remove(kLog);
    for (const auto &c : noRecords) {
        EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 1, 3, 5, c.source, "text", c.data, c.dataSize), SM_STATUS_OK);
        EXPECT_EQ(Content(kLog), kMissing);
    }
    fs::remove_all(kBase);
    for (const int targets : {2, 6, 10, 14}) { // the path is asked for behind the system log
        EXPECT_EQ(SMAppendToLog(static_cast<uint8_t>(targets), 1, 3, 5, "who", "text", nullptr, 0),
                  targets == 2 ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT);
        EXPECT_NE(systemLog.Next(), "");
        EXPECT_FALSE(fs::exists(kBase));
    }
}

TEST_F(TextLog, ClearingBeginsAnew)
{
    const std::string cleared = kHeader + Record("0", "who", "Volume Service", "Information", "Log was cleared");
    const std::string over(1024, 'x');
    const struct {
        uint8_t targets;
        uint16_t category;
        const char *source;
        uint32_t status;
        std::string log;
        bool xmlStays;
    } cases[] = {{0, 3, "who", 2, "old", true},
                 {6, 3, "who", 1, "old", true},
                 {4, 3, "who", 0, cleared, true},
                 {4, 3, nullptr, 2, kMissing, true},
                 {4, 3, "who", UINT32_MAX, kMissing, true},
                 {12, 3, "who", UINT32_MAX, kMissing, true},
                 {12, 3, "who", 0, cleared, false},
                 {12, 3, nullptr, 2, kMissing, true},
                 {4, 7, "who", 0, kMissing, true},
                 {4, 3, "", 2, kMissing, true},
                 {4, 3, over.c_str(), 16, kMissing, true},
                 {12, 3, over.c_str(), 2, kMissing, false}};
    for (const auto &c : cases) {
        WriteText(kXML, "old");
        if (c.status != UINT32_MAX)
            WriteText(kLog, "old");
        else
            fs::remove(kLog);
        EXPECT_EQ(SMClearLog(c.targets, c.category, c.source), c.status);
        EXPECT_EQ(Content(kLog), c.log);
        EXPECT_EQ(Content(kXML) == "old", c.xmlStays);
    }
}

TEST_F(TextLog, FailuresShowAndLeaveWhatIsWritten)
{
    const std::string data(32768, 'd');
    fs::create_directory(fs::path(kLog).parent_path());
    ASSERT_EQ(mount("tmpfs", fs::path(kLog).parent_path().c_str(), "tmpfs", 0, "size=8k"), 0);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Append(1, 3, kDefaultLimit, data), SM_STATUS_LIMIT_REACHED);
        EXPECT_EQ(fs::file_size(kLog), 8192u);
        const std::string torn = Content(kLog),
                          whole = Record("5", "who", "Volume Service", "Error", "text", Dump(data));
        EXPECT_EQ(torn, (kHeader + whole).substr(0, torn.size()));
    }
    umount(fs::path(kLog).parent_path().c_str());

    qzvest::NetworkDetach();
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED); // no host name
    EXPECT_EQ(Content(kLog), kHeader);
    qzvest::NetworkAttach();
    EXPECT_EQ(Append(1, 3), SM_STATUS_OK);
    EXPECT_EQ(Content(kLog), kHeader + kPlain);

    fs::rename("/var/run/qz/.ipc", "/var/run/qz/away");
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED);
    EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 3, "who"), SM_STATUS_FAILED);
    fs::rename("/var/run/qz/away", "/var/run/qz/.ipc");
    EXPECT_EQ(Content(kLog), kHeader + kPlain);

    fs::remove(kLog);
    fs::create_symlink(kLog, kLog);
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED); // a file that does not open
    fs::remove_all(fs::path(kLog).parent_path());
    fs::remove(kBase);
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED); // a directory that cannot be made
}

TEST_F(TextLog, MemoryRunsOut)
{
    EXPECT_EQ(Append(1, 3), SM_STATUS_OK); // the lock's record stays
    const std::string data(30 * 16, 'd');  // more than the buffers of the dump have room for
    const std::string undumped = kHeader + kPlain;
    const std::pair<uint32_t, std::string> left[] = {
        {SM_STATUS_FAILED, kMissing},   {SM_STATUS_NO_MEMORY, kMissing}, {SM_STATUS_FAILED, kHeader},
        {SM_STATUS_NO_MEMORY, kHeader}, {SM_STATUS_FAILED, kHeader},     {SM_STATUS_OK, undumped},
        {SM_STATUS_OK, undumped},
    };
    const int faults = SweepAllocations([&](int nth) {
        fs::remove(kLog);
        FailAllocation(nth);
        const uint32_t status = Append(1, 3, kDefaultLimit, data);
        const bool failed = StopFault();
        if (failed && static_cast<size_t>(nth) <= std::size(left)) {
            EXPECT_EQ(status, left[nth - 1].first);
            EXPECT_EQ(Content(kLog), left[nth - 1].second);
        }
        return failed;
    });
    EXPECT_EQ(faults, static_cast<int>(std::size(left)));

    const auto append = [] { return SMAppendToLog(SM_LOG_SYSTEM | SM_LOG_TEXT, 1, 3, 5, "who", "text", nullptr, 0); };
    EXPECT_EQ(Failing(1, append), SM_STATUS_OK); // the system log's is not told
    EXPECT_EQ(Failing(2, append), SM_STATUS_FAILED);
    EXPECT_EQ(Failing(1, [] { return SMClearLog(SM_LOG_TEXT, 3, "who"); }), SM_STATUS_FAILED);
    uint32_t size = 0;
    EXPECT_EQ(Failing(1, [&] { return SMGetBackupLogPathFileName(0, nullptr, &size); }), SM_STATUS_NO_MEMORY);
}

TEST_F(TextLog, AKilledWriterLeavesWholeLines)
{
    if (const std::string reason = TraceHindrance(); !reason.empty())
        GTEST_SKIP() << reason;
    int points = 0;
    for (const std::string &before : {std::string(), kHeader + kPlain}) {
        const std::string whole = (before.empty() ? kHeader : before) + kPlain;
        for (int nth = 1;; ++nth) {
            SCOPED_TRACE(nth);
            fs::remove(kLog);
            if (!before.empty())
                WriteText(kLog, before);
            const auto append = [] { return Append(1, 3) == SM_STATUS_OK ? 0 : 1; };
            const TraceOutcome outcome = Trace(
                [append] {
                    TraceBegin();
                    const int result = append();
                    TraceEnd();
                    return result;
                },
                {nth, 0, nullptr});
            const std::string left = fs::exists(kLog) ? Content(kLog) : "";
            EXPECT_TRUE(whole.starts_with(left));
            EXPECT_TRUE(left.empty() || left.ends_with(Wide("\n"))) << left;
            EXPECT_EQ(InOtherProcess(append), 0);
            EXPECT_EQ(Content(kLog), left + (left.size() < 256 ? kHeader : "") + kPlain);
            if (!outcome.reached) {
                EXPECT_EQ(left, whole);
                break;
            }
            ++points;
        }
    }
    std::printf("COUNT text log appends killed: %d crash points\n", points);
}

} // namespace
