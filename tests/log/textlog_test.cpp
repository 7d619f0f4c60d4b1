// The text log byte for byte, the front end's way to both logs, and how large they may grow.

#include "log/textlog.h"

#include <sys/syscall.h>
#include <sys/utsname.h>

#include <cstring>
#include <map>

#include "log/logfile.h"
#include "log/logs.h"
#include "log/xmllog.h"
#include "os/ipv4.h"
#include "support/systemlog.h"

namespace {

const char *systemName; // in place of the machine's

const std::string kPlain = Record("5", "who", "Volume Service", "Error", "text");
const std::string kNotice = Record("1", "who", "Record Broker", "Information", "Log backup created");

uint32_t Append(uint16_t type = 1, uint16_t category = 3, uint32_t limit = kDefaultLimit, const std::string &data = "",
                const char *source = "who", const char *description = "text")
{
    return qzvest::AppendToTextLog(
        kLog.c_str(), {type, category, 5, source, description, data.data(), static_cast<uint32_t>(data.size())}, limit);
}

using TextLog = Logs;

TEST_F(TextLog, HoldsTheRecordsOfAllKinds)
{
    const std::pair<uint16_t, const char *> kTypes[] = {
        {0, "None"}, {1, "Error"}, {2, "Warning"}, {4, "Information"}, {8, "Audit Success"}, {16, "Audit Failure"}};
    std::string data, expected = kHeader;
    for (int i = 0; i < 32768; ++i)
        data += static_cast<char>(i * 7);
    for (const auto &[type, name] : kTypes) {
        for (uint16_t category = 1; category <= 6; ++category) {
            const uint32_t id = 4294967295u / category * type;
            const uint32_t size = type + category; // rows that are short, full and more than one
            EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, type, category, id, "wh\xC3\xA9", "a\r\nb", data.data(), size), 0u);
            expected +=
                Record(std::to_string(id), "wh\xE9", kCategories[category - 1], name, "a\r\nb", data.substr(0, size));
        }
    }
    EXPECT_EQ(SMAppendToLog(SM_LOG_TEXT, 0, 1, 4294967295u, "s", "d", data.data(), 32768), 0u);
    EXPECT_TRUE(ReadText(kLog) == expected + Record("4294967295", "s", "Record Broker", "None", "d", data));
    EXPECT_EQ(ModeOf(kLog), 0664u);
    EXPECT_EQ(ModeOf(kFolder), 0700u); // as the mask has it
    for (const size_t size : {1, 255, 256}) {
        const std::string old(size, '#');
        WriteText(kLog, old);
        EXPECT_EQ(Append(), SM_STATUS_OK);
        EXPECT_EQ(ReadText(kLog), old + (size < 256 ? kHeader : "") + kPlain) << size;
    }
}

TEST_F(TextLog, WhatIsNoEventIsRefused)
{
    const std::string fits(1023, 'x'), over(1024, 'x');
    const std::tuple<uint16_t, uint16_t, const char *, const char *, uint32_t> cases[] = {
        {3, 3, "who", "text", SM_STATUS_BAD_ARGUMENT},
        {1, 0, "who", "text", SM_STATUS_OK},
        {3, 7, "who", "text", SM_STATUS_OK},
        {1, 7, "", "text", SM_STATUS_BAD_ARGUMENT},
        {1, 7, "who", "", SM_STATUS_BAD_ARGUMENT},
        {1, 7, over.c_str(), "", SM_STATUS_BUFFER_TOO_SMALL},
        {1, 3, "who", nullptr, SM_STATUS_INVALID_PARAMETER},
    };
    for (const auto &[type, category, source, description, status] : cases) {
        EXPECT_EQ(Append(type, category, kDefaultLimit, "", source, description), status);
        EXPECT_EQ(ReadText(kLog), kMissing);
    }
    EXPECT_EQ(Append(1, 3, kDefaultLimit, "", fits.c_str(), fits.c_str()), SM_STATUS_OK);
    EXPECT_EQ(ReadText(kLog), kHeader + Record("5", fits, "Volume Service", "Error", fits));
}

