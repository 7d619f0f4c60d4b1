#include "ipc/localsem.h"

#include <pthread.h>

#include <cerrno>

#include <qzvest/status.h>

#include "frame/heap.h"
#include "ipc/localmutex.h"
#include "os/clock.h"

namespace qzvest {

struct SMLocalSem {
    pthread_mutex_t mutex;
    pthread_cond_t condition; // on the monotonic clock
    int32_t count;
};

namespace {

bool InitCondition(pthread_cond_t *condition)
{
    pthread_condattr_t attributes;
    if (pthread_condattr_init(&attributes) != 0)
        return false;
    const bool made =
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC) == 0 && pthread_cond_init(condition, &attributes) == 0;
    (void)pthread_condattr_destroy(&attributes);
    return made;
}

// Wraps: a count that nobody takes from has no ceiling.
int32_t Sum(int32_t first, int32_t second)
{
    return static_cast<int32_t>(static_cast<uint32_t>(first) + static_cast<uint32_t>(second));
}

} // namespace

SMLocalSem *LocalSemCreate(int32_t count)
{
    HeapPtr<SMLocalSem> semaphore = HeapRoom<SMLocalSem>(1);
    if (!semaphore || pthread_mutex_init(&semaphore->mutex, nullptr) != 0)
        return nullptr;
    if (!InitCondition(&semaphore->condition)) {
        (void)pthread_mutex_destroy(&semaphore->mutex);
        return nullptr;
    }
    semaphore->count = count;
    return semaphore.release();
}

void LocalSemDestroy(SMLocalSem *semaphore)
{
    if (semaphore == nullptr)
        return;
    (void)pthread_cond_destroy(&semaphore->condition);
    (void)pthread_mutex_destroy(&semaphore->mutex);
    std::free(semaphore);
}

uint32_t LocalSemWait(SMLocalSem *semaphore, int32_t timeoutMs)
{
    if (semaphore == nullptr)
        return SM_STATUS_FAILED;
    const LocalMutexGuard guard(&semaphore->mutex);
    const bool timed = timeoutMs != -1 && semaphore->count < 1;
    const timespec deadline = timed ? DeadlineAfter(MonotonicNow(), timeoutMs) : timespec{};
    int result = 0;
    while (semaphore->count < 1 && result == 0)
        result = timed ? pthread_cond_timedwait(&semaphore->condition, &semaphore->mutex, &deadline)
                       : pthread_cond_wait(&semaphore->condition, &semaphore->mutex);
    if (result != 0 && result != ETIMEDOUT)
        return SM_STATUS_FAILED;
    if (semaphore->count < 1)
        return SM_STATUS_TIMEOUT;
    --semaphore->count; // also when a release came at the very end of the time
    return SM_STATUS_OK;
}

uint32_t LocalSemPost(SMLocalSem *semaphore, int32_t count)
{
    if (semaphore == nullptr)
        return SM_STATUS_FAILED;
    {
        const LocalMutexGuard guard(&semaphore->mutex);
        semaphore->count = Sum(semaphore->count, count);
    }
    (void)pthread_cond_broadcast(&semaphore->condition);
    return SM_STATUS_OK;
}

uint32_t LocalSemGet(SMLocalSem *semaphore, int32_t *count)
{
    if (semaphore == nullptr)
        return SM_STATUS_FAILED;
    const LocalMutexGuard guard(&semaphore->mutex);
    *count = semaphore->count;
    return SM_STATUS_OK;
}

uint32_t LocalSemSet(SMLocalSem *semaphore, int32_t count)
{
    if (semaphore == nullptr)
        return SM_STATUS_FAILED;
    const LocalMutexGuard guard(&semaphore->mutex);
    semaphore->count = count;
    return SM_STATUS_OK;
}

} // namespace qzvest
