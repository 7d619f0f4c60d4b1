// The XML log, byte for byte against a model of it that takes time and host as they come.

#include "log/xmllog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ipc/filelock.h"
#include "support/sweep.h"
#include "support/trace.h"

using namespace qzvest;

namespace {

const std::string kFolder = "/run/xmllog";
const std::string kPath = kFolder + "/log/events.xml";
const std::string kBackup = kFolder + "/log/events.xm_";
const std::string kMissing = "(missing)";
const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><EventLog>";
const std::string kTail = "</EventLog>";
constexpr uint32_t kNoLimit = 0xFFFFFFFF;

struct Entry {
    uint16_t type = 2;
    uint16_t category = 3;
    uint32_t id = 7;
    const char *user = "someone";
    const char *source = "here";
    const char *description = "it happened";
    const char *link = nullptr;
    std::string data = {};
    std::string linkInFile = {};
    std::string dataInFile = {};
};

std::string Tagged(const std::string &name, const std::string &value)
{
    return "<" + name + ">" + value + "</" + name + ">";
}

std::string OrEmpty(const char *text)
{
    return text != nullptr ? text : "";
}

// Without the two elements that tell the time, which Timeless takes out of what is found.
std::string Model(const Entry &entry)
{
    const char *const names[] = {"Record Broker",       "Gaugework Service", "Volume Service",
                                 "Bridge Link Service", "Host Agent Frame",  "Package Ledger"};
    char host[256];
    gethostname(host, sizeof host);
    return Tagged("LogEntry", Tagged("ComputerName", host) + Tagged("Type", std::to_string(entry.type)) +
                                  Tagged("ID", std::to_string(entry.id)) + Tagged("Link", entry.linkInFile) +
                                  Tagged("UserInfo", OrEmpty(entry.user)) + Tagged("Source", OrEmpty(entry.source)) +
                                  Tagged("Category", names[entry.category - 1]) +
                                  Tagged("Description", OrEmpty(entry.description)) + Tagged("Data", entry.dataInFile));
}

const Entry kNotice = {4, 1, 1, "someone", "here", "Log backup created"};

// Checks the times, and takes them out.
std::string Timeless(std::string text)
{
    const std::string begin = "<TimeStamp>";
    for (size_t at; (at = text.find(begin)) != std::string::npos;) {
        const time_t seconds = std::strtoll(text.c_str() + at + begin.size(), nullptr, 10);
        const time_t now = time(nullptr);
        EXPECT_TRUE(seconds <= now && seconds > now - 3600) << seconds;
        char local[32];
        ctime_r(&seconds, local);
        const std::string times =
            Tagged("TimeStamp", std::to_string(seconds)) + Tagged("DateTime", std::string(local, 24));
        EXPECT_EQ(text.substr(at, times.size()), times);
        text.erase(at, times.size());
    }
    return text;
}

size_t TimesSize()
{
    return (Tagged("TimeStamp", std::to_string(time(nullptr))) + Tagged("DateTime", std::string(24, ' '))).size();
}

std::string Get(const std::string &path = kPath)
{
    std::ifstream file(path, std::ios::binary);
    return file ? std::string{std::istreambuf_iterator<char>(file), {}} : kMissing;
}

void Put(const std::string &content, const std::string &path = kPath)
{
    std::filesystem::create_directories(kFolder + "/log");
    std::ofstream(path, std::ios::binary) << content;
}

uint32_t Append(const Entry &entry = {}, uint32_t limit = kNoLimit, const std::string &path = kPath)
{
    return SMAppendToXMLLog(path.c_str(), entry.type, entry.category, entry.id, entry.user, entry.source,
                            entry.description, entry.link, entry.data.empty() ? nullptr : entry.data.data(),
                            static_cast<uint32_t>(entry.data.size()), limit);
}

// How many elements the root has; -1 if the document is not well formed.
long Entries(const std::string &text)
{
    xmlDoc *document = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                     XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    const long count =
        document != nullptr ? static_cast<long>(xmlChildElementCount(xmlDocGetRootElement(document))) : -1;
    xmlFreeDoc(document);
    return count;
}

class XMLLog : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories("/var/run/qz/.ipc");
        std::filesystem::remove_all(kFolder);
        std::filesystem::create_directory(kFolder);
    }
};

