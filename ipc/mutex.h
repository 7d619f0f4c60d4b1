// The library's own lock: SMMutex, and the process-local lock it is made of.
#ifndef IPC_MUTEX_H
#define IPC_MUTEX_H

#include <pthread.h>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "frame/heap.h"

namespace qzvest {

SMMutex *SMMutexCreate(const char *name);
SMMutex *SMMutexCreate_s(const char *name, uint32_t accessMask);
uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs);
uint32_t SMMutexUnLock(SMMutex *handle);
void SMMutexDestroy(SMMutex *handle);

// The process-local lock: a mutex of the system on the heap, not recursive, without a record of its owner.

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

} // namespace qzvest

#endif
