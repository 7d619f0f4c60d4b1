// The XML log, byte for byte against a model of it.

#include "log/xmllog.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "config/places.h"
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

std::string Tagged(const std::string &name, const char *value)
{
    return "<" + name + ">" + (value != nullptr ? value : "") + "</" + name + ">";
}

std::string Model(const Entry &entry)
{
    const char *const names[] = {"Record Broker",       "Gaugework Service", "Volume Service",
                                 "Bridge Link Service", "Host Agent Frame",  "Package Ledger"};
    char host[256];
    gethostname(host, sizeof host);
    const std::string children = Tagged("TimeStamp", "1700000000") + Tagged("DateTime", "Tue Nov 14 22:13:20 2023") +
                                 Tagged("ComputerName", host) + Tagged("Type", std::to_string(entry.type).c_str()) +
                                 Tagged("ID", std::to_string(entry.id).c_str()) +
                                 Tagged("Link", entry.linkInFile.c_str()) + Tagged("UserInfo", entry.user) +
                                 Tagged("Source", entry.source) + Tagged("Category", names[entry.category - 1]) +
                                 Tagged("Description", entry.description) + Tagged("Data", entry.dataInFile.c_str());
    return Tagged("LogEntry", children.c_str());
}

const Entry kNotice = {4, 1, 1, "someone", "here", "Log backup created"};

std::string Get(const std::string &path = kPath)
{
    return ReadText(path);
}

void Put(const std::string &content, const std::string &path = kPath)
{
    WriteText(path, content);
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
        setenv("TZ", "UTC0", 1);
        std::filesystem::create_directories("/var/run/qz/.ipc");
        std::filesystem::remove_all(kFolder);
        std::filesystem::create_directory(kFolder);
    }
};

TEST_F(XMLLog, IsOneDocumentAfterEachEvent)
{
    const std::string longText(8191, 'd'), longInfo(511, 'i'), longLink(9000, '&'), bytes(32768, '\xA5');
    std::string longLinkInFile, bytesInFile;
    for (size_t i = 0; i < longLink.size(); ++i)
        longLinkInFile += "&amp;";
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
        {2, 3, 7, "u", "s", "a<b&c"},
    };
    const mode_t oldMask = umask(077);
    std::string inside;
    long count = 0;
    for (const Entry &entry : entries) {
        ASSERT_EQ(Append(entry), SM_STATUS_OK);
        inside += Model(entry);
        ASSERT_EQ(Get(), kHead + inside + kTail);
        ++count;
        EXPECT_EQ(Entries(Get()), &entry != std::end(entries) - 1 ? count : -1); // the last is markup as it stands
    }
    umask(oldMask);
    EXPECT_EQ(ModeOf(kPath), 0664u);
}

TEST_F(XMLLog, RefusesAndWritesNothing)
{
    const std::string longText(8192, 'd'), longInfo(512, 'i'), longData(32769, 'x'), none = kFolder + "/none/log/x.xml";
    const struct {
        uint32_t status;
        Entry entry;
        std::string path = kPath;
    } cases[] = {
        {2, {1, 1, 1, longInfo.c_str(), "s", "d"}},
        {2, {1, 1, 1, "u", "", "d"}},
        {2, {1, 1, 1, "u", "s", longText.c_str()}},
        {2, {1, 1, 1, "u", "s", "d", nullptr, longData}},
        {2, {1, 7, 1, "", "s", "d"}}, // the arguments come first
        {SM_STATUS_FAILED, {1, 0, 1, "u", "s", "d"}},
        {SM_STATUS_FAILED, {1, 7, 1, "u", "s", "d"}},
        {SM_STATUS_FAILED, {}, none},
        {SM_STATUS_FAILED, {}, kFolder},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(Append(row.entry, 0, row.path), row.status) << &row - cases;
        EXPECT_EQ(Get(), kMissing);
    }
    EXPECT_EQ(SMAppendToXMLLog(nullptr, 1, 1, 1, "u", "s", "d", nullptr, nullptr, 0, 0), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMAppendToXMLLog(kPath.c_str(), 1, 1, 1, "u", "s", "d", nullptr, nullptr, 1, 0), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMForceXMLLogExists(kPath.c_str(), 1) + SMForceXMLLogExists(nullptr, 0), SM_STATUS_OK);
    std::filesystem::remove_all("/var/run/qz/.ipc");
    EXPECT_EQ(Append(), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), kMissing);
}

