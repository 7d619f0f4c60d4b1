// The text log byte for byte, and the front end's way to it.

#include "log/textlog.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <string>

#include <qzvest/eventlog.h>

#include "config/places.h"
#include "log/logfile.h"
#include "os/ipv4.h"
#include "support/systemlog.h"
#include "support/trace.h"
#include "text/sizedstring.h"
#include "values/bytetext.h"

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
    SMSSUTF8Str dump;
    qzvest::SMSSUTF8StrAlloc(&dump, 1);
    qzvest::SMXLTDumpToSizedString(&dump, reinterpret_cast<const uint8_t *>(data.data()),
                                   static_cast<uint32_t>(data.size()), 0);
    const std::string text(dump.text, dump.length);
    qzvest::SMSSUTF8StrFree(&dump);
    return text;
}

// All texts in Latin-1.
std::string Record(const std::string &eventId, const std::string &source, const std::string &category,
                   const std::string &type, const std::string &description, const std::string &dump = "")
{
    return Wide("EventID: " + eventId + "\r\nSource: " + source + "\r\nCategory: " + category + "\r\nType: " + type +
                "\r\nDate and Time: Wed Nov 15 03:43:20 2023\r\nComputer: h\xF6st\r\nDescription:\r\n" + description +
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
};

TEST_F(TextLog, HoldsTheRecordsOfAllKinds)
{
    const std::pair<uint16_t, const char *> kTypes[] = {
        {0, "None"}, {1, "Error"}, {2, "Warning"}, {4, "Information"}, {8, "Audit Success"}, {16, "Audit Failure"}};
    const char *const kCategories[] = {"Record Broker",       "Gaugework Service", "Volume Service",
                                       "Bridge Link Service", "Host Agent Frame",  "Package Ledger"};
    std::string data, expected = kHeader;
    for (int i = 0; i < 32768; ++i)
        data += static_cast<char>(i * 7);
    for (const auto &[type, name] : kTypes) {
        for (uint16_t category = 1; category <= 6; ++category) {
            const uint32_t id = 4294967295u / category * type;
            const uint32_t size = type + category; // rows that are short, full and more than one
            EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, type, category, id, "wh\xC3\xA9", "a\r\nb", data.data(), size), 0u);
            expected += Record(std::to_string(id), "wh\xE9", kCategories[category - 1], name, "a\r\nb",
                               Dump(data.substr(0, size)));
        }
    }
    EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 0, 1, 4294967295u, "s", "d", data.data(), 32768), 0u);
    EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 0, 1, 0, "s", "d", "yz{|}~ \x1F!0123:;@", 16), 0u);
    expected += Record("4294967295", "s", "Record Broker", "None", "d", Dump(data)) +
                Record("0", "s", "Record Broker", "None", "d",
                       "0x00000000: 79 7A 7B 7C:7D 7E 20 1F:21 30 31 32:33 3A 3B 40   yz.... .!0123:;@  \n");
    EXPECT_TRUE(ReadText(kLog) == expected);
    EXPECT_EQ(ModeOf(kLog), 0664u);
    EXPECT_EQ(ModeOf(fs::path(kLog).parent_path()), 0700u); // as the mask has it
    for (const size_t size : {1, 255, 256}) {
        const std::string old(size, '#');
        WriteText(kLog, old);
        EXPECT_EQ(Append(1, 3), SM_STATUS_OK);
        EXPECT_EQ(ReadText(kLog), old + (size < 256 ? kHeader : "") + kPlain) << size;
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
        {1, 3, "who", nullptr, SM_STATUS_INVALID_PARAMETER},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(Append(c.type, c.category, kDefaultLimit, "", c.source, c.description), c.status);
        EXPECT_EQ(ReadText(kLog), kMissing);
    }
    EXPECT_EQ(Append(1, 3, kDefaultLimit, "", fits.c_str(), fits.c_str()), SM_STATUS_OK);
    EXPECT_EQ(ReadText(kLog), kHeader + Record("5", fits, "Volume Service", "Error", fits));
}

