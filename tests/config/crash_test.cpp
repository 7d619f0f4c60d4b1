// Writers that are killed at each of their system calls in turn, and writers of which each system call fails in turn:
// what they leave on disk, and what the next process makes of it.

#include "support/trace.h"

#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>

#include "config/ini_fixture.h"

namespace {

const std::string kMissing = "(missing)"; // as the fixture's Get says it
const std::string kSections = "[one]\n;x\na=1\nb=2\n\n[two]\nc=3\n";
const std::string kProperties = "a=1\nb=2\n";
constexpr auto kMode = std::filesystem::perms{0664};

struct Change {
    std::string name;
    std::string old;
    std::string changed;
    const char *section; // NULL: a property file
    const char *key;
    const char *value;
    std::set<std::string> parts; // what an append may leave that did not come to its end
    std::set<std::string> likes; // what may stand for the change when the file could not be examined
};

const Change kChanges[] = {
    {"set key", kSections, "[one]\n;x\na=new\nb=2\n\n[two]\nc=3\n", "one", "a", "new", {}, {}},
    {"delete key", kSections, "[one]\n;x\na=1\n\n[two]\nc=3\n", "one", "b", nullptr, {}, {}},
    {"delete section", kSections, "[two]\nc=3\n", "one", nullptr, nullptr, {}, {}},
    {"append section",
     kSections,
     kSections + "\n[three]\nd=4\n",
     "three",
     "d",
     "4",
     {kSections + "\n", kSections + "\n[three]\n", kSections + "[three]\n"},
     {kSections + "[three]\nd=4\n"}}, // of a file that counts as empty
    {"new file", kMissing, "[three]\nd=4\n", "three", "d", "4", {"", "[three]\n"}, {}},
    {"set property", kProperties, "a=new\nb=2\n", nullptr, "a", "new", {}, {}},
};

struct Report {
    uint32_t status;         // of the change
    int64_t descriptorsLeft; // more than there were before
    uint32_t first;          // of a read by another process that does not wait
    uint32_t second;         // of its write after that
    char content[1024];      // between the two
    char again[16];          // what was written, read back
};

int64_t OpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// Only calls made in here are hit.
uint32_t Traced(const auto &change)
{
    TraceBegin();
    const uint32_t status = change();
    TraceEnd();
    return status;
}

class Crash : public IniFile {
protected:
    void SetUp() override
    {
        if (const std::string reason = TraceHindrance(); !reason.empty())
            GTEST_SKIP() << reason;
        IniFile::SetUp();
    }

    // Also the lock file has to be made anew each time.
    static void Empty(const std::string &place)
    {
        for (const std::string &each : {place, locks})
            for (const auto &entry : std::filesystem::directory_iterator(each))
                std::filesystem::remove(entry);
    }
    void Prepare(const Change &change) const
    {
        Empty(folder);
        if (change.old != kMissing) {
            Put(change.old);
            std::filesystem::permissions(path, kMode);
        }
    }

    // The work again and again, each time with the next of its calls failing or, without an error, killed at it. How
    // many there were.
    static int Sweep(const std::string &name, int error, const auto &prepare, const auto &work, const auto &check)
    {
        const auto filter = error == 0 ? nullptr : error == EINTR ? TakesInterruptibleCall : TakesFileCall;
        for (int nth = 1;; ++nth) {
            prepare();
            const TraceOutcome outcome = Trace(work, {nth, error, filter});
            SCOPED_TRACE(name + ", " + strerror(error) + " at call " + std::to_string(nth) + ", number " +
                         std::to_string(outcome.call));
            check(outcome);
            if (!outcome.reached || HasFailure())
                return nth - 1;
        }
    }