TEST_F(TextLog, ABackupComesWhereTheEstimateReachesTheLimit)
{
    const std::string old(300, '#');
    for (const uint32_t dataSize : {0u, 15u, 16u, 32768u}) {
        const std::string data(dataSize, 'd'), record = Record("5", "who", "Volume Service", "Error", "text", data);
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

    const auto name = [](auto call, auto of, uint32_t size) {
        char path[256] = "-";
        const uint32_t status = call(of, path, &size);
        return std::to_string(status) + " " + std::to_string(size) + " " + path;
    };
    const std::tuple<uint8_t, uint32_t, std::string, std::string> cases[] = {
        {0, 256, "2 256 -", "2 256 -"},
        {SM_LOG_SYSTEM | SM_LOG_TEXT, 256, "1 256 -", "1 256 -"},
        {SM_LOG_TEXT | SM_LOG_XML, 256, "0 26 " + kXML, "0 26 " + kXMLBackup},
        {SM_LOG_TEXT, 256, "0 26 " + kLog, "0 26 " + kBackup},
        {SM_LOG_TEXT, 26, "16 256 -", "0 26 " + kBackup},
        {SM_LOG_TEXT, 25, "16 256 -", "0 26 -"}};
    for (const auto &[targets, size, path, backup] : cases) {
        EXPECT_EQ(name(SMGetLogPathFileName, targets, size), path);
        EXPECT_EQ(name(SMGetBackupLogPathFileName, targets, size), backup);
    }
    const std::tuple<const char *, uint32_t, const char *> paths[] = {
        {"ab", 3, "0 3 a_"}, {"a/b.xml", 99, "0 8 a/b.xm_"}, {"ab", 2, "16 3 -"}, {"a", 9, "271 9 -"}};
    for (const auto &[path, size, backup] : paths)
        EXPECT_EQ(name(qzvest::SMGetBackupXMLLogPathFileName, path, size), backup);
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
    EXPECT_EQ(append(SM_LOG_TEXT, "who", nullptr, 1) + append(SM_LOG_TEXT, "who", "", 32769), 0u);
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
    Event notice = {4, 3, 0, "Local System", "who", "Log was cleared"};
    notice.linkInFile =
        "help/ghv/en/msgguide/wwhelp/wwhimpl/common/html/wwhelp.htm?context=Messages_Guide&amp;topic=0000";
    const std::string clearedXML = kHead + Entry(notice) + kTail;
    const std::tuple<uint8_t, uint16_t, const char *, uint32_t, std::string, std::string> cases[] = {
        {0, 3, "who", 2, "old", "old"},
        {6, 3, "who", 1, "old", "old"},
        {12, 3, "who", 0, cleared, clearedXML},
        {12, 3, nullptr, 2, kMissing, "old"},
        {12, 3, "who", UINT32_MAX, kMissing, "old"}, // what is not there is not cleared
        {8, 3, "who", UINT32_MAX, "old", kMissing},
        {4, 7, "who", 0, kMissing, "old"},
        {12, 3, over.c_str(), 2, kMissing, kMissing}};
    for (const auto &[targets, category, source, status, log, xml] : cases) {
        WriteText(kXML, "old");
        WriteText(kLog, "old");
        if (status == UINT32_MAX)
            fs::remove(targets == SM_LOG_XML ? kXML : kLog);
        EXPECT_EQ(SMClearLog(targets, category, source), status);
        EXPECT_EQ(ReadText(kLog), log);
        EXPECT_EQ(ReadText(kXML), xml);
    }
    EXPECT_EQ(qzvest::SMClearXMLLog(nullptr, 2, "u", "s"), SM_STATUS_NO_MEMORY);
}

TEST_F(TextLog, FailuresShowAndLeaveWhatIsWritten)
{
    const std::string whole = kHeader + kPlain;
    for (const size_t room : {size_t{0}, kHeader.size(), whole.size() - 1}) {
        EXPECT_EQ(InRoom(room, [] { return Append(); }), SM_STATUS_LIMIT_REACHED);
        EXPECT_EQ(ReadText(kLog), whole.substr(0, room));
        fs::remove(kLog);
    }

    qzvest::NetworkDetach();
    EXPECT_EQ(Append(), SM_STATUS_FAILED); // no host name
    EXPECT_EQ(ReadText(kLog), kHeader);
    qzvest::NetworkAttach();
    EXPECT_EQ(Append(), SM_STATUS_OK);

    fs::rename(kLocks, "/run/away");
    EXPECT_EQ(Append(), SM_STATUS_FAILED);
    EXPECT_EQ(SMClearLog(SM_LOG_TEXT, 3, "who"), SM_STATUS_FAILED);
    fs::rename("/run/away", kLocks);
    EXPECT_EQ(ReadText(kLog), whole);

    fs::remove(kLog);
    fs::create_symlink(kLog, kLog);
    EXPECT_EQ(Append(), SM_STATUS_FAILED); // a file that does not open
    fs::remove_all(kBase);
    EXPECT_EQ(Append(), SM_STATUS_FAILED); // a directory that cannot be made
}

TEST_F(TextLog, LimitsBelongToPaths)
{
    const std::string longest(255, 'p'), over(256, 'p');
    const auto limitOf = [](const std::string &path) {
        uint32_t limit = 0;
        EXPECT_EQ(SMGetLogMaxSize(path.c_str(), &limit), SM_STATUS_OK);
        return limit;
    };
    for (const auto &[name, lowest] : {std::pair("vmkERNEL", 131072u), std::pair("VMkernel2", kDefaultLimit)}) {
        systemName = name;
        Reattach(); // limits of the machine before are gone
        EXPECT_EQ(limitOf("/a"), lowest);
        for (const uint32_t size : {0u, lowest - 1, 4194305u, UINT32_MAX})
            EXPECT_EQ(SMSetLogMaxSize("/a", size), SM_STATUS_INVALID_PARAMETER);
        std::map<std::string, uint32_t> limits = {
            {"/b", lowest}, {"/a", 4194304}, {"//a", 2000000}, {longest, 2000001}};
        for (const auto &[path, limit] : limits)
            EXPECT_EQ(SMSetLogMaxSize(path.c_str(), 3000000) + SMSetLogMaxSize(path.c_str(), limit), 0u);
        limits["/other"] = limits[over] = lowest;
        for (const auto &[path, limit] : limits)
            EXPECT_EQ(limitOf(path), limit);
    }
    for (const char *path : {static_cast<const char *>(nullptr), "", over.c_str()})
        EXPECT_EQ(SMSetLogMaxSize(path, 2000000), SM_STATUS_INVALID_PARAMETER);
}

} // namespace

// In place of the C library's, for this program.
extern "C" int uname(utsname *name) noexcept
{
    const long result = syscall(SYS_uname, name);
    if (systemName != nullptr)
        std::strcpy(name->sysname, systemName);
    return static_cast<int>(result);
}