TEST_F(TextLog, ABackupComesWhereTheEstimateReachesTheLimit)
{
    const std::string old(300, '#');
    for (const uint32_t dataSize : {0u, 15u, 16u, 32768u}) {
        const std::string data(dataSize, 'd'),
            record = Record("5", "who", "Volume Service", "Error", "text", Dump(data));
        const uint32_t reached = 300 + (dataSize / 16 * 83 + 1107 + 3 + 4) * 2;
        for (const bool isFull : {false, true}) {
            fs::remove(kBackup);
            WriteText(kLog, old);
            chmod(kLog.c_str(), 05640);
            EXPECT_EQ(Append(1, 3, reached + !isFull, data), SM_STATUS_OK);
            EXPECT_TRUE(ReadText(kLog) == (isFull ? kHeader + kNotice : old) + record) << dataSize;
            EXPECT_EQ(ReadText(kBackup), isFull ? old : kMissing);
            EXPECT_EQ(ModeOf(kLog), 01640u);
        }
    }
    WriteText(kLog, old + "#");
    EXPECT_EQ(Append(3, 7, 0), SM_STATUS_OK); // a category that there is not is found out before
    EXPECT_EQ(ReadText(kBackup), old);
    EXPECT_EQ(Append(3, 3, 0), SM_STATUS_BAD_ARGUMENT); // a type is not
    EXPECT_EQ(ReadText(kBackup), old + "#");
    EXPECT_EQ(ReadText(kLog), kHeader + kNotice);

    EXPECT_EQ(SMSetLogMaxSize(kLog.c_str(), kDefaultLimit + 1), SM_STATUS_OK);
    for (const bool isFull : {false, true}) {
        WriteText(kLog, std::string(kDefaultLimit - (1107 + 3 + 4) * 2 + isFull, '#'));
        EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 1, 3, 5, "who", "text", nullptr, 0), SM_STATUS_OK);
        EXPECT_EQ(ReadText(kLog) == kHeader + kNotice + kPlain, isFull);
    }
}