    uint32_t Write(bool isIni, const char *section, const char *key, const char *value, int16_t wait) const
    {
        const auto size = static_cast<uint32_t>(value != nullptr ? std::strlen(value) + 1 : 0);
        return isIni ? SMWriteINIPathFileValue(section, key, INI_TYPE_UTF8, value, size, path.c_str(), wait)
                     : SMPropertyFileWriteValue(key, SMXLT_TYPE_UTF8, value, size, path.c_str(), wait);
    }
    uint32_t Make(const Change &change) const
    {
        return Traced([&] { return Write(change.section != nullptr, change.section, change.key, change.value, 1); });
    }

    // What another process does next. None of it waits for the lock.
    int Use(const Change &change, Report &report) const
    {
        const bool isIni = change.section != nullptr;
        const char *const key = isIni ? "c" : "b";
        const auto read = [&] {
            uint32_t size = sizeof report.again;
            return isIni ? SMReadINIPathFileValue("two", key, 1, report.again, &size, nullptr, 0, path.c_str(), 0)
                         : SMPropertyFileReadValue(key, SMXLT_TYPE_UTF8, report.again, &size, "", 1, path.c_str(), 0);
        };
        report.first = read();
        const std::string content = Get();
        std::strncpy(report.content, content.c_str(), sizeof report.content - 1);
        if (!isIni && content == kMissing) // nobody but the user puts it back
            std::filesystem::rename(path + ".bak", path);
        report.second = Write(isIni, "two", key, "again", 0);
        *report.again = '\0';
        (void)read();
        return 0;
    }

    void CheckUse(const Change &change, const Report &report, const std::string &expected) const
    {
        const bool isIni = change.section != nullptr;
        const bool there = isIni ? expected.find("[two]") != std::string::npos : expected != kMissing;
        const uint32_t absent = isIni && expected != kMissing ? SM_STATUS_INI_NO_SECTION : SM_STATUS_INI_OPEN_FAILED;
        EXPECT_EQ(report.first, there ? SM_STATUS_OK : absent);
        EXPECT_EQ(report.content, expected);
        EXPECT_EQ(report.second, SM_STATUS_OK);
        EXPECT_STREQ(report.again, "again");
        EXPECT_EQ(Get(path + ".bak"), kMissing);
    }

    void CheckAfterKill(const Change &change, std::set<std::string> &states) const
    {
        const std::string found = Get();
        const std::string backup = Get(path + ".bak");
        const bool isSwapping = backup != kMissing;
        const bool isChanged = found == change.changed;
        EXPECT_TRUE(change.old == kMissing || found == kMissing ||
                    std::filesystem::status(path).permissions() == kMode);
        if (isSwapping) {
            EXPECT_EQ(backup, change.old);
            EXPECT_TRUE(isChanged || found == kMissing) << found;
            states.insert(isChanged ? "both" : "between");
        } else {
            EXPECT_TRUE(isChanged || found == change.old || change.parts.contains(found)) << found;
            states.insert(isChanged ? "new" : found == change.old ? "old" : "part");
        }
        const Shared<Report> report;
        ASSERT_EQ(InOtherProcess([&] { return Use(change, *report); }), 0);
        CheckUse(change, *report, isSwapping && change.section != nullptr ? backup : found);
    }

    int SweepKills(const Change &change) const
    {
        std::set<std::string> states;
        const auto check = [&](const TraceOutcome &outcome) {
            if (outcome.reached)
                return CheckAfterKill(change, states);
            EXPECT_EQ(outcome.exitCode, 0);
            EXPECT_EQ(Get(), change.changed);
        };
        const auto work = [&] { return Make(change) == SM_STATUS_OK ? 0 : 1; };
        const auto prepare = [&] { Prepare(change); };
        const int kills = Sweep(change.name, 0, prepare, work, check);
        EXPECT_EQ(states, (change.parts.empty() ? std::set<std::string>{"old", "between", "both", "new"}
                                                : std::set<std::string>{"old", "part", "new"}));
        return kills;
    }