TEST_F(XMLLog, IsOneDocumentAfterEachEvent)
{
    const std::string longText(8191, 'd');
    const std::string longInfo(511, 'i');
    const std::string longLink(9000, '&');
    std::string longLinkInFile;
    for (size_t i = 0; i < longLink.size(); ++i)
        longLinkInFile += "&amp;";
    const std::string bytes(32768, '\xA5');
    std::string bytesInFile;
    for (size_t i = 0; i < bytes.size(); ++i)
        bytesInFile += i == 0 ? "0xA5" : ",0xA5";
    const Entry entries[] = {
        {},
        {0, 1, 0, nullptr, nullptr, nullptr, nullptr},
        {65535, 6, 4294967295, "u", "s", "d", "", std::string("\0\x0f\xff", 3), "", "0x00,0x0F,0xFF"},
        {3, 2, 1, "u", "s", "d", "a&b<c>&amp;'\"&#65;", "x", "a&amp;b&lt;c&gt;&amp;&apos;&quot;&amp;#65;", "0x78"},
        {4, 5, 2, longInfo.c_str(), longInfo.c_str(), longText.c_str(), longLink.c_str(), bytes, longLinkInFile,
         bytesInFile},
        {4, 4, 3, "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"},
    };
    const mode_t oldMask = umask(077);
    std::string inside;
    for (const Entry &entry : entries) {
        ASSERT_EQ(Append(entry), SM_STATUS_OK);
        inside += Model(entry);
        ASSERT_EQ(Timeless(Get()), kHead + inside + kTail);
    }
    umask(oldMask);
    EXPECT_EQ(Entries(Get()), static_cast<long>(std::size(entries)));
    struct stat status;
    ASSERT_EQ(stat(kPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0664u);
    const Entry markup = {2, 3, 7, "u", "s", "a<b&c"};
    ASSERT_EQ(Append(markup), SM_STATUS_OK);
    EXPECT_EQ(Timeless(Get()), kHead + inside + Model(markup) + kTail);
    EXPECT_EQ(Entries(Get()), -1);
}

TEST_F(XMLLog, RefusesAndWritesNothing)
{
    const std::string longText(8192, 'd');
    const std::string longInfo(512, 'i');
    const char *const path = kPath.c_str();
    const struct {
        uint32_t status;
        const char *path;
        uint16_t category;
        const char *user, *source, *description;
        const void *data;
        uint32_t size;
    } cases[] = {
        {2, nullptr, 1, "u", "s", "d", nullptr, 0},
        {2, path, 1, "", "s", "d", nullptr, 0},
        {2, path, 1, longInfo.c_str(), "s", "d", nullptr, 0},
        {2, path, 1, "u", "", "d", nullptr, 0},
        {2, path, 1, "u", longInfo.c_str(), "d", nullptr, 0},
        {2, path, 1, "u", "s", "", nullptr, 0},
        {2, path, 1, "u", "s", longText.c_str(), nullptr, 0},
        {2, path, 1, "u", "s", "d", nullptr, 1},
        {2, path, 1, "u", "s", "d", longText.c_str(), 32769},
        {2, path, 7, "", "s", "d", nullptr, 0}, // the arguments come first
        {SM_STATUS_FAILED, path, 0, "u", "s", "d", nullptr, 0},
        {SM_STATUS_FAILED, path, 7, "u", "s", "d", nullptr, 0},
        {SM_STATUS_FAILED, path, 1, "u", "s", "d", "x", 0},
        {SM_STATUS_FAILED, "/run/xmllog/none/log/x.xml", 1, "u", "s", "d", nullptr, 0},
        {SM_STATUS_FAILED, "/run/xmllog", 1, "u", "s", "d", nullptr, 0},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(&row - cases);
        EXPECT_EQ(SMAppendToXMLLog(row.path, 1, row.category, 1, row.user, row.source, row.description, nullptr,
                                   row.data, row.size, 0),
                  row.status);
        EXPECT_EQ(Get(), kMissing);
    }
    EXPECT_EQ(SMForceXMLLogExists(path, 1), SM_STATUS_OK);
    EXPECT_EQ(Get(), kMissing);
    EXPECT_EQ(SMForceXMLLogExists(nullptr, 0), SM_STATUS_OK);
    std::filesystem::remove_all("/var/run/qz/.ipc");
    EXPECT_EQ(Append(), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), kMissing);
}

