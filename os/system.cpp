#include "os/system.h"

#include <sys/select.h>
#include <sys/utsname.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <iterator>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "compat/environment.h"
#include "compat/string.h"
#include "frame/heap.h"
#include "text/utf8.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

constexpr size_t kLineRoom = 2048;
constexpr size_t kNumberRoom = 32;

constexpr const char *kSources[] = {
    "Record Broker", "Gaugework Service", "Volume Service", "Bridge Link Service", "Host Agent Frame", "Package Ledger",
};

int PriorityOf(uint32_t severity)
{
    switch (severity) {
    case 1:
        return LOG_ERR;
    case 2:
        return LOG_WARNING;
    default:
        return LOG_INFO;
    }
}

// A message that does not fit leaves an empty line: so does a bounded append that fails, and it is not looked at.
void ComposeLine(char *line, const char *source, const char *eventId, const char *message)
{
    *line = '\0';
    for (const char *piece : {source, " ", "EventID:", " ", eventId, "  ", message})
        (void)strcat_s(line, kLineRoom, piece);
    for (char *at = line; *at != '\0'; ++at) {
        if (*at == '\r')
            *at = ' ';
    }
}

} // namespace

const char *LogSourceName(uint32_t source)
{
    return source != 0 && source <= std::size(kSources) ? kSources[source - 1] : nullptr;
}

int64_t SMRefTicksGet()
{
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return -1;
    return static_cast<int64_t>((static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9) * 1000.0);
}

uint32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *elapsed, uint16_t *passed,
                                  uint16_t *expired)
{
    if (start == -1 || now == -1)
        return 0;
    const auto difference = static_cast<int64_t>(static_cast<uint64_t>(now) - static_cast<uint64_t>(start));
    const int64_t time = difference < 0 ? 0 : difference;
    const bool unlimited = timeout == -1;
    const bool over = !unlimited && timeout < time;
    if (elapsed != nullptr)
        *elapsed = time;
    if (passed != nullptr)
        *passed = unlimited ? difference > 0 : over;
    if (expired != nullptr)
        *expired = over;
    return 1;
}

uint32_t SMOSTypeGet()
{
    constexpr char kName[] = "VMkernel";
    utsname system;
    if (uname(&system) != 0)
        return kOrdinary;
    return SMUTF8Strnicmp(system.sysname, kName, sizeof kName) == 0 ? kVMkernel : kOrdinary;
}

uint32_t SMOSShutdown(uint16_t /*first*/, uint16_t /*second*/)
{
    return SM_STATUS_OK;
}

uint32_t SMkbhit()
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(STDIN_FILENO, &readable);
    timeval none{};
    return select(STDIN_FILENO + 1, &readable, nullptr, nullptr, &none) > 0 ? 1 : 0;
}

char *SMEnvDup(const char *name, uint32_t *size)
{
    size_t needed = 0;
    if (getenv_s(&needed, nullptr, 0, name) != 0 || needed == 0)
        return nullptr;
    auto value = HeapRoom<char>(needed);
    size_t again;
    if (!value || getenv_s(&again, value.get(), needed, name) != 0)
        return nullptr;
    if (size != nullptr)
        *size = static_cast<uint32_t>(needed);
    return value.release();
}

uint32_t SMLongFileNamesEnable()
{
    return SM_STATUS_OK;
}

uint32_t SMLongFileNamesDisable()
{
    return SM_STATUS_OK;
}

uint32_t SMAppendToOSSysLog(uint32_t severity, uint32_t source, uint32_t eventId, const char *identity,
                            const char *message)
{
    const auto line = HeapRoom<char>(kLineRoom);
    const char *sourceName = LogSourceName(source);
    if (!line || sourceName == nullptr)
        return SM_STATUS_FAILED;
    char number[kNumberRoom];
    uint32_t size = sizeof number;
    const uint32_t status = SMXLTTypeValueToUTF8(&eventId, sizeof eventId, number, &size, SMXLT_TYPE_UINT32);
    if (status != SM_STATUS_OK)
        return status;
    ComposeLine(line.get(), sourceName, number, message);
    openlog(identity, LOG_NDELAY, LOG_DAEMON);
    syslog(PriorityOf(severity), "%s", line.get());
    closelog();
    return SM_STATUS_OK;
}

} // namespace qzvest