    // A status other than 0 means that the change has not been made, as far as the next reader can see.
    void CheckAfterFault(const Change &change, const Report &report) const
    {
        constexpr uint32_t kDocumented[] = {SM_STATUS_OK,
                                            SM_STATUS_FILE_NOT_FOUND,
                                            SM_STATUS_LIMIT_REACHED,
                                            SM_STATUS_ALREADY_EXISTS,
                                            SM_STATUS_ACCESS_DENIED,
                                            SM_STATUS_INI_OPEN_FAILED,
                                            SM_STATUS_INI_BAD_SECTION,
                                            SM_STATUS_FAILED};
        EXPECT_EQ(std::ranges::count(kDocumented, report.status), 1) << report.status;
        EXPECT_EQ(report.descriptorsLeft, 0);
        const std::string content = report.content;
        const bool isProperty = change.section == nullptr;
        if (report.status == SM_STATUS_OK || (isProperty && report.status == SM_STATUS_ACCESS_DENIED))
            EXPECT_TRUE(
                content == change.changed || change.likes.contains(content) ||
                (report.status != SM_STATUS_OK && content == change.old)) // the lock, not the backup, was denied
                << content;
        else if (report.status == SM_STATUS_LIMIT_REACHED)
            EXPECT_TRUE(content == change.old || change.parts.contains(content) ||
                        (!change.parts.empty() && content == change.changed)) // that could not be closed
                << content;
        else if (isProperty && report.status == SM_STATUS_ALREADY_EXISTS)
            EXPECT_EQ(content, kMissing);
        else
            EXPECT_EQ(content, change.old);
        CheckUse(change, report, content);
    }

    int SweepFaults(const Change &change) const
    {
        const Shared<Report> report;
        std::set<uint32_t> statuses;
        const auto work = [&] {
            *report = {};
            const int64_t before = OpenDescriptors();
            report->status = Make(change);
            // The other process comes while this one lives on, so that a lock that was not given back is in its way.
            if (InOtherProcess([&] { return Use(change, *report); }) != 0)
                return 1;
            report->descriptorsLeft = OpenDescriptors() - before;
            if (report->descriptorsLeft == 1) { // a lock that was not got keeps its own until it is tried again
                (void)Text("two", "c");
                report->descriptorsLeft = OpenDescriptors() - before;
            }
            return 0;
        };
        const auto check = [&](const TraceOutcome &outcome) {
            ASSERT_EQ(outcome.exitCode, 0);
            CheckAfterFault(change, *report);
            if (outcome.reached)
                statuses.insert(report->status);
        };
        int faults = 0;
        const auto prepare = [&] { Prepare(change); };
        for (const int error : {ENOSPC, EIO, EMFILE, EACCES, EINTR})
            faults += HasFailure() ? 0 : Sweep(change.name, error, prepare, work, check);
        EXPECT_GE(statuses.size(), 4u); // the calls that matter were among them
        return faults;
    }