TEST_F(XMLLog, FindsTheLastClosingTagBehindTheDeclaration)
{
    const std::string model = Model({});
    const std::string x38(38, 'x');
    const auto x = [](size_t count) { return std::string(count, 'x'); };
    struct Case {
        std::string before;
        std::string kept; // what stands in front of the new entry; kMissing: damaged
    };
    std::vector<Case> cases = {
        {"", kHead},
        {x(20), kHead},
        {x(37), kHead},
        {kTail + x(26), kHead},
        {x38, kMissing},
        {x(48), kMissing},
        {x(60), kMissing},
        {x(37) + kTail, kMissing}, // one byte too far in front
        {x(37) + kTail + x(5000), kMissing},
        {x38 + kTail, x38},
        {x38 + kTail + x(50), x38},
        {kHead + kTail + "   ", kHead},
        {kHead + kTail + "behind" + kTail + " ", kHead + kTail + "behind"},
        {kHead + kTail + x(20000), kHead},
        {kHead + kTail.substr(0, 10), kMissing},
    };
    for (size_t filler = 4080; filler <= 4100; ++filler) // however the file may be read in pieces
        cases.push_back({kHead + x(3) + kTail + x(filler), kHead + x(3)});
    for (const Case &row : cases) {
        SCOPED_TRACE(row.before.substr(0, 100) + " of " + std::to_string(row.before.size()));
        Put(row.before);
        const bool damaged = row.kept == kMissing;
        ASSERT_EQ(Append(), damaged ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK);
        const std::string text = row.kept + model + kTail;
        const size_t end = text.size() + TimesSize();
        const std::string rest = end < row.before.size() ? row.before.substr(end) : "";
        ASSERT_EQ(Timeless(Get()), damaged ? row.before : text + rest);
    }
}

