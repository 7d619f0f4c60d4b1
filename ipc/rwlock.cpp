// Without a name, a lock of the system. With one, a lock made of a mutex, a semaphore and four counters, which prefers
// writers. The counters are this process's own: what processes share is the short section under the mutex, and
// wake-ups.
//
// The mutex and both semaphores are named by the lock's object name, and so the two semaphores are one: a wake-up may
// reach a waiter of the other role, which looks at its condition and waits again.

#include "ipc/rwlock.h"

#include <pthread.h>
#include <sched.h>

#include <cerrno>
#include <cstdlib>

#include "frame/module.h"
#include "ipc/mutex.h"
#include "ipc/names.h"
#include "ipc/semaphore.h"
#include "os/clock.h"

struct SMRWL {
    qzvest::IPCNameRecord head;
    SMMutex *mutex;              // guards the counters; NULL from the beginning of the end
    SMSemaphore *readSemaphore;  // on which readers wait
    SMSemaphore *writeSemaphore; // on which writers wait
    pthread_rwlock_t *rwlock;    // of the anonymous form
    int32_t activeReaders;
    int32_t waitingWriters;
    int32_t waitingReaders;
    uint16_t writerActive; // 1 while a writer holds the lock
};

namespace qzvest {
namespace {

constexpr int32_t kMostWaiters = 0x7FFFFFFF;

// How one of the two roles locks: the system's calls of the anonymous form; of the named one where it is
// counted while it waits, on what it waits, for what, and what it changes when it gets the lock and when it leaves it.
struct Role {
    int (*plain)(pthread_rwlock_t *);
    int (*timed)(pthread_rwlock_t *, const timespec *);
    int32_t SMRWL::*waiting;
    SMSemaphore *SMRWL::*semaphore;
    bool (*mustWait)(const SMRWL *);
    void (*take)(SMRWL *);
    void (*leave)(SMRWL *);
};

constexpr Role kReader = {pthread_rwlock_rdlock,
                          pthread_rwlock_timedrdlock,
                          &SMRWL::waitingReaders,
                          &SMRWL::readSemaphore,
                          [](const SMRWL *lock) { return lock->writerActive == 1 || lock->waitingWriters >= 1; },
                          [](SMRWL *lock) { ++lock->activeReaders; },
                          [](SMRWL *lock) { --lock->activeReaders; }};
constexpr Role kWriter = {pthread_rwlock_wrlock,
                          pthread_rwlock_timedwrlock,
                          &SMRWL::waitingWriters,
                          &SMRWL::writeSemaphore,
                          [](const SMRWL *lock) { return lock->activeReaders >= 1 || lock->writerActive == 1; },
                          [](SMRWL *lock) { lock->writerActive = 1; },
                          [](SMRWL *lock) { lock->writerActive = 0; }};

// ---- Anonymous ----

// The system's deadline is one of the wall clock. A clock that jumps forward does not shorten the wait, since what is
// left is told by the monotonic one.
uint32_t GetAnonymous(pthread_rwlock_t *lock, const Role &role, int32_t timeoutMs)
{
    if (timeoutMs == -1)
        return role.plain(lock) == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
    for (;;) {
        timespec wall;
        (void)clock_gettime(CLOCK_REALTIME, &wall);
        const timespec deadline = DeadlineAfter(wall, timeoutMs);
        const timespec start = MonotonicNow();
        const int result = role.timed(lock, &deadline);
        if (result == 0)
            return SM_STATUS_OK;
        if (result != ETIMEDOUT)
            return SM_STATUS_FAILED;
        const int64_t elapsed = MillisecondsSince(start);
        if (elapsed >= timeoutMs)
            return SM_STATUS_TIMEOUT;
        timeoutMs -= static_cast<int32_t>(elapsed);
    }
}

bool MakeAnonymous(SMRWL *lock)
{
    HeapPtr<pthread_rwlock_t> system = HeapRoom<pthread_rwlock_t>(1);
    if (!system || pthread_rwlock_init(system.get(), nullptr) != 0)
        return false;
    lock->rwlock = system.release();
    return true;
}

// ---- Named ----

bool MakeNamed(SMRWL *lock)
{
    const char *name = lock->head.name;
    lock->mutex = SMMutexCreate_s(name, 0);
    if (lock->mutex == nullptr)
        return false;
    lock->readSemaphore = SMSemaphoreCreate_s(name, 0, 0);
    lock->writeSemaphore = lock->readSemaphore != nullptr ? SMSemaphoreCreate_s(name, 0, 0) : nullptr;
    if (lock->writeSemaphore != nullptr)
        return true;
    SMSemaphoreDestroy(lock->readSemaphore);
    SMMutexDestroy(lock->mutex);
    return false;
}

// The mutex that is locked now, NULL if none. It is the one to unlock: the lock's own may be gone by then, and the
// thread that destroys the lock would wait for ever.
SMMutex *LockCounters(const SMRWL *lock)
{
    SMMutex *const mutex = __atomic_load_n(&lock->mutex, __ATOMIC_RELAXED);
    return SMMutexLock(mutex, SM_WAIT_FOREVER) == SM_STATUS_OK ? mutex : nullptr;
}

// The time-out is for each wait afresh.
uint32_t GetNamed(SMRWL *lock, const Role &role, uint32_t timeoutMs)
{
    SMMutex *mutex = LockCounters(lock);
    if (mutex == nullptr)
        return SM_STATUS_FAILED;
    uint32_t status = lock->*role.waiting != kMostWaiters ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
    if (status == SM_STATUS_OK) {
        ++(lock->*role.waiting);
        while (status == SM_STATUS_OK && role.mustWait(lock)) {
            (void)SMMutexUnLock(mutex);
            status = SMSemaphoreAcquireWait(lock->*role.semaphore, timeoutMs);
            mutex = LockCounters(lock);
            if (mutex == nullptr) // the lock is being destroyed
                return SM_STATUS_FAILED;
            if (SMModuleIsDetaching() == 1)
                return SM_STATUS_FAILED; // with all as it is: nobody will need it
        }
        --(lock->*role.waiting);
    }
    if (status == SM_STATUS_OK)
        role.take(lock);
    (void)SMMutexUnLock(mutex);
    return status;
}

// Wakes who comes next. The two units too many only cause a look at the condition.
void ReleaseNamed(SMRWL *lock, const Role &role)
{
    SMMutex *const mutex = LockCounters(lock);
    if (mutex == nullptr)
        return;
    role.leave(lock);
    const int32_t writers = lock->waitingWriters;
    const int32_t readers = lock->waitingReaders;
    (void)SMMutexUnLock(mutex);
    if (writers > 0)
        (void)SMSemaphoreRelease(lock->writeSemaphore, 1, nullptr);
    else if (readers > 0)
        (void)SMSemaphoreRelease(lock->readSemaphore, readers + 2, nullptr);
}

// Sends all waiters of a role off, and gives them a moment to leave.
void Dismiss(const SMRWL *lock, const Role &role, SMMutex *mutex, bool &held)
{
    if (lock->*role.waiting <= 0)
        return;
    if (held)
        (void)SMMutexUnLock(mutex);
    (void)SMSemaphoreRelease(lock->*role.semaphore, lock->*role.waiting + 2, nullptr);
    (void)sched_yield();
    held = SMMutexLock(mutex, SM_WAIT_FOREVER) == SM_STATUS_OK;
}

void DestroyNamed(SMRWL *lock)
{
    SMMutex *const mutex = lock->mutex;
    bool held = SMMutexLock(mutex, SM_WAIT_FOREVER) == SM_STATUS_OK;
    __atomic_store_n(&lock->mutex, nullptr, __ATOMIC_RELAXED);
    Dismiss(lock, kWriter, mutex, held);
    Dismiss(lock, kReader, mutex, held);
    SMSemaphoreDestroy(lock->readSemaphore);
    SMSemaphoreDestroy(lock->writeSemaphore);
    lock->readSemaphore = nullptr;
    lock->writeSemaphore = nullptr;
    if (held)
        (void)SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);
    (void)sched_yield();
}

uint32_t Get(SMRWL *handle, const Role &role, uint32_t timeoutMs)
{
    if (const uint32_t status = HandleStatus(handle, kKindReadWriteLock); status != SM_STATUS_OK)
        return status;
    return IsNamed(handle) ? GetNamed(handle, role, timeoutMs)
                           : GetAnonymous(handle->rwlock, role, static_cast<int32_t>(timeoutMs));
}

void Release(SMRWL *handle, const Role &role)
{
    if (HandleStatus(handle, kKindReadWriteLock) != SM_STATUS_OK)
        return;
    if (IsNamed(handle))
        ReleaseNamed(handle, role);
    else
        (void)pthread_rwlock_unlock(handle->rwlock);
}

} // namespace

