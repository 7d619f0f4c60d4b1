#include "ipc/localmutex.h"

#include "os/clock.h"

namespace qzvest {
namespace {

// A timed wait polls: there is no waking at the very moment of release, and none is promised. It stays out of its
// caller, where its registers would have to be saved for the endless wait too, the common case.
[[gnu::noinline]] uint32_t PollLocalMutex(pthread_mutex_t *mutex, uint32_t timeoutMs)
{
    if (pthread_mutex_trylock(mutex) == 0)
        return SM_STATUS_OK;
    const timespec start = MonotonicNow();
    while (MillisecondsSince(start) < timeoutMs) {
        (void)usleep(kLockPollMicroseconds); // woken early, it only polls sooner
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

} // namespace qzvest