TEST_F(XMLLog, MovesToItsBackupAtTheBoundary)
{
    ASSERT_EQ(Append(), SM_STATUS_OK);
    const std::string first = Get();
    const auto entrySize = static_cast<uint32_t>(first.size() - kHead.size() - kTail.size());
    ASSERT_EQ(chmod(kPath.c_str(), 05640), 0); // the set-user-id bit does not stay
    Put("an older one", kBackup);
    ASSERT_EQ(Append({}, static_cast<uint32_t>(first.size()) + entrySize + 1), SM_STATUS_OK);
    const std::string second = Get();
    EXPECT_EQ(Timeless(second), kHead + Model({}) + Model({}) + kTail);
    EXPECT_EQ(Get(kBackup), "an older one");

    const auto limit = static_cast<uint32_t>(second.size()) + entrySize;
    ASSERT_EQ(Append({}, limit), SM_STATUS_OK);
    EXPECT_EQ(Timeless(Get()), kHead + Model(kNotice) + Model({}) + kTail);
    EXPECT_EQ(Get(kBackup), second);
    struct stat status;
    ASSERT_EQ(stat(kPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 01640u);

    std::filesystem::remove(kBackup); // cannot be backed up, and grows
    std::filesystem::create_directories(kBackup + "/inside");
    ASSERT_EQ(Append({}, 0), SM_STATUS_OK);
    EXPECT_EQ(Timeless(Get()), kHead + Model(kNotice) + Model({}) + Model({}) + kTail);

    std::filesystem::remove_all(kBackup); // a damaged log moves like any other
    Put("damaged, and no document at all, whatever its length");
    ASSERT_EQ(Append({}, 1), SM_STATUS_OK);
    EXPECT_EQ(Timeless(Get()), kHead + Model(kNotice) + Model({}) + kTail);
    EXPECT_EQ(Entries(Get()), 2);
}

TEST_F(XMLLog, IsClearedAndNamed)
{
    EXPECT_EQ(SMClearXMLLog(kPath.c_str(), 2, "u", "s"), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), kMissing);
    EXPECT_EQ(SMClearXMLLog(nullptr, 2, "u", "s"), SM_STATUS_NO_MEMORY);
    Put("whatever stands in it, it goes, be it a document or not");
    ASSERT_EQ(SMClearXMLLog(kPath.c_str(), 2, "u", nullptr), SM_STATUS_OK);
    const Entry cleared = {
        4,
        2,
        0,
        "u",
        nullptr,
        "Log was cleared",
        nullptr,
        "",
        "help/ghv/en/msgguide/wwhelp/wwhimpl/common/html/wwhelp.htm?context=Messages_Guide&amp;topic=0000"};
    EXPECT_EQ(Timeless(Get()), kHead + Model(cleared) + kTail);
    EXPECT_EQ(SMClearXMLLog(kPath.c_str(), 7, "u", "s"), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), kMissing);

    const struct {
        const char *path;
        uint32_t room, status, size;
        const char *name;
    } names[] = {
        {"ab", 3, 0, 3, "a_"}, {"a/b.xml", 99, 0, 8, "a/b.xm_"},
        {"ab", 2, 16, 3, ""},  {"ab", 0, 16, 3, ""},
        {"a", 9, 271, 9, ""},  {"", 9, 271, 9, ""},
    };
    for (const auto &row : names) {
        SCOPED_TRACE(row.path);
        char dest[100] = "";
        uint32_t size = row.room;
        EXPECT_EQ(SMGetBackupXMLLogPathFileName(row.path, dest, &size), row.status);
        EXPECT_EQ(size, row.size);
        EXPECT_STREQ(dest, row.name);
    }
}

// The next event makes its lock anew.
void ForgetLocks()
{
    FileLockRegistryDetach();
    EXPECT_EQ(FileLockRegistryAttach(), 1);
}

TEST_F(XMLLog, AllocationsThatFailLeaveWhatWasThere)
{
    ASSERT_EQ(Append(), SM_STATUS_OK);
    const std::string old = Get();
    const Entry whole = {4, 5, 2, "someone", "here", "d", nullptr, "xy", "", "0x78,0x79"};
    for (const uint32_t limit : {kNoLimit, 0u}) {
        std::map<uint32_t, int> statuses;
        ForgetLocks();
        const int failures = SweepAllocations([&](int nth) {
            Put(old);
            std::filesystem::remove(kBackup);
            FailAllocation(nth);
            const uint32_t status = Append(whole, limit);
            const bool failed = StopFault();
            ++statuses[status];
            ForgetLocks();
            const bool movedAway = Get(kBackup) == old;
            EXPECT_EQ(Get(kBackup), movedAway ? old : kMissing);
            std::set<std::string> expected;
            const std::string notice = kHead + Model(kNotice);
            for (const std::string &before : movedAway ? std::set{notice, kHead} : std::set{kHead + Model({})})
                expected.insert(before + (status == SM_STATUS_OK ? Model(whole) : "") + kTail);
            if (movedAway && status != SM_STATUS_OK)
                expected.insert(kMissing);
            EXPECT_EQ(expected.count(Timeless(Get())), 1u) << Get();
            return failed;
        });
        EXPECT_GE(failures, 15);
        EXPECT_EQ(statuses[SM_STATUS_FAILED], 3); // the entry's buffer twice, and the text of the data
        EXPECT_GE(statuses[SM_STATUS_NO_MEMORY], 7);
        EXPECT_EQ(statuses.size(), 3u); // and those that succeed
    }
}

