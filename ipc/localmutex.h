// The process-local lock: a mutex of the system on the heap, not recursive, without a record of its owner.
#ifndef IPC_LOCALMUTEX_H
#define IPC_LOCALMUTEX_H

#include <pthread.h>

#include <memory>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "frame/heap.h"

namespace qzvest {

struct LocalMutexRelease {
    void operator()(pthread_mutex_t *mutex) const
    {
        (void)pthread_mutex_destroy(mutex); // a held one is not waited for
        std::free(mutex);
    }
};

using LocalMutexPtr = std::unique_ptr<pthread_mutex_t, LocalMutexRelease>;

LocalMutexPtr LocalMutexAlloc();

// Gives SM_STATUS_OK, SM_STATUS_TIMEOUT, SM_STATUS_FAILED (also for NULL). A time-out of 0 tries once.
uint32_t LocalMutexLock(pthread_mutex_t *mutex, uint32_t timeoutMs);

// Held from here to the end of the scope.
class LocalMutexGuard {
public:
    explicit LocalMutexGuard(pthread_mutex_t *mutex) : mutex_(mutex)
    {
        (void)pthread_mutex_lock(mutex_);
    }
    ~LocalMutexGuard()
    {
        (void)pthread_mutex_unlock(mutex_);
    }
    LocalMutexGuard(const LocalMutexGuard &) = delete;
    LocalMutexGuard &operator=(const LocalMutexGuard &) = delete;

private:
    pthread_mutex_t *mutex_;
};

} // namespace qzvest

#endif
