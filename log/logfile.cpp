#include "log/logfile.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "frame/heap.h"
#include "ipc/filelock.h"
#include "os/file.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr size_t kMostPath = 255;

} // namespace

uint32_t MakeLogDirectory(const char *path)
{
    const char *slash = std::strrchr(path, '/');
    if (slash == nullptr || slash == path)
        return SM_STATUS_OK;
    const HeapPtr<char> directory = UTF8Copy({path, static_cast<size_t>(slash - path)});
    return directory ? SMMkDir(directory.get()) : SM_STATUS_NO_MEMORY;
}

void PutBackupPath(char *backup, const char *path, size_t size)
{
    std::memcpy(backup, path, size);
    backup[size - 2] = '_';
}

uint32_t BackUpLog(const char *path)
{
    const size_t length = std::strlen(path);
    if (length < 2)
        return SM_STATUS_INVALID_PARAMETER;
    if (length > kMostPath)
        return SM_STATUS_BUFFER_TOO_SMALL;
    const HeapPtr<char> backup = HeapRoom<char>(length + 1);
    if (!backup)
        return SM_STATUS_NO_MEMORY;
    PutBackupPath(backup.get(), path, length + 1);
    const FileLockGuard lock(path, kFileLockWriter, kWaitForLock);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    (void)unlink(backup.get());
    return std::rename(path, backup.get()) == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
}

uint32_t DeleteLog(const char *path)
{
    const FileLockGuard lock(path, kFileLockWriter, kWaitForLock);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    return SMDeleteFile(path);
}

} // namespace qzvest