TEST_F(XMLLog, AFullDiskIsTold)
{
    ASSERT_EQ(Append(), SM_STATUS_OK);
    const std::string whole = Get();
    const struct {
        std::string before;
        size_t room;
        uint32_t next; // what the next event gets
    } cases[] = {
        {"", 0, SM_STATUS_OK},
        {"", 20, SM_STATUS_OK},
        {"", 38, SM_STATUS_BAD_FORMAT},
        {"", 48, SM_STATUS_BAD_FORMAT},
        {"", whole.size() - 11, SM_STATUS_BAD_FORMAT},
        {"", whole.size() - 1, SM_STATUS_BAD_FORMAT},
        {whole, whole.size() - 11, SM_STATUS_OK}, // the old tag still stands
        {whole, whole.size(), SM_STATUS_BAD_FORMAT},
        {whole, 2 * whole.size() - 60, SM_STATUS_BAD_FORMAT},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(std::to_string(row.before.size()) + ", room " + std::to_string(row.room));
        Put(row.before);
        const int code = InOtherProcess([&] {
            const rlimit room = {row.room, row.room};
            (void)signal(SIGXFSZ, SIG_IGN);
            return setrlimit(RLIMIT_FSIZE, &room) == 0 ? static_cast<int>(Append()) : -1;
        });
        EXPECT_EQ(code, SM_STATUS_LIMIT_REACHED);
        const std::string left = Get();
        EXPECT_EQ(left.size(), std::max(row.before.size(), row.room));
        EXPECT_EQ(Append(), row.next);
        if (row.next == SM_STATUS_OK)
            EXPECT_EQ(Entries(Get()), row.before.empty() ? 1 : 2);
        else
            EXPECT_EQ(Get(), left);
    }
}

TEST_F(XMLLog, AKilledWriterLeavesADocumentOrADamagedOne)
{
    if (const std::string reason = TraceHindrance(); !reason.empty())
        GTEST_SKIP() << reason;
    ASSERT_EQ(Append(), SM_STATUS_OK);
    const std::string old = Get();
    const std::string model = Model({});
    const std::string one = kHead + model;
    const std::string declaration = kHead.substr(0, 38);
    using States = std::map<std::string, uint32_t>; // what may be left, and what the next event gets
    const std::pair<std::string, States> sweeps[] = {
        {old, {{one + kTail, 0}, {one + model, 257}, {one + model + kTail, 0}}},
        {kMissing, {{kMissing, 0}, {"", 0}, {declaration, 257}, {kHead, 257}, {one, 257}, {one + kTail, 0}}},
    };
    int points = 0;
    for (const auto &[before, states] : sweeps) {
        std::map<std::string, int> met;
        for (int nth = 1;; ++nth) {
            SCOPED_TRACE(nth);
            if (before == kMissing)
                std::filesystem::remove(kPath);
            else
                Put(before);
            const TraceOutcome outcome = Trace(
                [] {
                    TraceBegin();
                    const uint32_t status = Append();
                    TraceEnd();
                    return status == SM_STATUS_OK ? 0 : 1;
                },
                {nth, 0, nullptr});
            const std::string left = Get();
            const auto state = states.find(Timeless(left));
            ASSERT_NE(state, states.end()) << left;
            ++met[state->first];
            EXPECT_EQ(InOtherProcess([] { return static_cast<int>(Append() % 255); }), state->second % 255);
            if (state->second != 0)
                EXPECT_EQ(Get(), left);
            else
                EXPECT_GE(Entries(Get()), 1);
            if (!outcome.reached) {
                EXPECT_EQ(outcome.exitCode, 0);
                break;
            }
            ++points;
        }
        EXPECT_EQ(met.size(), states.size());
    }
    std::printf("COUNT XML log appends killed: %d crash points\n", points);
}

} // namespace
