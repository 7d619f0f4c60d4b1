// Counting semaphores.
#ifndef IPC_SEMAPHORE_H
#define IPC_SEMAPHORE_H

#include <qzvest/types.h>

namespace qzvest {

SMSemaphore *SMSemaphoreCreate(const char *name, uint32_t initialCount);
SMSemaphore *SMSemaphoreCreate_s(const char *name, uint32_t initialCount, uint32_t accessMask);
SMSemaphore *SMSemaphoreOpen(const char *name);
uint32_t SMSemaphoreAcquireWait(SMSemaphore *handle, uint32_t timeoutMs);
uint32_t SMSemaphoreRelease(SMSemaphore *handle, int32_t count, int32_t *previous);
void SMSemaphoreDestroy(SMSemaphore *handle);

} // namespace qzvest

#endif
