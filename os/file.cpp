#include "os/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "compat/print.h"
#include "frame/heap.h"
#include "os/descriptor.h"
#include "text/utf8.h"

struct SMFileProp {
    char *path;
    int64_t modified; // seconds
};

namespace qzvest {
namespace {

constexpr char kNameAlphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr int kNameLetters = sizeof kNameAlphabet - 1;
constexpr uint32_t kNameLength = 8;
constexpr int kNameTries = 100;
constexpr size_t kPathRoom = 256;
constexpr size_t kCopyRoom = 8192;
constexpr mode_t kDirectoryMode = 0755;
constexpr mode_t kReplacedMode = 0644;
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kPlainModeBits = 0666;
constexpr mode_t kStickyModeBits = 01666;

bool Exists(const char *path)
{
    return access(path, F_OK) == 0;
}

// Where SMSafeFileReplace keeps the old version; empty when memory runs out.
HeapPtr<char> BackupPathOf(const char *path)
{
    return UTF8Join({path, ".bak"});
}

// What a destination that cannot be opened or written means.
uint32_t DestinationFailure()
{
    return errno == ENOSPC ? SM_STATUS_LIMIT_REACHED : SM_STATUS_FAILED;
}

// A short write counts as complete.
uint32_t CopyContent(int source, int destination)
{
    const auto room = HeapRoom<char>(kCopyRoom);
    if (!room)
        return SM_STATUS_NO_MEMORY;
    for (;;) {
        ssize_t count;
        do
            count = read(source, room.get(), kCopyRoom);
        while (count < 0 && errno == EINTR);
        if (count == 0)
            return SM_STATUS_OK;
        if (count < 0)
            return SM_STATUS_FAILED;
        ssize_t written;
        do
            written = write(destination, room.get(), static_cast<size_t>(count));
        while (written < 0 && errno == EINTR);
        if (written < 0)
            return DestinationFailure();
    }
}

struct CopyManner {
    int openFlags; // besides those of every destination
    bool setMode;
    bool sync;
};

uint32_t CopyFile(const char *sourcePath, const char *destinationPath, const CopyManner &manner)
{
    const Descriptor source = OpenToRead(sourcePath);
    if (!source)
        return SM_STATUS_FILE_NOT_FOUND;
    struct stat status;
    if (fstat(source.Get(), &status) != 0)
        return SM_STATUS_FILE_STAT_FAILED;
    const mode_t mode = status.st_mode & kPermissionBits;
    const Descriptor destination(open(destinationPath, O_RDWR | O_CREAT | O_CLOEXEC | manner.openFlags, mode));
    if (!destination)
        return DestinationFailure();
    const uint32_t result = CopyContent(source.Get(), destination.Get());
    if (result != SM_STATUS_OK)
        return result;
    if (manner.setMode)
        (void)fchmod(destination.Get(), mode); // the content is there: no failure from here on
    if (manner.sync)
        (void)fsync(destination.Get());
    return SM_STATUS_OK;
}

uint32_t CopyOver(const char *source, const char *destination, uint16_t overwrite, bool sync)
{
    if (source == nullptr || destination == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (overwrite == 0 && Exists(destination))
        return SM_STATUS_FILE_EXISTS;
    return CopyFile(source, destination, {.openFlags = O_TRUNC, .setMode = true, .sync = sync});
}

uint32_t CopyBehind(const char *source, const char *destination, uint16_t create, bool sync)
{
    if (source == nullptr || destination == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    const bool missing = !Exists(destination);
    if (missing && create == 0)
        return SM_STATUS_FILE_NOT_FOUND;
    return CopyFile(source, destination, {.openFlags = O_APPEND, .setMode = missing, .sync = sync});
}

} // namespace

uint32_t SMMkDir(const char *path)
{
    if (mkdir(path, kDirectoryMode) == 0 || errno == EEXIST)
        return SM_STATUS_OK;
    return Exists(path) ? SM_STATUS_OK : SM_STATUS_FAILED; // on a read-only file system, say
}

uint32_t SMRmDir(const char *path)
{
    if (rmdir(path) == 0)
        return SM_STATUS_OK;
    switch (errno) {
    case ENOENT:
        return SM_STATUS_NOT_FOUND;
    case ENOTEMPTY:
        return SM_STATUS_BAD_FORMAT;
    default:
        return SM_STATUS_FAILED;
    }
}

uint32_t SMGetTmpFile(const char *directory, char *buffer, uint32_t *size)
{
    static bool seeded;
    const auto path = HeapRoom<char>(kPathRoom);
    if (!path)
        return SM_STATUS_NO_MEMORY;
    for (int tries = 0; tries < kNameTries; ++tries) {
        if (*size < kNameLength + 1) {
            *size = kNameLength + 1;
            return SM_STATUS_BUFFER_TOO_SMALL;
        }
        if (!__atomic_exchange_n(&seeded, true, __ATOMIC_RELAXED))
            std::srand(static_cast<unsigned>(std::time(nullptr)));
        for (uint32_t i = 0; i < kNameLength; ++i)
            buffer[i] = kNameAlphabet[std::rand() % kNameLetters]; // guessable: whoever creates the file minds that
        buffer[kNameLength] = '\0';
        (void)sprintf_s(path.get(), kPathRoom, "%s/%s", directory, buffer); // too long: not looked into
        if (!Exists(path.get())) {
            *size = kNameLength + 1;
            return SM_STATUS_OK;
        }
    }
    return SM_STATUS_FAILED;
}

// As a stream would tell it: of files that don't know their size, such as those of /proc, it makes 0 and no failure.
uint32_t SMGetSizeOfFile(const char *path, uint32_t *size)
{
    *size = 0;
    const Descriptor file = OpenToRead(path);
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0)
        return SM_STATUS_FAILED;
    // Files made up by the system have a size, but may have no end to go to.
    const off_t end = S_ISREG(status.st_mode) ? status.st_size : lseek(file.Get(), 0, SEEK_END);
    if (end < 0)
        return SM_STATUS_FAILED;
    *size = static_cast<uint32_t>(end);
    return SM_STATUS_OK;
}

uint32_t SMDeleteFile(const char *path)
{
    return unlink(path) == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
}

uint32_t SMFileCopy(const char *source, const char *destination, uint16_t overwrite)
{
    return CopyOver(source, destination, overwrite, false);
}

uint32_t SMFileCopyAndSync(const char *source, const char *destination, uint16_t overwrite)
{
    return CopyOver(source, destination, overwrite, true);
}

uint32_t SMFileAppend(const char *source, const char *destination, uint16_t create)
{
    return CopyBehind(source, destination, create, false);
}

uint32_t SMFileAppendAndSync(const char *source, const char *destination, uint16_t create)
{
    return CopyBehind(source, destination, create, true);
}

SMFileProp *SMFilePropAlloc(const char *path)
{
    struct stat status;
    if (path == nullptr || stat(path, &status) != 0)
        return nullptr;
    auto handle = HeapRoom<SMFileProp>(1);
    if (!handle)
        return nullptr;
    handle->path = SMUTF8Strdup(path);
    if (handle->path == nullptr)
        return nullptr;
    handle->modified = status.st_mtim.tv_sec;
    return handle.release();
}

uint32_t SMFilePropIsModified(SMFileProp *handle)
{
    struct stat status;
    if (handle == nullptr || stat(handle->path, &status) != 0 || status.st_mtim.tv_sec == handle->modified)
        return 0;
    handle->modified = status.st_mtim.tv_sec;
    return 1;
}

void SMFilePropFree(SMFileProp *handle)
{
    if (handle == nullptr)
        return;
    std::free(handle->path);
    std::free(handle);
}

mode_t SMFileModeGet(const char *path, mode_t defaultMode, uint32_t flags)
{
    struct stat status;
    if (stat(path, &status) != 0)
        return defaultMode;
    return status.st_mode & ((flags & kKeepSticky) != 0 ? kStickyModeBits : kPlainModeBits);
}

bool WriteFully(int descriptor, const void *bytes, size_t size)
{
    const auto *at = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t written = write(descriptor, at, size);
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0) {
            at += written;
            size -= static_cast<size_t>(written);
        }
    }
    return true;
}