TEST_F(XMLLog, FindsTheLastClosingTagBehindTheDeclaration)
{
    const std::string x38(38, 'x');
    const auto x = [](size_t count) { return std::string(count, 'x'); };
    std::vector<std::pair<std::string, std::string>> cases = {
        // what stands in front of the new entry; kMissing: damaged
        {"", kHead},
        {x(37), kHead},
        {kTail + x(26), kHead},
        {x38, kMissing},
        {x(60), kMissing},
        {x(37) + kTail + x(5000), kMissing}, // one byte too far in front
        {x38 + kTail + x(50), x38},
        {kHead + kTail + "behind" + kTail + " ", kHead + kTail + "behind"},
        {kHead + kTail + x(20000), kHead},
        {kHead + kTail.substr(0, 10), kMissing},
    };
    for (size_t filler = 4080; filler <= 4100; ++filler) // however the file may be read in pieces
        cases.emplace_back(kHead + x(3) + kTail + x(filler), kHead + x(3));
    for (const auto &[before, kept] : cases) {
        SCOPED_TRACE(before.substr(0, 100) + " of " + std::to_string(before.size()));
        Put(before);
        const bool damaged = kept == kMissing;
        ASSERT_EQ(Append(), damaged ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK);
        const std::string text = kept + Model({}) + kTail;
        ASSERT_EQ(Get(), damaged ? before : text + before.substr(std::min(text.size(), before.size())));
    }
}

TEST_F(XMLLog, MovesToItsBackupAtTheBoundary)
{
    ASSERT_EQ(Append(), SM_STATUS_OK);
    const std::string first = Get(), model = Model({}), anew = kHead + Model(kNotice) + model;
    const auto entrySize = static_cast<uint32_t>(model.size());
    chmod(kPath.c_str(), 05640); // the set-user-id bit does not stay
    Put("an older one", kBackup);
    ASSERT_EQ(Append({}, static_cast<uint32_t>(first.size()) + entrySize + 1), SM_STATUS_OK);
    const std::string second = Get();
    EXPECT_EQ(second, kHead + model + model + kTail);
    EXPECT_EQ(Get(kBackup), "an older one");

    ASSERT_EQ(Append({}, static_cast<uint32_t>(second.size()) + entrySize), SM_STATUS_OK);
    EXPECT_EQ(Get(), anew + kTail);
    EXPECT_EQ(Get(kBackup), second);
    EXPECT_EQ(ModeOf(kPath), 01640u);

    std::filesystem::remove(kBackup); // cannot be backed up, and grows
    std::filesystem::create_directories(kBackup + "/inside");
    ASSERT_EQ(Append({}, 0), SM_STATUS_OK);
    EXPECT_EQ(Get(), anew + model + kTail);

    std::filesystem::remove_all(kBackup); // a damaged log moves like any other
    Put("damaged, and no document at all, whatever its length");
    ASSERT_EQ(Append({}, 1), SM_STATUS_OK);
    EXPECT_EQ(Get(), anew + kTail);
}

TEST_F(XMLLog, IsClearedAndNamed)
{
    EXPECT_EQ(SMClearXMLLog(kPath.c_str(), 2, "u", "s"), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), kMissing);
    EXPECT_EQ(SMClearXMLLog(nullptr, 2, "u", "s"), SM_STATUS_NO_MEMORY);
    Put("whatever stands in it, it goes, be it a document or not");
    ASSERT_EQ(SMClearXMLLog(kPath.c_str(), 2, "u", nullptr), SM_STATUS_OK);
    const std::string link =
        "help/ghv/en/msgguide/wwhelp/wwhimpl/common/html/wwhelp.htm?context=Messages_Guide&amp;topic=0000";
    EXPECT_EQ(Get(), kHead + Model({4, 2, 0, "u", nullptr, "Log was cleared", nullptr, "", link}) + kTail);
    EXPECT_EQ(SMClearXMLLog(kPath.c_str(), 7, "u", "s"), SM_STATUS_FAILED);
    EXPECT_EQ(Get(), kMissing);

    const struct {
        const char *path;
        uint32_t room, status, size;
        const char *name;
    } names[] = {{"ab", 3, 0, 3, "a_"}, {"a/b.xml", 99, 0, 8, "a/b.xm_"}, {"ab", 2, 16, 3, ""}, {"a", 9, 271, 9, ""}};
    for (const auto &row : names) {
        SCOPED_TRACE(row.path);
        char dest[100] = "";
        uint32_t size = row.room;
        EXPECT_EQ(SMGetBackupXMLLogPathFileName(row.path, dest, &size), row.status);
        EXPECT_EQ(size, row.size);
        EXPECT_STREQ(dest, row.name);
    }
}

TEST_F(XMLLog, AFullDiskIsTold)
{
    ASSERT_EQ(Append(), SM_STATUS_OK);
    const std::string whole = Get();
    const struct {
        std::string before;
        size_t room;
        bool isWhole; // for the next event
    } cases[] = {
        {"", 0, true},
        {"", 38, false},
        {"", 48, false},
        {"", whole.size() - 1, false},
        {whole, whole.size() - 11, true}, // the old tag still stands
        {whole, whole.size(), false},
        {whole, 2 * whole.size() - 60, false},
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
        EXPECT_EQ(Append(), row.isWhole ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT);
        EXPECT_EQ(row.isWhole, Entries(Get()) == (row.before.empty() ? 1 : 2));
        EXPECT_EQ(row.isWhole, Get() != left);
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
            const auto state = states.find(left);
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
        }
        EXPECT_EQ(met.size(), states.size());
    }
}

} // namespace

// In place of the C library's, for this program.
extern "C" time_t time(time_t *) noexcept
{
    return 1700000000;
}