    // Runs each row's sweep, and tells how many calls were hit.
    static void Count(const char *what, const auto &rows, const auto &sweep)
    {
        int total = 0;
        std::string parts;
        for (const auto &row : rows) {
            const int number = HasFailure() ? 0 : sweep(row);
            total += number;
            parts += (total == number ? "" : ", ") + std::string(row.name) + " " + std::to_string(number);
        }
        std::printf("COUNT %s: %d (%s)\n", what, total, parts.c_str());
    }
};

TEST_F(Crash, LeavesTheOldOrTheNew)
{
    Count("kills in INI and property writes", kChanges, [this](const Change &change) { return SweepKills(change); });
}

// A value, or a list of keys, that goes beyond what is read at once.
TEST_F(Crash, FaultsOfReadsDeliverNoHalves)
{
    std::string value, keys, lines = "long=";
    for (int line = 0; line < 20; ++line) {
        value += std::string(8000, 'v') + '\n';
        keys += std::string("long") + '\0';
        lines += std::string(8000, 'v') + "\\\n";
    }
    value += "end";
    lines += "end\n";
    for (const bool lists : {false, true}) {
        const std::string expected = (lists ? keys : value) + '\0';
        std::string whole;
        for (int times = lists ? 20 : 1; times > 0; --times)
            whole += lines;
        Put(whole);
        const auto work = [&] {
            std::string dest(expected.size(), '*');
            auto size = static_cast<uint32_t>(dest.size());
            const char *const key = lists ? nullptr : "long";
            const auto read = [&] {
                return SMPropertyFileReadValue(key, SMXLT_TYPE_UTF8, dest.data(), &size, nullptr, 0, path.c_str(), 1);
            };
            return Traced(read) != SM_STATUS_OK ? 2 : dest == expected && size == dest.size() ? 0 : 1;
        };
        const auto check = [](const TraceOutcome &outcome) { EXPECT_NE(outcome.exitCode, 1); };
        EXPECT_GT(Sweep(
                      "read", EIO, [] {}, work, check),
                  7);
    }
}

TEST_F(Crash, FaultsAreTold)
{
    const auto sweep = [this](const Change &change) { return SweepFaults(change); };
    Count("failing calls in INI and property writes", kChanges, sweep);
}

// ---- The key registry and the logs ----

const std::string kRegistry = "/var/run/qz/.ipc/.lxvestIPCini";
const std::string kLogs = "/run/store/log/";
const std::string kText = "qzsys64.log", kXML = "x.xml", kOlder = "rotated.1", kTag = "</EventLog>";
int sweptError; // 0: kills

// Old names have a unit each, new ones none: nobody gets another one's set. A new name whose calls failed may have no
// number, or, when the registry did not open, that of the first.
uint32_t UseNames()
{
    uint32_t status = SM_STATUS_OK;
    for (const char *name : {"older", "old"}) {
        SMSemaphore *semaphore = SMSemaphoreOpen(name);
        status |= SMSemaphoreAcquireWait(semaphore, 0) | SMSemaphoreRelease(semaphore, 1, nullptr);
    }
    for (const char *name : {"new", "next"}) {
        SMSemaphore *semaphore = sweptError == 0 ? SMSemaphoreCreate(name, 0) : nullptr;
        status |= sweptError == 0 ? SMSemaphoreAcquireWait(semaphore, 0) ^ SM_STATUS_TIMEOUT : SM_STATUS_OK;
        SMSemaphoreDestroy(semaphore);
    }
    return status;
}

uint32_t AppendText()
{
    return SMAppendToLog(SM_LOG_TEXT, SM_LOG_TYPE_ERROR, SM_LOG_VOLUME_SERVICE, 5, "who", "text", nullptr, 0);
}
template <uint32_t kLimit = 0x100000>
uint32_t AppendXML()
{
    return SMAppendToXMLLog((kLogs + kXML).c_str(), SM_LOG_TYPE_ERROR, SM_LOG_VOLUME_SERVICE, 5, "me", "who", "text",
                            nullptr, nullptr, 0, kLimit);
}
uint32_t Rotate()
{
    return SMFileLogMsgToRotatedLog("m", "/run/store/log/rotated", 4, 2, 0);
}

const struct Writer {
    const char *name;
    uint32_t (*write)();
    uint32_t (*next)(); // of another process, afterwards
    std::string drops, dropsByFault;
} kWriters[] = {
    {"new name", [] { return SMSemaphoreCreate("new", 0) != nullptr ? 0u : 1u; }, UseNames, "", ""},
    {"text log", AppendText, AppendText, "", ""},
    {"text log cleared", [] { return SMClearLog(SM_LOG_TEXT, 3, "who"); }, AppendText, kText, ""},
    {"XML log", AppendXML, AppendXML, "", kXML}, // that does not open, and begins anew
    {"XML log backed up", AppendXML<1>, AppendXML, "", kXML},
    {"rotated log", Rotate, Rotate, "", kOlder}, // that was not renamed, and is replaced
};

class Writers : public Crash {
protected:
    using Files = std::map<std::string, std::string>; // by name