HeapPtr<char> TmpPathIn(const char *directory, uint32_t &status)
{
    char name[kNameLength + 1];
    uint32_t size = sizeof name;
    status = SMGetTmpFile(directory, name, &size);
    if (status != SM_STATUS_OK)
        return nullptr;
    HeapPtr<char> path = UTF8Join({directory, "/", name});
    if (!path)
        status = SM_STATUS_NO_MEMORY;
    return path;
}

Descriptor CreateTmpFile(const char *directory, HeapPtr<char> &path, mode_t mode, uint32_t &status)
{
    constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    status = SM_STATUS_OK;
    for (int tries = 0; tries < kNameTries; ++tries) {
        const int descriptor = open(path.get(), kNewFile, mode);
        if (descriptor != -1)
            return Descriptor(descriptor);
        if (errno != EEXIST) {
            status = SM_STATUS_FILE_NOT_FOUND;
            return Descriptor();
        }
        // Processes that began in the same second draw the same names.
        path = TmpPathIn(directory, status);
        if (!path)
            return Descriptor();
    }
    status = SM_STATUS_FAILED;
    return Descriptor();
}

bool RollBack(const char *path)
{
    const HeapPtr<char> backup = BackupPathOf(path);
    if (!backup)
        return false;
    if (Exists(backup.get()))
        (void)std::rename(backup.get(), path); // two readers may both see it; the second finds it gone
    return true;
}

uint32_t SMSafeFileReplace(const char *path, const char *newPath)
{
    const mode_t mode = SMFileModeGet(path, kReplacedMode, kKeepSticky);
    const HeapPtr<char> backup = BackupPathOf(path);
    if (!backup)
        return SM_STATUS_NO_MEMORY;
    if (std::rename(path, backup.get()) != 0)
        return SM_STATUS_FAILED;
    if (std::rename(newPath, path) != 0)
        return SM_STATUS_ALREADY_EXISTS; // the next INI call puts the backup back
    (void)chmod(path, mode);
    return unlink(backup.get()) == 0 ? SM_STATUS_OK : SM_STATUS_ACCESS_DENIED;
}

} // namespace qzvest
