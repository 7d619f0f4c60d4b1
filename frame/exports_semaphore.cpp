#include <qzvest/semaphore.h>

#include "ipc/semaphore.h"

extern "C" {

SMSemaphore *SMSemaphoreCreate(const char *name, uint32_t initialCount)
{
    return qzvest::SMSemaphoreCreate(name, initialCount);
}

SMSemaphore *SMSemaphoreCreate_s(const char *name, uint32_t initialCount, uint32_t accessMask)
{
    return qzvest::SMSemaphoreCreate_s(name, initialCount, accessMask);
}

SMSemaphore *SMSemaphoreOpen(const char *name)
{
    return qzvest::SMSemaphoreOpen(name);
}

uint32_t SMSemaphoreAcquireWait(SMSemaphore *handle, uint32_t timeoutMs)
{
    return qzvest::SMSemaphoreAcquireWait(handle, timeoutMs);
}

uint32_t SMSemaphoreRelease(SMSemaphore *handle, int32_t count, int32_t *previous)
{
    return qzvest::SMSemaphoreRelease(handle, count, previous);
}

void SMSemaphoreDestroy(SMSemaphore *handle)
{
    qzvest::SMSemaphoreDestroy(handle);
}

} // extern "C"
