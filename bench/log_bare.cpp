// The system calls that a record of a log takes, by hand.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "bench/log_data.h"

namespace bench {
namespace {

bool SetLock(int descriptor, short type)
{
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    return fcntl(descriptor, F_SETLKW, &range) == 0;
}

template <typename Work>
void UnderBareLock(const Log &log, Work work)
{
    const int descriptor = open(log.lockFile.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    Need(SetLock(descriptor, F_WRLCK));
    work();
    struct stat file; // the rights on the lock file follow those on the file
    struct stat lock;
    Need(stat(log.path.c_str(), &file) == 0 && stat(log.lockFile.c_str(), &lock) == 0);
    Need(SetLock(descriptor, F_UNLCK) && close(descriptor) == 0);
}

void BareSize(const Log &log)
{
    const int file = open(log.path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    Need(fstat(file, &status) == 0 && close(file) == 0);
}

void BareTime()
{
    struct stat status;
    (void)stat("/etc/localtime", &status);
}

// What comes before the lock is taken.
mode_t BarePrepare(const Log &log)
{
    utsname host;
    struct stat status = {};
    status.st_mode = 0664;
    (void)stat(log.path.c_str(), &status);
    BareTime();
    Need(uname(&host) == 0);
    return status.st_mode & 01666;
}

void BareDirectory(const Log &log)
{
    static const std::string directory = std::filesystem::path(log.path).parent_path();
    (void)mkdir(directory.c_str(), 0755); // there already
}

void BareWrite(int file, std::string_view text)
{
    Need(write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
}

template <bool kMin>
mode_t BareBegin(const Log &log)
{
    if (!kMin)
        BareDirectory(log);
    const mode_t mode = BarePrepare(log);
    if (!kMin)
        BareSize(log);
    return mode;
}

template <bool kMin>
void BareText(const Log &log)
{
    const mode_t mode = BareBegin<kMin>(log);
    UnderBareLock(log, [&] {
        const int file = open(log.path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode);
        Need(fchmod(file, mode) == 0 && lseek(file, 0, SEEK_END) >= 0);
        for (const std::string &piece : log.pieces)
            BareWrite(file, piece);
        Need(close(file) == 0);
    });
}

template <bool kMin>
void BareXML(const Log &log)
{
    const mode_t mode = BareBegin<kMin>(log);
    UnderBareLock(log, [&] {
        char block[4096];
        const int file = open(log.path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, mode);
        const off_t size = lseek(file, 0, SEEK_END);
        const size_t wanted = kMin ? log.tail.size() : sizeof block;
        const off_t from = std::max<off_t>(0, size - static_cast<off_t>(wanted));
        Need(fchmod(file, mode) == 0 && size > 0 && pread(file, block, wanted, from) > 0);
        const off_t tag = size - static_cast<off_t>(log.tail.size());
        Need(lseek(file, tag, SEEK_SET) == tag);
        for (const std::string &piece : log.pieces)
            BareWrite(file, piece);
        Need(close(file) == 0);
    });
}

} // namespace

template <bool kMin>
void BareTextLog(const Logs &logs)
{
    BareText<kMin>(logs[0]);
}

template <bool kMin>
void BareXMLLog(const Logs &logs)
{
    BareXML<kMin>(logs[0]);
}

template <bool kMin>
void BareBoth(const Logs &logs)
{
    BareText<kMin>(logs[0]);
    BareXML<kMin>(logs[1]);
}

template <bool kPrefix>
void BareRotated(const Logs &logs)
{
    static char prefix[] = "[Nov 21 2026 12:00:00] [1234:140000000000000] ";
    static char message[] = "The array controller 0 has finished the check of virtual disk 3.";
    static char end[] = "\n";
    const char *path = logs[0].path.c_str();
    if (kPrefix)
        BareTime();
    struct stat status;
    Need(stat(path, &status) == 0 && stat(path, &status) == 0);
    const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    const iovec pieces[] = {{prefix, kPrefix ? sizeof prefix - 1 : 0}, {message, sizeof message - 1}, {end, 1}};
    Need(fchmod(file, status.st_mode & 01666) == 0 && writev(file, pieces, std::size(pieces)) > 0 && close(file) == 0);
}

void BareMinRotated(const Logs &logs)
{
    constexpr std::string_view kLine = "The array controller 0 has finished the check of virtual disk 3.\n";
    const int file = open(logs[0].path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    BareWrite(file, kLine);
    Need(close(file) == 0);
}

template void BareTextLog<false>(const Logs &);
template void BareTextLog<true>(const Logs &);
template void BareXMLLog<false>(const Logs &);
template void BareXMLLog<true>(const Logs &);
template void BareBoth<false>(const Logs &);
template void BareBoth<true>(const Logs &);
template void BareRotated<false>(const Logs &);
template void BareRotated<true>(const Logs &);

} // namespace bench