    void Restore() const
    {
        Empty(kLogs);
        for (const auto &[name, content] : old_)
            Put(kLogs + name, content);
        Put(kRegistry, registry_);
    }
    static Files Logs()
    {
        Files files;
        for (const auto &entry : std::filesystem::directory_iterator(kLogs))
            files[entry.path().filename()] = Get(entry.path());
        return files;
    }

    // Each old file is some file's beginning, and the registry's sections are there, maybe with more.
    void CheckKept(const Writer &writer, bool openFails) const
    {
        const Files files = Logs();
        for (const auto &[name, content] : old_) {
            const std::string head = content.substr(0, content.rfind(kTag));
            const auto keeps = [&head](const auto &file) { return file.second.starts_with(head); };
            EXPECT_TRUE(std::any_of(files.begin(), files.end(), keeps) || name == writer.drops ||
                        (name == writer.dropsByFault && (openFails || (sweptError != 0 && name == kOlder))))
                << name;
        }
        const std::string registry = Get(kRegistry + (std::filesystem::exists(kRegistry) ? "" : ".bak"));
        const size_t numbers = registry_.find("\n\n");
        EXPECT_TRUE(registry.starts_with(registry_.substr(0, numbers))) << registry;
        EXPECT_TRUE(sweptError != 0 || registry.find(registry_.substr(numbers)) != std::string::npos) << registry;
    }

    int Sweep(const Writer &writer) const
    {
        const auto check = [&](const TraceOutcome &outcome) {
            const bool openFails = sweptError != 0 && outcome.call == SYS_openat;
            CheckKept(writer, openFails);
            Files left = Logs();
            const std::string xml = left[kXML], text = left[kText];
            EXPECT_TRUE(sweptError != 0 || text.empty() || text.ends_with(std::string("\n\0", 2)));
            EXPECT_TRUE(InOtherProcess([&writer] { return writer.next() == SM_STATUS_OK ? 0 : 1; }) == 0 ||
                        (!xml.empty() && !xml.ends_with(kTag)));
            CheckKept(writer, openFails);
            EXPECT_TRUE(Logs()[kText].starts_with(text));
            EXPECT_TRUE(xml.empty() || xml.ends_with(kTag) || Logs()[kXML] == xml); // damaged: it stays
            EXPECT_TRUE(outcome.reached || outcome.exitCode == 0);
        };
        const auto work = [&writer] { return Traced(writer.write) == SM_STATUS_OK ? 0 : 1; };
        return Crash::Sweep(
            writer.name, sweptError, [this] { Restore(); }, work, check);
    }

    Files old_;
    std::string registry_;
};

TEST_F(Writers, LoseNothingOfWhatWasThere)
{
    setenv("gaugeworkinstallpath", folder.c_str(), 1);
    uint32_t none = 0;
    ASSERT_EQ(SMGetPathByProductIDandType(35, SM_PATH_LOG, nullptr, &none), SM_STATUS_BUFFER_TOO_SMALL); // read anew
    const auto begin = [] {
        uint32_t status = AppendText() | AppendXML();
        for (const char *name : {"older", "old"})
            status |= SMSemaphoreRelease(SMSemaphoreCreate(name, 0), 1, nullptr);
        return static_cast<int>(status);
    };
    ASSERT_EQ(InOtherProcess(begin), 0);
    old_ = Logs();
    old_["rotated"] = "grown";
    old_[kOlder] = "earlier";
    registry_ = Get(kRegistry);
    Count("kills in uses of names and logs", kWriters, [this](const Writer &writer) { return Sweep(writer); });
    Count("failing calls in uses of names and logs", kWriters, [this](const Writer &writer) {
        int calls = 0;
        for (const int error : {ENOSPC, EACCES, EINTR}) {
            sweptError = error;
            calls += HasFailure() ? 0 : Sweep(writer);
        }
        return calls;
    });
}

} // namespace
