// The logs and what they write about an event, at one moment and on one machine.
#ifndef TESTS_LOG_LOGS_H
#define TESTS_LOG_LOGS_H

#include <gtest/gtest.h>
#include <qzvest/eventlog.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <string>

#include "config/places.h"
#include "text/sizedstring.h"
#include "values/bytetext.h"

namespace fs = std::filesystem;

const std::string kBase = "/run/base";
const std::string kFolder = kBase + "/log/";
const std::string kLog = kFolder + "qzsys64.log", kBackup = kFolder + "qzsys64.lo_";
const std::string kXML = kFolder + "qzsys64.xml", kXMLBackup = kFolder + "qzsys64.xm_";
const std::string kLocks = "/var/run/qz/.ipc";
const std::string kMissing = "(missing)";
constexpr uint32_t kDefaultLimit = 1048576;
constexpr const char *kCategories[] = {"Record Broker",       "Gaugework Service", "Volume Service",
                                       "Bridge Link Service", "Host Agent Frame",  "Package Ledger"};

// In place of the C library's.
extern "C" [[gnu::used]] inline time_t time(time_t *) noexcept
{
    return 1700000000;
}

class Logs : public testing::Test {
protected:
    void SetUp() override
    {
        setenv("TZ", "XYZ-5:30", 1);
        ASSERT_EQ(unshare(CLONE_NEWUTS), 0);
        ASSERT_EQ(sethostname("h\xC3\xB6st", 5), 0);
        fs::create_directories(kLocks);
        fs::create_directory(kBase);
        WriteText(kRegistrationFile, "Gaugework.logpath=" + kBase + "\n");
        umask(077);
        Reattach();
    }
};

inline std::string Wide(const std::string &latin1)
{
    std::string units;
    for (const char byte : latin1)
        units += {byte, '\0'};
    return units;
}

// What a text log begins with.
const std::string kHeader =
    "\xFF\xFE" + Wide("#-------------------------------\r\n# Do not remove this block\r\n"
                      "# This data file is parsed\r\n#------------------------------- \r\n\r\n");

// All texts in Latin-1.
inline std::string Record(const std::string &eventId, const std::string &source, const std::string &category,
                          const std::string &type, const std::string &description, const std::string &data = "")
{
    SMSSUTF8Str dump;
    qzvest::SMSSUTF8StrAlloc(&dump, 1);
    qzvest::SMXLTDumpToSizedString(&dump, reinterpret_cast<const uint8_t *>(data.data()),
                                   static_cast<uint32_t>(data.size()), 0);
    const std::string record =
        Wide("EventID: " + eventId + "\r\nSource: " + source + "\r\nCategory: " + category + "\r\nType: " + type +
             "\r\nDate and Time: Wed Nov 15 03:43:20 2023\r\nComputer: h\xF6st\r\nDescription:\r\n" + description +
             "\r\nData: Bytes in Hex\r\n" + std::string(dump.text, dump.length) + "\r\n");
    qzvest::SMSSUTF8StrFree(&dump);
    return record;
}

// Around the entries of an XML log.
const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
const std::string kTail = "</EventLog>";

struct Event {
    uint16_t type = 2, category = 3;
    uint32_t id = 7;
    const char *user = "someone", *source = "here", *description = "it happened", *link = nullptr;
    std::string data = {}, linkInFile = {};
};

inline std::string Entry(const Event &event)
{
    const auto tagged = [](const std::string &name, const std::string &value) {
        return "<" + name + ">" + value + "</" + name + ">";
    };
    const auto text = [](const char *value) { return value != nullptr ? value : ""; };
    std::string data;
    char byte[8];
    for (const char one : event.data)
        data.append(byte, static_cast<size_t>(snprintf(byte, sizeof byte, ",0x%02X", one & 255)));
    return tagged("LogEntry", tagged("TimeStamp", "1700000000") + tagged("DateTime", "Wed Nov 15 03:43:20 2023") +
                                  tagged("ComputerName", "h\xC3\xB6st") + tagged("Type", std::to_string(event.type)) +
                                  tagged("ID", std::to_string(event.id)) + tagged("Link", event.linkInFile) +
                                  tagged("UserInfo", text(event.user)) + tagged("Source", text(event.source)) +
                                  tagged("Category", kCategories[event.category - 1]) +
                                  tagged("Description", text(event.description)) +
                                  tagged("Data", data.substr(!data.empty())));
}

// What a call gives while no file may grow beyond so many bytes.
uint32_t InRoom(size_t room, auto call)
{
    rlimit usual;
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit less = {room, usual.rlim_max};
    (void)signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &less);
    const uint32_t status = call();
    setrlimit(RLIMIT_FSIZE, &usual);
    return status;
}

#endif
