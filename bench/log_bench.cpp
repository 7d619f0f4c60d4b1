// One record into the text log, the XML log, both, the system log or a rotated log, by one process or against another,
// with none or a thousand records there before. A log is cut back to its first size after each batch, so that it does
// not grow with the time of measurement. "bare" makes the library's own system calls with what it writes ready made,
// "bare_min" those that one record cannot do without: it is what is left to gain.
//
// It is linked to the library's objects, and run by tests/support/sandbox, whose /run is empty: there it makes the IPC
// directory and its logs, registers their path and listens at /dev/log.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <qzvest/qzvest.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/log_data.h"
#include "bench/sandbox.h"
#include "frame/module.h"
#include "ipc/filelock.h"
#include "ipc/names.h"
#include "log/textlog.h"
#include "log/xmllog.h"

#ifdef BENCH_GLIB
#define G_LOG_USE_STRUCTURED
#include <glib.h>
#endif
#ifdef BENCH_SPDLOG
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace {

using namespace bench;

constexpr const char *kSource = "Volume Service";
constexpr const char *kDescription = "The array controller 0 has finished the check of virtual disk 3.";
constexpr uint8_t kData[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr uint32_t kEventId = 2095;
constexpr uint16_t kType = SM_LOG_TYPE_INFORMATION;
constexpr uint16_t kCategory = SM_LOG_VOLUME_SERVICE;
constexpr uint32_t kLimit = 0x400000; // far from what a batch and the records before it need
constexpr uint32_t kGenerations = 3;
constexpr int kBatch = 256;

void CutBack(const Log &log)
{
    const qzvest::FileLockGuard lock(log.path.c_str(), qzvest::kFileLockWriter, 1);
    const auto tail = static_cast<off_t>(log.tail.size());
    const int file = open(log.path.c_str(), O_WRONLY | O_CLOEXEC);
    Need(file != -1 && pwrite(file, log.tail.data(), log.tail.size(), std::max<off_t>(log.size - tail, 0)) == tail);
    Need(ftruncate(file, log.size) == 0 && close(file) == 0);
}

// ---- Ours ----

const qzvest::LogEvent kEvent = {kType, kCategory, kEventId, kSource, kDescription, kData, sizeof kData};

void OursText(const Logs &logs)
{
    NeedOK(qzvest::AppendToTextLog(logs[0].path.c_str(), kEvent, kLimit));
}

void OursXML(const Logs &logs)
{
    NeedOK(qzvest::SMAppendToXMLLog(logs[0].path.c_str(), kType, kCategory, kEventId, nullptr, kSource, kDescription,
                                    nullptr, kData, sizeof kData, kLimit));
}

template <uint8_t kTargets>
void OursEvent(const Logs &)
{
    NeedOK(SMAppendToLog(kTargets, kType, kCategory, kEventId, kSource, kDescription, kData, sizeof kData));
}

template <uint32_t kFlags>
void OursRotated(const Logs &logs)
{
    NeedOK(SMFileLogMsgToRotatedLog(kDescription, logs[0].path.c_str(), kLimit, kGenerations,
                                    kFlags | SM_ROTATED_LINE_FEED));
}

// ---- Peers ----

void SyslogKept(const Logs &)
{
    syslog(LOG_DAEMON | LOG_INFO, "%u %s %s", kEventId, kSource, kDescription);
}

void SyslogOpened(const Logs &logs)
{
    openlog(kSource, LOG_NDELAY, LOG_DAEMON);
    SyslogKept(logs);
    closelog();
}

#ifdef BENCH_GLIB
FILE *structuredLog;

GLogWriterOutput WriteStructured(GLogLevelFlags level, const GLogField *fields, gsize count, gpointer)
{
    char *line = g_log_writer_format_fields(level, fields, count, FALSE);
    const bool done = std::fprintf(structuredLog, "%s\n", line) > 0 && std::fflush(structuredLog) == 0;
    g_free(line);
    return done ? G_LOG_WRITER_HANDLED : G_LOG_WRITER_UNHANDLED;
}

void GlibLine(const Logs &logs)
{
    if (structuredLog == nullptr) {
        structuredLog = std::fopen(logs[0].path.c_str(), "ae");
        Need(structuredLog != nullptr);
        g_log_set_writer_func(WriteStructured, nullptr, nullptr);
    }
    g_log_structured(kSource, G_LOG_LEVEL_MESSAGE, "ID", "2095", "MESSAGE", "%s", kDescription);
}
#endif

#ifdef BENCH_SPDLOG
// A sink that shares its file with another process must not rotate it behind that one's back: it has a size of its own.
template <int kKind>
void SpdlogLine(const Logs &logs)
{
    static spdlog::logger *const logger = [&logs] {
        auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(logs[0].path, SIZE_MAX, kGenerations);
        auto *made = new spdlog::logger(kSource, sink);
        constexpr const char *kPatterns[] = {"[%Y-%m-%d %H:%M:%S.%e] [%n] [%l] %v", "%v",
                                             "[%b %d %Y %H:%M:%S] [%P:%t] %v"};
        made->set_pattern(kPatterns[kKind]);
        made->flush_on(spdlog::level::trace);
        return made;
    }();
    if (kKind == 0)
        logger->info("{} {}", kEventId, kDescription);
    else
        logger->info(kDescription);
}
#endif

// ---- Logs and measurement ----

std::string LockFileOf(const std::string &path)
{
    char digest[qzvest::kNameDigestSize];
    uint32_t size = sizeof digest;
    NeedOK(qzvest::SMNameDigest(path.c_str(), digest, &size));
    return std::string(qzvest::IPCDirectory()) + "/.qzvesflk" + digest;
}

std::string Read(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

constexpr std::string_view kClosingTag = "</EventLog>";

// What the second record added, as it was written: lines, of which the last is a line's end alone.
std::vector<std::string> PiecesOf(const std::string &record, bool isXML, bool isMin)
{
    if (isMin)
        return {record};
    if (isXML)
        return {record.substr(0, record.size() - kClosingTag.size()), std::string(kClosingTag)};
    using namespace std::string_view_literals;
    constexpr std::string_view kEnd = "\r\0\n\0"sv;
    std::vector<std::string> pieces;
    for (size_t at = 0; at < record.size();) {
        const size_t end = record.find(kEnd, at) + kEnd.size();
        pieces.push_back(record.substr(at, end - at));
        at = end;
    }
    const std::string dump = pieces.back();
    pieces.back() = dump.substr(0, dump.size() - kEnd.size());
    pieces.emplace_back(kEnd);
    return pieces;
}

bool IsXML(const std::string &path)
{
    return path.ends_with(".xml");
}

// Two records show what one adds. It leaves the log with the first.
void PrepareLog(Log &log, bool isMin)
{
    const bool isXML = IsXML(log.path);
    const auto append = isXML ? OursXML : OursText;
    const Logs only = {log};
    (void)unlink(log.path.c_str());
    append(only);
    const size_t before = Read(log.path).size() - (isXML ? kClosingTag.size() : 0);
    append(only);
    log.tail = isXML ? kClosingTag : "";
    log.pieces = PiecesOf(Read(log.path).substr(before), isXML, isMin);
    log.lockFile = LockFileOf(log.path);
    log.size = static_cast<off_t>(before + log.tail.size());
    CutBack(log);
}

struct Row {
    std::string operation;
    const char *who;
    void (*append)(const Logs &);
    std::vector<std::string> paths; // none for the system log
    bool isEvent;                   // a log of records, of which there may be earlier ones
};

Logs LogsOf(const Row &row, int64_t records)
{
    Logs logs;
    for (const std::string &path : row.paths)
        logs.push_back({path});
    for (Log &log : logs) {
        if (row.isEvent)
            PrepareLog(log, std::strcmp(row.who, "bare_min") == 0);
        else
            std::ofstream(log.path, std::ios::trunc) << "";
    }
    for (int64_t i = 0; i < records; ++i)
        row.append(logs);
    for (Log &log : logs)
        log.size = static_cast<off_t>(std::filesystem::file_size(log.path));
    return logs;
}

class Appending {
public:
    Appending(const Row &row, const Logs &logs) : row_(row), logs_(logs) {}

    void Once()
    {
        row_.append(logs_);
        if (++done_ % kBatch == 0)
            for (const Log &log : logs_)
                CutBack(log);
    }

private:
    const Row &row_;
    const Logs &logs_;
    int64_t done_ = 0;
};

void Alone(benchmark::State &state, const Row &row, int64_t records)
{
    const Logs logs = LogsOf(row, records);
    Appending appending(row, logs);
    for (auto _ : state)
        appending.Once();
}

// Both processes' records share the time. The one that is measured cuts the log back for both.
void BetweenProcesses(benchmark::State &state, const Row &row, int64_t records)
{
    const Logs logs = LogsOf(row, records);
    Shared<Contest> contest;
    const Child child([&] {
        while (!contest->over) {
            row.append(logs);
            contest->others.fetch_add(1, std::memory_order_relaxed);
        }
    });
    while (contest->others == 0)
        sched_yield();
    Appending appending(row, logs);
    const int64_t before = contest->others;
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
        appending.Once();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    const auto own = static_cast<double>(state.iterations());
    const auto others = static_cast<double>(contest->others - before);
    contest->over = true;
    state.SetIterationTime(elapsed.count() * own / (own + others));
}

// ---- Rows ----

const std::string kDirectory = "/run/bench";
const std::string kTextLog = kDirectory + "/log/qzsys64.log"; // the front end's places
const std::string kXMLLog = kDirectory + "/log/qzsys64.xml";
constexpr uint32_t kPrefix = SM_ROTATED_TIME | SM_ROTATED_THREAD;

std::vector<Row> AllRows()
{
    const std::string lines = kDirectory + "/log/lines.";
    std::vector<Row> rows = {
        {"log_text", "ours", OursText, {kTextLog}, true},
        {"log_text", "bare", BareTextLog<false>, {kTextLog}, true},
        {"log_text", "bare_min", BareTextLog<true>, {kTextLog}, true},
        {"log_xml", "ours", OursXML, {kXMLLog}, true},
        {"log_xml", "bare", BareXMLLog<false>, {kXMLLog}, true},
        {"log_xml", "bare_min", BareXMLLog<true>, {kXMLLog}, true},
        {"log_both", "ours", OursEvent<SM_LOG_TEXT | SM_LOG_XML>, {kTextLog, kXMLLog}, true},
        {"log_both", "bare", BareBoth<false>, {kTextLog, kXMLLog}, true},
        {"log_both", "bare_min", BareBoth<true>, {kTextLog, kXMLLog}, true},
        {"log_system", "ours", OursEvent<SM_LOG_SYSTEM>, {}, false},
        {"log_system", "syslog", SyslogKept, {}, false},
        {"log_system", "open+syslog+close", SyslogOpened, {}, false},
        {"rotated_line", "ours", OursRotated<0>, {lines + "ours"}, false},
        {"rotated_line", "bare", BareRotated<false>, {lines + "bare"}, false},
        {"rotated_line", "open+write+close", BareMinRotated, {lines + "min"}, false},
        {"rotated_prefix", "ours", OursRotated<kPrefix>, {lines + "prefix"}, false},
        {"rotated_prefix", "bare", BareRotated<true>, {lines + "bareprefix"}, false},
        {"rotated_prefix", "open+write+close", BareMinRotated, {lines + "min"}, false},
    };
#ifdef BENCH_GLIB
    for (const char *operation : {"log_text", "rotated_line"})
        rows.push_back({operation, "glib", GlibLine, {lines + "glib"}, false});
#endif
#ifdef BENCH_SPDLOG
    rows.push_back({"log_text", "spdlog", SpdlogLine<0>, {lines + "spdlog"}, false});
    rows.push_back({"rotated_line", "spdlog", SpdlogLine<1>, {lines + "spdlogline"}, false});
    rows.push_back({"rotated_prefix", "spdlog", SpdlogLine<2>, {lines + "spdlogprefix"}, false});
#endif
    rows.push_back({"log_text", "syslog", SyslogKept, {}, false});
    return rows;
}

// What may stand in a log already is asked of those that have a file.
void RegisterAll()
{
    static const std::vector<Row> rows = AllRows();
    for (const Row &row : rows) {
        for (const int64_t records : {0, 1000}) {
            if (records != 0 && row.paths.empty())
                continue;
            const std::string rest = std::string("/") + row.who + "/" + std::to_string(records);
            benchmark::RegisterBenchmark((row.operation + rest).c_str(),
                                         [&row, records](benchmark::State &state) { Alone(state, row, records); });
            benchmark::RegisterBenchmark((row.operation + "_contended" + rest).c_str(), [&row, records](
                                                                                            benchmark::State &state) {
                BetweenProcesses(state, row, records);
            })->UseManualTime();
        }
    }
}

// The system log's end: a socket that is read as fast as can be, and nothing is done with it.
bool ListenAsSystemLog()
{
    const int listener = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return false;
    std::thread([listener] {
        char message[2048];
        while (recv(listener, message, sizeof message, 0) >= 0) {
        }
    }).detach();
    return true;
}

bool MakePlaces()
{
    std::error_code error;
    if (!std::filesystem::create_directories(kDirectory + "/log", error))
        return false;
    std::ofstream("/etc/vkreg.cfg") << "Gaugework.logpath=" << kDirectory << "\n";
    qzvest::SMModuleStop(); // to read that
    qzvest::SMModuleStart();
    return SMSetLogMaxSize(kTextLog.c_str(), kLimit) == SM_STATUS_OK &&
           SMSetLogMaxSize(kXMLLog.c_str(), kLimit) == SM_STATUS_OK && ListenAsSystemLog();
}

} // namespace

int main(int argc, char **argv)
{
    return bench::RunAll(argc, argv, MakePlaces, RegisterAll);
}
