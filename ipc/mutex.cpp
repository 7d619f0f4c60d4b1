#include "ipc/mutex.h"

#include <unistd.h>

#include <cstddef>

#include "ipc/namerecord.h"
#include "os/clock.h"

struct SMMutex {
    qzvest::IPCNameRecord head;
    union {
        pthread_mutex_t *anonymous; // the lock of an anonymous mutex
        int64_t file;               // a named mutex has its descriptor here
    } descriptor;
    pthread_mutex_t *localMutex; // NULL in an anonymous mutex
    uint16_t lockType;           // of a named mutex
};

namespace qzvest {
namespace {

static_assert(offsetof(SMMutex, descriptor) == 16 && offsetof(SMMutex, localMutex) == 24);
static_assert(offsetof(SMMutex, lockType) == 32);

constexpr useconds_t kPollMicroseconds = 1000;

// A timed wait polls: there is no waking at the very moment of release, and none is promised. It stays out of its
// caller, where its registers would have to be saved for the endless wait too, the common case.
[[gnu::noinline]] uint32_t PollLocalMutex(pthread_mutex_t *mutex, uint32_t timeoutMs)
{
    if (pthread_mutex_trylock(mutex) == 0)
        return SM_STATUS_OK;
    const timespec start = MonotonicNow();
    while (MillisecondsSince(start) < timeoutMs) {
        (void)usleep(kPollMicroseconds); // woken early, it only polls sooner
        if (pthread_mutex_trylock(mutex) == 0)
            return SM_STATUS_OK;
    }
    return SM_STATUS_TIMEOUT;
}

} // namespace

LocalMutexPtr LocalMutexAlloc()
{
    HeapPtr<pthread_mutex_t> mutex = HeapRoom<pthread_mutex_t>(1);
    if (!mutex || pthread_mutex_init(mutex.get(), nullptr) != 0)
        return nullptr;
    return LocalMutexPtr(mutex.release());
}

uint32_t LocalMutexLock(pthread_mutex_t *mutex, uint32_t timeoutMs)
{
    if (mutex == nullptr)
        return SM_STATUS_FAILED;
    if (timeoutMs != SM_WAIT_FOREVER)
        return PollLocalMutex(mutex, timeoutMs);
    return pthread_mutex_lock(mutex) == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
}

SMMutex *SMMutexCreate(const char *name)
{
    constexpr uint32_t kEveryoneOfTheGroup = 0xFFFFFFFFu;
    return SMMutexCreate_s(name, kEveryoneOfTheGroup);
}

SMMutex *SMMutexCreate_s(const char *name, uint32_t /*accessMask: a file's, and an anonymous mutex has none*/)
{
    if (name != nullptr)
        return nullptr; // objects that other processes can name are not there yet
    HeapPtr<SMMutex> record = AnonymousRecordAlloc<SMMutex>(kKindMutex);
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

uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs)
{
    if (const uint32_t status = HandleStatus(handle, kKindMutex); status != SM_STATUS_OK)
        return status;
    return LocalMutexLock(handle->descriptor.anonymous, timeoutMs);
}

uint32_t SMMutexUnLock(SMMutex *handle)
{
    if (const uint32_t status = HandleStatus(handle, kKindMutex); status != SM_STATUS_OK)
        return status;
    (void)pthread_mutex_unlock(handle->descriptor.anonymous); // has no owner to tell, and nothing to fail
    return SM_STATUS_OK;
}

void SMMutexDestroy(SMMutex *handle)
{
    if (HandleStatus(handle, kKindMutex) != SM_STATUS_OK)
        return;
    LocalMutexPtr(handle->descriptor.anonymous).reset();
    std::free(handle);
}

} // namespace qzvest
