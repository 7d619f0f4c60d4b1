// The library's own lock, SMMutex: without a name for the threads of a process, with one for all who know it.
#ifndef IPC_MUTEX_H
#define IPC_MUTEX_H

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "ipc/localmutex.h"

namespace qzvest {

SMMutex *SMMutexCreate(const char *name);
SMMutex *SMMutexCreate_s(const char *name, uint32_t accessMask);
SMMutex *SMMutexOpen(const char *name);
uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs);
uint32_t SMMutexUnLock(SMMutex *handle);
void SMMutexDestroy(SMMutex *handle);

// Held from here to the end of the scope.
class MutexGuard {
public:
    explicit MutexGuard(SMMutex *mutex) : mutex_(mutex)
    {
        (void)qzvest::SMMutexLock(mutex_, SM_WAIT_FOREVER); // not the export, which some includers see
    }
    ~MutexGuard()
    {
        (void)qzvest::SMMutexUnLock(mutex_);
    }
    MutexGuard(const MutexGuard &) = delete;
    MutexGuard &operator=(const MutexGuard &) = delete;

private:
    SMMutex *mutex_;
};

} // namespace qzvest

#endif
