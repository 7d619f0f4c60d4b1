// The process-local semaphore: a count under a mutex and a condition variable.
#ifndef IPC_LOCALSEM_H
#define IPC_LOCALSEM_H

#include <cstdint>

namespace qzvest {

struct SMLocalSem;

// NULL when it cannot be had.
SMLocalSem *LocalSemCreate(int32_t count);
void LocalSemDestroy(SMLocalSem *semaphore);

// Each gives SM_STATUS_FAILED for NULL. A wait gives SM_STATUS_OK, SM_STATUS_TIMEOUT or SM_STATUS_FAILED; its time-out
// is signed, -1 waits without limit.
uint32_t LocalSemWait(SMLocalSem *semaphore, int32_t timeoutMs);
uint32_t LocalSemPost(SMLocalSem *semaphore, int32_t count);
uint32_t LocalSemGet(SMLocalSem *semaphore, int32_t *count);
uint32_t LocalSemSet(SMLocalSem *semaphore, int32_t count);

} // namespace qzvest

#endif
