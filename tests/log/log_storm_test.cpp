// Many writers on both logs at once, with backups in between.

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <qzvest/qzvest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/soak.h"

namespace {

constexpr uint32_t kProcesses = 8;
constexpr uint32_t kEvents = 200; // of each process
constexpr uint32_t kLimit = 0x100000;
constexpr uint32_t kDataSize = 800;
constexpr uint32_t kLargest = 20000; // bytes of an event in either log
const std::string kRoot = "/run/storm";
const std::string kClosingTag = "</EventLog>";

using Numbers = std::map<uint32_t, std::vector<uint32_t>>; // of the events of each process, in the order of a file

std::string Get(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int Write(uint32_t process)
{
    for (const uint8_t target : {SM_LOG_TEXT, SM_LOG_XML}) {
        char path[256];
        uint32_t size = sizeof path;
        if (SMGetLogPathFileName(target, path, &size) != SM_STATUS_OK || SMSetLogMaxSize(path, kLimit) != SM_STATUS_OK)
            return 1;
    }
    const std::string data(kDataSize, 'Q');
    for (uint32_t i = 0; i < kEvents; ++i) {
        const uint32_t id = (process + 1) * 1000 + i;
        const std::string text = "event " + std::to_string(id);
        if (SMAppendToLog(SM_LOG_TEXT | SM_LOG_XML, SM_LOG_TYPE_WARNING, SM_LOG_VOLUME_SERVICE, id, "storm",
                          text.c_str(), data.data(), kDataSize) != SM_STATUS_OK)
            return 2;
    }
    return 0;
}

// Where in a record, which has the same length for every event, its number stands and what differs by its time.
struct Format {
    const char *begin;
    const char *beforeId;
    std::vector<std::pair<const char *, size_t>> times;
    size_t header;
    size_t unit; // bytes of a character
};

const Format kXML = {"<LogEntry>", "<ID>", {{"<TimeStamp>", 10}, {"<DateTime>", 24}}, 48, 1};
const Format kText = {"EventID: ", "EventID: ", {{"Date and Time: ", 24}}, 256, 2};

// But for number and time, all the records of a file have to be the same; those that the log writes about itself are
// not counted.
Numbers Read(const std::string &file, const Format &format)
{
    std::string text;
    for (size_t i = format.header; i < file.size(); i += format.unit)
        text += file[i];
    if (&format == &kXML && text.ends_with(kClosingTag))
        text.resize(text.size() - kClosingTag.size());
    Numbers numbers;
    std::set<std::string> masked;
    EXPECT_TRUE(text.starts_with(format.begin)) << text.substr(0, 100);
    for (size_t at = 0, next; at < text.size(); at = next) {
        next = std::min(text.find(format.begin, at + 1), text.size());
        std::string record = text.substr(at, next - at);
        if (record.find("Log backup created") != std::string::npos)
            continue;
        const std::string id = record.substr(record.find(format.beforeId) + std::strlen(format.beforeId), 4);
        for (size_t place; (place = record.find(id)) != std::string::npos && place < record.find("0x");)
            record.replace(place, id.size(), "####");
        for (const auto &[label, size] : format.times)
            record.replace(record.find(label) + std::strlen(label), size, "");
        masked.insert(record);
        const auto number = static_cast<uint32_t>(std::stoul(id));
        numbers[number / 1000 - 1].push_back(number % 1000);
    }
    EXPECT_LE(masked.size(), 1u) << *masked.begin() << "\n" << *masked.rbegin();
    return numbers;
}

bool IsWellFormed(const std::string &file)
{
    xmlDoc *document = xmlReadMemory(file.data(), static_cast<int>(file.size()), nullptr, nullptr, 0);
    xmlFreeDoc(document);
    return document != nullptr;
}

// The backup is what stood in front of the log. What is in the two are the last events of each process without a gap:
// what is older has gone with the backups before.
void Check(const std::string &log, const std::string &backup, const Format &format)
{
    SCOPED_TRACE(log);
    const std::string file = Get(log);
    EXPECT_LT(file.size(), kLimit + kProcesses * kLargest);
    EXPECT_LT(Get(backup).size(), kLimit + kProcesses * kLargest);
    Numbers older = std::filesystem::exists(backup) ? Read(Get(backup), format) : Numbers();
    Numbers newer = Read(file, format);
    size_t count = 0;
    for (uint32_t process = 0; process < kProcesses; ++process) {
        std::vector<uint32_t> all = older[process];
        all.insert(all.end(), newer[process].begin(), newer[process].end());
        count += all.size();
        for (size_t i = 0; i < all.size(); ++i)
            ASSERT_EQ(all[i], kEvents - all.size() + i) << process;
    }
    EXPECT_GT(count, 0u);
    EXPECT_LT(count, size_t{kProcesses} * kEvents); // there were several backups
}

void Storm()
{
    std::filesystem::remove_all(kRoot + "/log");
    std::vector<pid_t> children;
    for (uint32_t process = 0; process < kProcesses; ++process) {
        const pid_t child = fork();
        if (child == 0)
            _exit(Write(process));
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    const std::string log = kRoot + "/log/qzsys64.";
    EXPECT_TRUE(IsWellFormed(Get(log + "xml")));
    EXPECT_TRUE(!std::filesystem::exists(log + "xm_") || IsWellFormed(Get(log + "xm_")));
    Check(log + "xml", log + "xm_", kXML);
    Check(log + "log", log + "lo_", kText);
}

TEST(LogStorm, NoEventIsTornOrTwice)
{
    std::filesystem::create_directories("/var/run/qz/.ipc");
    std::filesystem::create_directories(kRoot);
    setenv("gaugeworkinstallpath", kRoot.c_str(), 1);
    uint32_t none = 0;
    ASSERT_EQ(SMGetPathByProductIDandType(35, SM_PATH_LOG, nullptr, &none), SM_STATUS_BUFFER_TOO_SMALL); // is read anew
    const auto rounds = static_cast<uint32_t>(FromEnvironment("QZVEST_SOAK", 1));
    for (uint32_t round = 0; round < rounds && !HasFailure(); ++round)
        Storm();
    std::printf("COUNT storm on logs: %u processes, %u events in each of two logs\n", rounds * kProcesses,
                rounds * kProcesses * kEvents);
}

} // namespace
