#include "ipc/mutex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "ipc/names.h"
#include "os/clock.h"
#include "os/descriptor.h"

struct SMMutex {
    qzvest::IPCNameRecord head; // the object name of a named mutex is the path of its file
    union {
        pthread_mutex_t *anonymous; // the lock of an anonymous mutex
        int64_t file;               // the descriptor of a named one, -1 when closed
    } descriptor;
    pthread_mutex_t *localMutex; // of a named mutex: excludes the threads of this process
    uint16_t lockType;           // of a named mutex: F_WRLCK, or F_RDLCK where the file can only be read
};

namespace qzvest {
namespace {

static_assert(offsetof(SMMutex, descriptor) == 16 && offsetof(SMMutex, localMutex) == 24);
static_assert(offsetof(SMMutex, lockType) == 32);

constexpr mode_t kOwnerOnly = 0600;

// Who may only read the file takes a shared lock: it excludes those that may write, but not others like it.
bool OpenFile(SMMutex *mutex, bool create, mode_t mode)
{
    const char *path = mutex->head.name;
    const bool existed = access(path, F_OK) == 0;
    const int flags = O_CLOEXEC | (create ? O_CREAT : 0);
    int descriptor = open(path, O_WRONLY | flags, mode);
    if (descriptor != -1) {
        if (!existed)
            (void)chmod(path, mode); // so that the process's umask has no say
        mutex->lockType = F_WRLCK;
    } else {
        descriptor = open(path, O_RDONLY | flags, mode);
        if (descriptor == -1)
            return false;
        mutex->lockType = F_RDLCK;
    }
    mutex->descriptor.file = descriptor;
    return true;
}

// Here the time-out is signed, where the local lock takes it for unsigned: from 0x80000000 on the first busy answer
// ends the wait.
uint32_t LockFile(SMMutex *mutex, int32_t timeoutMs)
{
    const auto descriptor = static_cast<int>(mutex->descriptor.file);
    const auto type = static_cast<short>(mutex->lockType);
    const int command = timeoutMs == -1 ? F_SETLKW : F_SETLK;
    timespec start = {};
    bool busy = false;
    while (!SetWholeFileLock(descriptor, type, command)) {
        switch (errno) {
        case EINTR:
        case EDEADLK:
            continue;
        case EAGAIN:
        case EACCES:
            if (!busy)
                start = MonotonicNow(); // a lock that is free needs no clock
            busy = true;
            if (MillisecondsSince(start) >= timeoutMs)
                return SM_STATUS_TIMEOUT;
            (void)usleep(kLockPollMicroseconds);
            continue;
        case EBADF:
            // Somebody closed it. What is opened serves later calls; this one goes on with what it began with, until
            // no more can be opened.
            if (!OpenFile(mutex, false, kOwnerOnly))
                return SM_STATUS_FAILED;
            continue;
        default:
            return SM_STATUS_FAILED;
        }
    }
    return SM_STATUS_OK;
}

// The named forms stay out of their callers, where their registers would have to be saved for the anonymous form too,
// the common case.

// The two waits are not shared out: the call may last twice the time-out.
[[gnu::noinline]] uint32_t LockNamed(SMMutex *mutex, uint32_t timeoutMs)
{
    if (const uint32_t status = LocalMutexLock(mutex->localMutex, timeoutMs); status != SM_STATUS_OK)
        return status;
    const uint32_t status = LockFile(mutex, static_cast<int32_t>(timeoutMs));
    if (status != SM_STATUS_OK)
        (void)pthread_mutex_unlock(mutex->localMutex);
    return status;
}

[[gnu::noinline]] void UnlockNamed(const SMMutex *mutex)
{
    UnlockWholeFile(static_cast<int>(mutex->descriptor.file));
    (void)pthread_mutex_unlock(mutex->localMutex);
}

SMMutex *NamedMutex(const char *name, bool create, mode_t mode)
{
    HeapPtr<SMMutex> record = NameRecordAlloc<SMMutex>(name, kKindMutex);
    if (!record)
        return nullptr;
    LocalMutexPtr local = LocalMutexAlloc();
    if (!local || !OpenFile(record.get(), create, mode))
        return nullptr;
    record->localMutex = local.release();
    return record.release();
}

SMMutex *AnonymousMutex()
{
    HeapPtr<SMMutex> record = NameRecordAlloc<SMMutex>(nullptr, kKindMutex);
    if (!record)
        return nullptr;
    LocalMutexPtr mutex = LocalMutexAlloc();
    if (!mutex)
        return nullptr;
    record->descriptor.anonymous = mutex.release();
    record->localMutex = nullptr;
    record->lockType = 0;
    return record.release();
}

} // namespace

SMMutex *SMMutexCreate(const char *name)
{
    return SMMutexCreate_s(name, SM_ACCESS_GROUP);
}

SMMutex *SMMutexCreate_s(const char *name, uint32_t accessMask)
{
    return name != nullptr ? NamedMutex(name, true, SMIPCAccessMaskToMode(accessMask)) : AnonymousMutex();
}

SMMutex *SMMutexOpen(const char *name)
{
    return name != nullptr ? NamedMutex(name, false, kOwnerOnly) : nullptr;
}

uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs)
{
    if (const uint32_t status = HandleStatus(handle, kKindMutex); status != SM_STATUS_OK)
        return status;
    return IsNamed(handle) ? LockNamed(handle, timeoutMs) : LocalMutexLock(handle->descriptor.anonymous, timeoutMs);
}

uint32_t SMMutexUnLock(SMMutex *handle)
{
    if (const uint32_t status = HandleStatus(handle, kKindMutex); status != SM_STATUS_OK)
        return status;
    if (IsNamed(handle))
        UnlockNamed(handle);
    else
        (void)pthread_mutex_unlock(handle->descriptor.anonymous); // has no owner to tell, and nothing to fail
    return SM_STATUS_OK;
}

void SMMutexDestroy(SMMutex *handle)
{
    if (HandleStatus(handle, kKindMutex) != SM_STATUS_OK)
        return;
    if (IsNamed(handle)) {
        if (handle->descriptor.file != -1)
            (void)close(static_cast<int>(handle->descriptor.file));
        LocalMutexPtr(handle->localMutex).reset();
    } else {
        LocalMutexPtr(handle->descriptor.anonymous).reset();
    }
    std::free(handle);
}

} // namespace qzvest
