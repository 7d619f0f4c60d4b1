#include <qzvest/mutex.h>

#include "ipc/mutex.h"

extern "C" {

SMMutex *SMMutexCreate(const char *name)
{
    return qzvest::SMMutexCreate(name);
}

SMMutex *SMMutexCreate_s(const char *name, uint32_t accessMask)
{
    return qzvest::SMMutexCreate_s(name, accessMask);
}

SMMutex *SMMutexOpen(const char *name)
{
    return qzvest::SMMutexOpen(name);
}

uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs)
{
    return qzvest::SMMutexLock(handle, timeoutMs);
}

uint32_t SMMutexUnLock(SMMutex *handle)
{
    return qzvest::SMMutexUnLock(handle);
}

void SMMutexDestroy(SMMutex *handle)
{
    qzvest::SMMutexDestroy(handle);
}

} // extern "C"
