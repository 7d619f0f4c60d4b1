#include "ipc/filelock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "containers/redblacktree.h"
#include "ipc/mutex.h"
#include "ipc/names.h"
#include "os/clock.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "text/utf8.h"

namespace qzvest {

struct SMFileLock {
    IPCNameRecord head; // the object name is the lock file's path
    char *path;         // of the protected file, by which the record is found
    SMMutex *mutex;     // excludes the threads of this process
    int32_t mode;       // what is held: 0 nothing, else a FileLockMode
    int32_t descriptor; // of the lock file, -1 if none is open
};

namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kUnknownFile = 0644; // taken for the mode of a file that cannot be examined

SMMutex *registryMutex;
SMRedBlackTree registryTree; // of SMFileLock, by path
SMFileLock *lastRecord;      // found last, and tried before the tree

struct RecordRelease {
    void operator()(SMFileLock *lock) const
    {
        if (lock->descriptor != -1 && lock->mode == 0)
            (void)close(lock->descriptor); // of one that is held the end of the process lets go, and nothing sooner
        SMMutexDestroy(lock->mutex);
        std::free(lock->path);
        std::free(lock);
    }
};

using RecordPtr = std::unique_ptr<SMFileLock, RecordRelease>;

// The rights on the lock file follow the rights on the data file.
void CopyPermissions(const SMFileLock *lock)
{
    const mode_t wanted = SMFileModeGet(lock->path, kUnknownFile, 0);
    if (SMFileModeGet(lock->head.name, kUnknownFile, 0) != wanted)
        (void)chmod(lock->head.name, wanted); // not ours to change: then whoever made it has seen to it
}

RecordPtr MakeRecord(const char *path)
{
    RecordPtr lock(NameRecordAlloc<SMFileLock>(path, kKindFileLock).release());
    if (!lock)
        return lock;
    lock->path = SMUTF8Strdup(path);
    lock->mutex = SMMutexCreate(nullptr);
    lock->mode = 0;
    lock->descriptor = -1;
    if (lock->path == nullptr || lock->mutex == nullptr)
        lock.reset();
    return lock;
}

// False when the lock file is missing and cannot be made.
bool EnsureLockFile(const char *lockFile)
{
    if (access(lockFile, F_OK) == 0)
        return true;
    return static_cast<bool>(Descriptor(open(lockFile, O_RDONLY | O_CREAT | O_CLOEXEC, kOwnerOnly)));
}

// Without waiting there is one try. A wait goes on after whatever may pass.
uint32_t WaitForLock(int descriptor, short type, bool forever)
{
    while (!SetWholeFileLock(descriptor, type, forever ? F_SETLKW : F_SETLK)) {
        switch (errno) {
        case EINTR:
        case EDEADLK:
            continue;
        case EACCES:
        case EAGAIN:
            if (!forever)
                return SM_STATUS_TIMEOUT;
            (void)usleep(kLockPollMicroseconds);
            continue;
        default:
            return SM_STATUS_FAILED;
        }
    }
    return SM_STATUS_OK;
}

// What the two modes need of the lock file.
struct ModeRow {
    int flags;
    short type;
};
constexpr ModeRow kModes[] = {{O_RDONLY, F_RDLCK}, {O_WRONLY, F_WRLCK}};

uint32_t LockFile(SMFileLock *lock, int32_t mode, bool forever)
{
    if (mode != kFileLockReader && mode != kFileLockWriter)
        return SM_STATUS_INVALID_PARAMETER;
    const ModeRow &row = kModes[mode - kFileLockReader];
    // An attempt that failed leaves its descriptor. It goes before the lock is taken: closing any descriptor of a file
    // gives up the process's locks on it.
    if (lock->descriptor != -1)
        (void)close(lock->descriptor);
    lock->descriptor = open(lock->head.name, row.flags | O_CREAT | O_CLOEXEC, kOwnerOnly);
    if (lock->descriptor == -1)
        return errno == EACCES ? SM_STATUS_ACCESS_DENIED : SM_STATUS_FAILED;
    return WaitForLock(lock->descriptor, row.type, forever);
}

void UnlockFile(SMFileLock *lock)
{
    UnlockWholeFile(lock->descriptor);
    (void)close(lock->descriptor);
    lock->descriptor = -1;
}

} // namespace

SMFileLock *SMFileLockOpen(const char *path)
{
    if (path == nullptr)
        return nullptr;
    const MutexGuard guard(registryMutex);
    if (lastRecord != nullptr && std::strcmp(lastRecord->path, path) == 0)
        return lastRecord;
    const TreePlace place = TreeFind(&registryTree, [path](const void *data) {
        return std::strcmp(path, static_cast<const SMFileLock *>(data)->path);
    });
    if (auto *known = TreeDataAt<SMFileLock>(place)) {
        lastRecord = known;
        return known;
    }
    RecordPtr lock = MakeRecord(path);
    if (!lock)
        return nullptr;
    // A lock file that cannot be made shows when the lock is to be taken.
    if (EnsureLockFile(lock->head.name))
        CopyPermissions(lock.get());
    if (TreeInsertAt(&registryTree, place, lock.get()) == nullptr)
        return nullptr;
    lastRecord = lock.release();
    return lastRecord;
}

uint32_t SMFileLockAcquire(SMFileLock *lock, int32_t mode, int32_t wait)
{
    if (HandleStatus(lock, kKindFileLock) != SM_STATUS_OK)
        return SM_STATUS_INVALID_PARAMETER;
    const bool forever = wait == kWaitForLock;
    if (const uint32_t status = SMMutexLock(lock->mutex, forever ? SM_WAIT_FOREVER : 0); status != SM_STATUS_OK)
        return status;
    const uint32_t status = LockFile(lock, mode, forever);
    if (status == SM_STATUS_OK)
        lock->mode = mode;
    else
        (void)SMMutexUnLock(lock->mutex);
    return status;
}

uint32_t SMFileLockRelease(SMFileLock *lock)
{
    if (HandleStatus(lock, kKindFileLock) != SM_STATUS_OK)
        return SM_STATUS_INVALID_PARAMETER;
    if (lock->mode == kFileLockWriter)
        CopyPermissions(lock); // the writer may have made or replaced the file
    lock->mode = 0;
    if (lock->descriptor != -1)
        UnlockFile(lock);
    return SMMutexUnLock(lock->mutex);
}

// Records stay: a path that was used once is likely to be used again.
void SMFileLockClose(SMFileLock *) {}

int FileLockRegistryAttach()
{
    registryMutex = SMMutexCreate(nullptr);
    if (registryMutex == nullptr)
        return 0;
    const MutexGuard guard(registryMutex);
    SMRedBlackTreeAttach(&registryTree);
    return 1;
}

void FileLockRegistryDetach()
{
    if (registryMutex == nullptr)
        return;
    {
        const MutexGuard guard(registryMutex);
        lastRecord = nullptr;
        TreeClear(&registryTree, [](void *data) { RecordPtr(static_cast<SMFileLock *>(data)).reset(); });
    }
    SMMutexDestroy(registryMutex);
    registryMutex = nullptr;
}

FileLockGuard::FileLockGuard(const char *path, FileLockMode mode, int32_t wait)
    : lock_(SMFileLockOpen(path)),
      status_(lock_ != nullptr ? SMFileLockAcquire(lock_, mode, wait) : SM_STATUS_NO_MEMORY)
{
}

FileLockGuard::~FileLockGuard()
{
    if (status_ == SM_STATUS_OK)
        (void)SMFileLockRelease(lock_);
    SMFileLockClose(lock_);
}

} // namespace qzvest
