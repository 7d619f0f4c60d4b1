// Many writers on both logs at once, with backups in between.

#include <sys/wait.h>

#include <map>
#include <vector>

#include "log/logs.h"
#include "support/soak.h"

namespace {

constexpr uint32_t kProcesses = 8;
constexpr uint32_t kEvents = 200; // of each process
const std::string kData(800, 'Q');
constexpr uint32_t kLargest = 20000; // bytes of an event in either log

using Numbers = std::map<uint32_t, std::vector<uint32_t>>; // of the events of each process, in the order of a file

// One log after the other, so that the writers meet in both.
uint32_t Write(uint32_t process)
{
    uint32_t status = SM_STATUS_OK;
    for (const uint8_t target : {SM_LOG_TEXT, SM_LOG_XML})
        for (uint32_t i = 0; i < kEvents && status == SM_STATUS_OK; ++i)
            status = SMAppendToLog(target, SM_LOG_TYPE_WARNING, SM_LOG_VOLUME_SERVICE, (process + 1) * 1000 + i,
                                   "storm", "event", kData.data(), static_cast<uint32_t>(kData.size()));
    return status;
}

struct Format {
    const std::string path, backup, head, tail, beforeId;
    const size_t unit; // bytes of a digit
    std::string (*record)(uint32_t id);
};

// The file has to be made of whole records; those that the log writes about itself are not counted.
void Read(const std::string &path, const Format &format, Numbers &numbers)
{
    const std::string file = ReadText(path);
    if (path == format.backup && !fs::exists(path))
        return; // by a writer who found the log full while another was moving it
    const std::string text = file.substr(0, file.size() - format.tail.size());
    EXPECT_LT(file.size(), kDefaultLimit + kProcesses * kLargest);
    EXPECT_TRUE(file.starts_with(format.head) && file.ends_with(format.tail)) << path;
    for (size_t at = format.head.size(); at < text.size();) {
        uint32_t id = 0;
        for (size_t digit = text.find(format.beforeId, at) + format.beforeId.size();
             digit < text.size() && std::isdigit(text[digit]) != 0; digit += format.unit)
            id = id * 10 + static_cast<uint32_t>(text[digit] - '0');
        const std::string record = format.record(id);
        ASSERT_EQ(text.substr(at, record.size()), record) << path;
        at += record.size();
        if (id != 1)
            numbers[id / 1000 - 1].push_back(id % 1000);
    }
}

// The backup is what stood in front of the log. What is in the two are the last events of each process without a gap:
// what is older has gone with the backups before.
void Check(const Format &format)
{
    Numbers numbers;
    Read(format.backup, format, numbers);
    Read(format.path, format, numbers);
    size_t count = 0;
    for (const auto &[process, all] : numbers) {
        count += all.size();
        for (size_t i = 0; i < all.size(); ++i)
            ASSERT_EQ(all[i], kEvents - all.size() + i) << format.path << ' ' << process;
    }
    EXPECT_GT(count, 0u);
    EXPECT_LT(count, size_t{kProcesses} * kEvents); // there were several backups
}

using LogStorm = Logs;

TEST_F(LogStorm, NoEventIsTornOrTwice)
{
    const auto rounds = static_cast<uint32_t>(FromEnvironment("QZVEST_SOAK", 1));
    for (uint32_t round = 0; round < rounds && !HasFailure(); ++round) {
        fs::remove_all(kFolder);
        std::vector<pid_t> children;
        for (uint32_t process = 0; process < kProcesses; ++process) {
            children.push_back(fork());
            if (children.back() == 0)
                _exit(Write(process) == SM_STATUS_OK ? 0 : 1);
        }
        for (const pid_t child : children) {
            int status = -1;
            EXPECT_EQ(waitpid(child, &status, 0), child);
            EXPECT_EQ(status, 0);
        }
        Check({kLog, kBackup, kHeader, "", Wide("EventID: "), 2, [](uint32_t id) {
                   return id == 1 ? Record("1", "storm", "Record Broker", "Information", "Log backup created")
                                  : Record(std::to_string(id), "storm", "Volume Service", "Warning", "event", kData);
               }});
        Check({kXML, kXMLBackup, kHead, kTail, "<ID>", 1, [](uint32_t id) {
                   return id == 1 ? Entry({4, 1, 1, nullptr, "storm", "Log backup created"})
                                  : Entry({2, 3, id, nullptr, "storm", "event", nullptr, kData});
               }});
    }
    std::printf("COUNT storm on logs: %u processes, %u events in each of two logs\n", rounds * kProcesses,
                rounds * kProcesses * kEvents);
}

} // namespace