SMRWL *SMRWLCreate(const char *name)
{
    HeapPtr<SMRWL> lock = NameRecordAlloc<SMRWL>(name, kKindReadWriteLock);
    if (!lock)
        return nullptr;
    *lock = {lock->head, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, 0};
    const bool made = IsNamed(lock.get()) ? MakeNamed(lock.get()) : MakeAnonymous(lock.get());
    return made ? lock.release() : nullptr;
}

void SMRWLDestroy(SMRWL *handle)
{
    if (HandleStatus(handle, kKindReadWriteLock) != SM_STATUS_OK)
        return;
    if (IsNamed(handle)) {
        DestroyNamed(handle);
    } else {
        (void)pthread_rwlock_destroy(handle->rwlock);
        std::free(handle->rwlock);
    }
    std::free(handle);
}

uint32_t SMRWLReadLockGet(SMRWL *handle, uint32_t timeoutMs)
{
    return Get(handle, kReader, timeoutMs);
}

uint32_t SMRWLWriteLockGet(SMRWL *handle, uint32_t timeoutMs)
{
    return Get(handle, kWriter, timeoutMs);
}

void SMRWLReadLockRelease(SMRWL *handle)
{
    Release(handle, kReader);
}

void SMRWLWriteLockRelease(SMRWL *handle)
{
    Release(handle, kWriter);
}

} // namespace qzvest
