// Writers that are killed at each of their system calls in turn, and writers of which each system call fails in turn:
// what they leave on disk, and what the next process makes of it.

#include "support/trace.h"

#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>
#include <utility>

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
    std::vector<std::string> parts; // what an append may leave that did not come to its end
    std::vector<std::string> likes; // what may stand for the change when the file could not be examined
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

bool Holds(const std::vector<std::string> &texts, const std::string &text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
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
    void Prepare(const Change &change) const
    {
        for (const std::string &place : {folder, locks})
            for (const auto &entry : std::filesystem::directory_iterator(place))
                std::filesystem::remove(entry);
        if (change.old != kMissing) {
            Put(change.old);
            std::filesystem::permissions(path, kMode);
        }
    }

    uint32_t Make(const Change &change) const
    {
        if (change.section != nullptr)
            return Set(change.section, change.key, change.value);
        return SMPropertyFileWriteValue(change.key, SMXLT_TYPE_UTF8, change.value,
                                        static_cast<uint32_t>(std::strlen(change.value) + 1), path.c_str(), 1);
    }

    // What another process does next. None of it waits for the lock.
    void Use(const Change &change, Report &report) const
    {
        uint32_t size = sizeof report.again;
        const char *file = path.c_str();
        const bool isIni = change.section != nullptr;
        const auto read = [&] {
            size = sizeof report.again;
            return isIni ? SMReadINIPathFileValue("two", "c", INI_TYPE_UTF8, report.again, &size, nullptr, 0, file, 0)
                         : SMPropertyFileReadValue("b", SMXLT_TYPE_UTF8, report.again, &size, nullptr, 0, file, 0);
        };
        report.first = read();
        const std::string content = Get();
        std::strncpy(report.content, content.c_str(), sizeof report.content - 1);
        if (!isIni && content == kMissing) // nobody but the user puts it back
            std::filesystem::rename(path + ".bak", path);
        report.second = isIni ? SMWriteINIPathFileValue("two", "c", INI_TYPE_UTF8, "again", 6, file, 0)
                              : SMPropertyFileWriteValue("b", SMXLT_TYPE_UTF8, "again", 6, file, 0);
        if (read() != SM_STATUS_OK)
            std::strcpy(report.again, "(none)");
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

    void SweepKills(const Change &change);
    void CheckAfterKill(const Change &change, std::set<std::string> &states) const;
    void SweepFaults(const Change &change);
    void CheckAfterFault(const Change &change, const Report &report) const;

    void Add(const std::string &name, int number)
    {
        total_ += number;
        parts_ += (parts_.empty() ? "" : ", ") + name + " " + std::to_string(number);
    }
    void Count(const char *what)
    {
        std::printf("COUNT %s: %d (%s)\n", what, std::exchange(total_, 0), std::exchange(parts_, "").c_str());
    }

    int total_ = 0;
    std::string parts_;
};

void Crash::CheckAfterKill(const Change &change, std::set<std::string> &states) const
{
    const std::string found = Get();
    const std::string backup = Get(path + ".bak");
    const bool isSwapping = backup != kMissing;
    const bool isChanged = found == change.changed;
    EXPECT_TRUE(change.old == kMissing || found == kMissing || std::filesystem::status(path).permissions() == kMode);
    if (isSwapping) {
        EXPECT_EQ(backup, change.old);
        EXPECT_TRUE(isChanged || found == kMissing) << found;
        states.insert(isChanged ? "both" : "between");
    } else {
        EXPECT_TRUE(isChanged || found == change.old || Holds(change.parts, found)) << found;
        states.insert(isChanged ? "new" : found == change.old ? "old" : "part");
    }
    const Shared<Report> report;
    ASSERT_EQ(InOtherProcess([&] { return Use(change, *report), 0; }), 0);
    CheckUse(change, *report, isSwapping && change.section != nullptr ? backup : found);
}

void Crash::SweepKills(const Change &change)
{
    std::set<std::string> states;
    for (int nth = 1;; ++nth) {
        Prepare(change);
        const auto work = [&] {
            TraceBegin();
            const uint32_t status = Make(change);
            TraceEnd();
            return status == SM_STATUS_OK ? 0 : 1;
        };
        const TraceOutcome outcome = Trace(work, {nth, 0, nullptr});
        if (!outcome.reached) {
            EXPECT_EQ(outcome.exitCode, 0);
            EXPECT_EQ(Get(), change.changed);
            Add(change.name, nth - 1);
            break;
        }
        SCOPED_TRACE(change.name + ", killed at call " + std::to_string(nth) + ", number " +
                     std::to_string(outcome.call));
        CheckAfterKill(change, states);
        if (HasFailure())
            return;
    }
    const std::set<std::string> expected = change.parts.empty() ? std::set<std::string>{"old", "between", "both", "new"}
                                                                : std::set<std::string>{"old", "part", "new"};
    EXPECT_EQ(states, expected);
}

// A status other than 0 means that the change has not been made, as far as the next reader can see.
void Crash::CheckAfterFault(const Change &change, const Report &report) const
{
    static const std::set<uint32_t> kDocumented = {SM_STATUS_OK,
                                                   SM_STATUS_FILE_NOT_FOUND,
                                                   SM_STATUS_LIMIT_REACHED,
                                                   SM_STATUS_ALREADY_EXISTS,
                                                   SM_STATUS_INI_OPEN_FAILED,
                                                   SM_STATUS_INI_BAD_SECTION,
                                                   SM_STATUS_ACCESS_DENIED,
                                                   SM_STATUS_FAILED};
    EXPECT_TRUE(kDocumented.count(report.status) != 0) << report.status;
    EXPECT_EQ(report.descriptorsLeft, 0);
    const std::string content = report.content;
    const bool isProperty = change.section == nullptr;
    if (report.status == SM_STATUS_OK || (isProperty && report.status == SM_STATUS_ACCESS_DENIED))
        EXPECT_TRUE(content == change.changed || Holds(change.likes, content) ||
                    (report.status != SM_STATUS_OK && content == change.old)) // the lock, not the backup, was denied
            << content;
    else if (report.status == SM_STATUS_LIMIT_REACHED)
        EXPECT_TRUE(content == change.old || Holds(change.parts, content) ||
                    (!change.parts.empty() && content == change.changed)) // that could not be closed
            << content;
    else if (isProperty && report.status == SM_STATUS_ALREADY_EXISTS)
        EXPECT_EQ(content, kMissing);
    else
        EXPECT_EQ(content, change.old);
    CheckUse(change, report, content);
}

void Crash::SweepFaults(const Change &change)
{
    int faults = 0;
    std::set<uint32_t> statuses;
    for (const int error : {ENOSPC, EIO, EMFILE, EACCES, EINTR}) {
        for (int nth = 1;; ++nth) {
            Prepare(change);
            const Shared<Report> report;
            const auto work = [&] {
                const int64_t before = OpenDescriptors();
                TraceBegin();
                report->status = Make(change);
                TraceEnd();
                // The other process comes while this one lives on, so that a lock that was not given back is in its
                // way.
                if (InOtherProcess([&] { return Use(change, *report), 0; }) != 0)
                    return 1;
                report->descriptorsLeft = OpenDescriptors() - before;
                char value[16];
                uint32_t size = sizeof value;
                if (report->descriptorsLeft == 1) { // a lock that was not got keeps its own until it is tried again
                    SMReadINIPathFileValue("two", "c", INI_TYPE_UTF8, value, &size, nullptr, 0, path.c_str(), 0);
                    report->descriptorsLeft = OpenDescriptors() - before;
                }
                return 0;
            };
            const TraceOutcome outcome =
                Trace(work, {nth, error, error == EINTR ? TakesInterruptibleCall : TakesFileCall});
            SCOPED_TRACE(change.name + ", " + strerror(error) + " from call " + std::to_string(nth) + ", number " +
                         std::to_string(outcome.call) + ", status " + std::to_string(report->status));
            ASSERT_EQ(outcome.exitCode, 0);
            CheckAfterFault(change, *report);
            if (HasFailure())
                return;
            if (!outcome.reached)
                break;
            statuses.insert(report->status);
            ++faults;
        }
    }
    Add(change.name, faults);
    EXPECT_GE(statuses.size(), 4u); // the calls that matter were among them
}

TEST_F(Crash, LeavesTheOldOrTheNew)
{
    for (const Change &change : kChanges)
        SweepKills(change);
    Count("kills in INI and property writes");
}

// A value, or a list of keys, that goes beyond what is read at once.
TEST_F(Crash, FaultsOfReadsDeliverNoHalves)
{
    std::string value, keys;
    for (int line = 0; line < 20; ++line) {
        value += std::string(8000, 'v') + "\n";
        keys += "long";
        keys += '\0';
    }
    std::string content;
    for (const char byte : value)
        content += byte == '\n' ? "\\\n" : std::string(1, byte);
    for (const bool lists : {false, true}) {
        std::string expected = lists ? keys : value;
        expected += '\0';
        std::string whole;
        for (int times = lists ? 20 : 1; times > 0; --times)
            whole += "long=" + content + "end\n";
        if (!lists)
            expected.insert(expected.size() - 1, "end");
        Put(whole);
        int faults = 0;
        for (bool reached = true; reached; ++faults) {
            const auto work = [&] {
                std::vector<char> dest(expected.size());
                auto size = static_cast<uint32_t>(dest.size());
                TraceBegin();
                const uint32_t status = SMPropertyFileReadValue(lists ? nullptr : "long", SMXLT_TYPE_UTF8, dest.data(),
                                                                &size, nullptr, 0, path.c_str(), 1);
                TraceEnd();
                return status != SM_STATUS_OK ? 2 : std::string(dest.data(), size) == expected ? 0 : 1;
            };
            const TraceOutcome outcome = Trace(work, {faults + 1, EIO, TakesFileCall});
            reached = outcome.reached;
            EXPECT_NE(outcome.exitCode, 1) << faults;
        }
        EXPECT_GT(faults, 8);
    }
}

TEST_F(Crash, FaultsAreTold)
{
    for (const Change &change : kChanges)
        SweepFaults(change);
    Count("failing calls in INI and property writes");
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
        for (const std::string &place : {kLogs, locks})
            for (const auto &entry : std::filesystem::directory_iterator(place))
                std::filesystem::remove(entry);
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

    // How many calls there were.
    int Sweep(const Writer &writer) const
    {
        for (int nth = 1;; ++nth) {
            Restore();
            const auto work = [&writer] {
                TraceBegin();
                const uint32_t status = writer.write();
                TraceEnd();
                return status == SM_STATUS_OK ? 0 : 1;
            };
            const auto filter = sweptError == 0       ? nullptr
                                : sweptError == EINTR ? TakesInterruptibleCall
                                                      : TakesFileCall;
            const TraceOutcome outcome = Trace(work, {nth, sweptError, filter});
            SCOPED_TRACE(std::string(writer.name) + ", " + strerror(sweptError) + " at call " + std::to_string(nth) +
                         ", number " + std::to_string(outcome.call));
            CheckKept(writer, sweptError != 0 && outcome.call == SYS_openat);
            Files left = Logs();
            const std::string xml = left[kXML], text = left[kText];
            EXPECT_TRUE(sweptError != 0 || text.empty() || text.ends_with(std::string("\n\0", 2)));
            EXPECT_TRUE(InOtherProcess([&writer] { return writer.next() == SM_STATUS_OK ? 0 : 1; }) == 0 ||
                        (!xml.empty() && !xml.ends_with(kTag)));
            CheckKept(writer, sweptError != 0 && outcome.call == SYS_openat);
            EXPECT_TRUE(Logs()[kText].starts_with(text));
            EXPECT_TRUE(xml.empty() || xml.ends_with(kTag) || Logs()[kXML] == xml); // damaged: it stays
            EXPECT_TRUE(outcome.reached || outcome.exitCode == 0);
            if (!outcome.reached || HasFailure())
                return nth - 1;
        }
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
    for (const std::vector<int> &errors : {std::vector{0}, {ENOSPC, EACCES, EINTR}}) {
        for (const Writer &writer : kWriters) {
            int calls = 0;
            for (const int error : errors) {
                sweptError = error;
                calls += HasFailure() ? 0 : Sweep(writer);
            }
            Add(writer.name, calls);
        }
        Count(sweptError == 0 ? "kills in uses of names and logs" : "failing calls in uses of names and logs");
    }
}

} // namespace