TEST_F(TextLog, LogsAndBackupsHaveNames)
{
    EXPECT_EQ(qzvest::BackUpLog("a"), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(qzvest::BackUpLog(std::string(256, 'a').c_str()), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(qzvest::BackUpLog(("/run/" + std::string(250, 'a')).c_str()), SM_STATUS_FAILED);

    const struct {
        uint8_t targets;
        uint32_t size, status, sizeAfter; // of the path
        std::string path;
        uint32_t backupStatus, backupSize;
        std::string backup;
    } cases[] = {{0, 256, 2, 256, "-", 2, 256, "-"},
                 {SM_LOG_SYSTEM | SM_LOG_TEXT, 256, 1, 256, "-", 1, 256, "-"},
                 {12, 256, 0, 26, kXML, 0, 26, "/run/base/log/qzsys64.xm_"},
                 {SM_LOG_TEXT, 256, 0, 26, kLog, 0, 26, kBackup},
                 {SM_LOG_TEXT, 26, 16, 256, "-", 0, 26, kBackup},
                 {SM_LOG_TEXT, 25, 16, 256, "-", 0, 26, "-"}};
    for (const auto &c : cases) {
        char path[256] = "-", backup[256] = "-";
        uint32_t size = c.size, backupSize = c.size;
        EXPECT_EQ(SMGetLogPathFileName(c.targets, path, &size), c.status);
        EXPECT_EQ(size, c.sizeAfter);
        EXPECT_EQ(path, c.path);
        EXPECT_EQ(SMGetBackupLogPathFileName(c.targets, backup, &backupSize), c.backupStatus);
        EXPECT_EQ(backupSize, c.backupSize);
        EXPECT_EQ(backup, c.backup);
    }
}

TEST_F(TextLog, EachTargetGetsTheEvent)
{
    const SystemLog systemLog;
    const auto append = [](int targets, const char *source, const char *data, uint32_t dataSize) {
        return SMAppendToLog(static_cast<uint8_t>(targets), 1, 3, 5, source, "text", data, dataSize);
    };
    for (int targets = 0; targets < 32; ++targets) {
        fs::remove(kLog);
        fs::remove(kXML);
        EXPECT_EQ(append(targets, "who", nullptr, 0), targets == 0 ? SM_STATUS_BAD_ARGUMENT : SM_STATUS_OK);
        EXPECT_EQ(systemLog.Next().ends_with("who: Volume Service EventID: 5  text"), (targets & 2) != 0) << targets;
        EXPECT_EQ(ReadText(kLog), (targets & 4) != 0 ? kHeader + kPlain : kMissing) << targets;
        EXPECT_EQ(fs::exists(kXML), (targets & 8) != 0) << targets;
    }
    fs::remove(kLog);
    EXPECT_EQ(append(SM_LOG_TEXT, nullptr, nullptr, 0) + append(SM_LOG_TEXT, "", nullptr, 0), 0u); // nobody is told
    EXPECT_EQ(append(SM_LOG_TEXT, "who", nullptr, 1) + append(SM_LOG_TEXT, "who", kBase, 32769), 0u);
    EXPECT_EQ(ReadText(kLog), kMissing);
    fs::remove_all(kBase);
    for (const int targets : {2, 6, 10, 14}) { // the path is asked for behind the system log
        EXPECT_EQ(append(targets, "who", nullptr, 0), targets == 2 ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT);
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
                 {12, 3, "who", 0, cleared, false},
                 {12, 3, nullptr, 2, kMissing, true},
                 {12, 3, "who", UINT32_MAX, kMissing, true}, // what is not there is not cleared
                 {4, 7, "who", 0, kMissing, true},
                 {4, 3, "", 2, kMissing, true},
                 {12, 3, over.c_str(), 2, kMissing, false}};
    for (const auto &c : cases) {
        WriteText(kXML, "old");
        WriteText(kLog, "old");
        if (c.status == UINT32_MAX)
            fs::remove(kLog);
        EXPECT_EQ(SMClearLog(c.targets, c.category, c.source), c.status);
        EXPECT_EQ(ReadText(kLog), c.log);
        EXPECT_EQ(ReadText(kXML) == "old", c.xmlStays);
    }
}

TEST_F(TextLog, FailuresShowAndLeaveWhatIsWritten)
{
    const std::string data(32768, 'd');
    const fs::path folder = fs::path(kLog).parent_path();
    fs::create_directory(folder);
    ASSERT_EQ(mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=8k"), 0);
    EXPECT_EQ(Append(1, 3, kDefaultLimit, data), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(fs::file_size(kLog), 8192u);
    const std::string torn = ReadText(kLog), whole = Record("5", "who", "Volume Service", "Error", "text", Dump(data));
    EXPECT_EQ(torn, (kHeader + whole).substr(0, torn.size()));
    EXPECT_EQ(Append(1, 3), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(ReadText(kLog), torn);
    umount(folder.c_str());

    qzvest::NetworkDetach();
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED); // no host name
    EXPECT_EQ(ReadText(kLog), kHeader);
    qzvest::NetworkAttach();
    EXPECT_EQ(Append(1, 3), SM_STATUS_OK);

    fs::rename("/var/run/qz/.ipc", "/var/run/qz/away");
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED);
    EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 3, "who"), SM_STATUS_FAILED);
    fs::rename("/var/run/qz/away", "/var/run/qz/.ipc");
    EXPECT_EQ(ReadText(kLog), kHeader + kPlain);

    fs::remove(kLog);
    fs::create_symlink(kLog, kLog);
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED); // a file that does not open
    fs::remove_all(kBase);
    EXPECT_EQ(Append(1, 3), SM_STATUS_FAILED); // a directory that cannot be made
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
            const std::string left = fs::exists(kLog) ? ReadText(kLog) : "";
            EXPECT_TRUE(whole.starts_with(left));
            EXPECT_TRUE(left.empty() || left.ends_with(Wide("\n"))) << left;
            EXPECT_EQ(InOtherProcess(append), 0);
            EXPECT_EQ(ReadText(kLog), left + (left.size() < 256 ? kHeader : "") + kPlain);
            if (!outcome.reached) {
                EXPECT_EQ(left, whole);
                break;
            }
            ++points;
        }
    }
    std::printf("%d crash points\n", points);
}

} // namespace

// In place of the C library's, for this program.
extern "C" time_t time(time_t *) noexcept
{
    return 1700000000;
}
