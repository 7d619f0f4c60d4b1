#include "log/rotated.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>

#include "compat/print.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "os/thread.h"

namespace qzvest {
namespace {

constexpr mode_t kDefaultMode = 0644;
constexpr size_t kPrefixRoom = 128;
constexpr size_t kPartRoom = 64;
constexpr size_t kNameRoom = 256;

void PutTime(char (&text)[kPartRoom])
{
    const time_t now = time(nullptr);
    tzset();
    tm local;
    if (localtime_r(&now, &local) == nullptr)
        (void)sprintf_s(text, sizeof text, "[localtime error] ");
    else if (std::strftime(text, sizeof text, "[%b %d %Y %H:%M:%S] ", &local) == 0)
        (void)sprintf_s(text, sizeof text, "[strftime error] ");
}

void PutPrefix(char (&prefix)[kPrefixRoom], uint32_t flags)
{
    char time[kPartRoom] = "";
    char thread[kPartRoom] = "";
    if ((flags & SM_ROTATED_TIME) != 0)
        PutTime(time);
    if ((flags & SM_ROTATED_THREAD) != 0)
        (void)sprintf_s(thread, sizeof thread, "[%u:%llu] ", static_cast<unsigned>(getpid()),
                        static_cast<unsigned long long>(SMThreadGetID()));
    (void)sprintf_s(prefix, sizeof prefix, "%s%s", time, thread);
}

// False when the name does not fit.
bool NameOfGeneration(char (&name)[kNameRoom], const char *path, uint32_t number)
{
    return sprintf_s(name, sizeof name, "%s.%u", path, number) > 0;
}

iovec PieceOf(const char *text)
{
    return {const_cast<char *>(text), std::strlen(text)};
}

// The message is one write, as a line of other writers is; more only where a signal or the system cuts one short. That
// it failed is not told.
void WriteMessage(int file, const char *prefix, const char *message, const char *suffix)
{
    iovec pieces[] = {PieceOf(prefix), PieceOf(message), PieceOf(suffix)};
    iovec *const end = std::end(pieces);
    for (iovec *next = pieces; next != end;) {
        const ssize_t result = writev(file, next, static_cast<int>(end - next));
        if (result < 0 && errno == EINTR)
            continue;
        if (result < 0)
            return;
        auto written = static_cast<size_t>(result);
        for (; next != end && written >= next->iov_len; ++next)
            written -= next->iov_len;
        if (next != end) {
            next->iov_base = static_cast<char *>(next->iov_base) + written;
            next->iov_len -= written;
        }
    }
}

} // namespace

uint32_t SMFileLogMsgToRotatedLog(const char *message, const char *pathFileName, uint32_t maxSize, uint32_t generations,
                                  uint32_t flags)
{
    if (message == nullptr || pathFileName == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    char prefix[kPrefixRoom];
    PutPrefix(prefix, flags);
    const char *suffix = (flags & SM_ROTATED_LINE_FEED) != 0 ? "\n" : "";
    const mode_t mode = SMFileModeGet(pathFileName, kDefaultMode, kKeepSticky); // a new file keeps that of the old one
    SMFileRotateCheck(pathFileName, maxSize, generations);
    const Descriptor file(open(pathFileName, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode));
    if (!file)
        return SM_STATUS_FAILED;
    (void)fchmod(file.Get(), mode);
    WriteMessage(file.Get(), prefix, message, suffix);
    return SM_STATUS_OK;
}

void SMFileRotateCheck(const char *pathFileName, uint32_t maxSize, uint32_t generations)
{
    struct stat status;
    if (pathFileName == nullptr || stat(pathFileName, &status) != 0 || status.st_size <= int64_t{maxSize})
        return;
    if (generations == 0) {
        (void)unlink(pathFileName);
        return;
    }
    char from[kNameRoom];
    char to[kNameRoom];
    for (uint32_t i = generations - 1; i >= 1; --i)
        if (NameOfGeneration(from, pathFileName, i) && access(from, F_OK) == 0 &&
            NameOfGeneration(to, pathFileName, i + 1))
            (void)std::rename(from, to);
    if (NameOfGeneration(to, pathFileName, 1))
        (void)std::rename(pathFileName, to);
}

void SMFileDeleteRotated(const char *pathFileName, uint16_t deleteGenerations, uint32_t generations)
{
    if (pathFileName == nullptr)
        return;
    char name[kNameRoom];
    if (deleteGenerations == 1)
        for (uint32_t i = generations; i >= 1; --i)
            if (NameOfGeneration(name, pathFileName, i) && access(name, F_OK) == 0)
                (void)unlink(name);
    if (access(pathFileName, F_OK) == 0)
        (void)unlink(pathFileName);
}

} // namespace qzvest
