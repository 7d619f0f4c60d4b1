// System V semaphore sets: what named semaphores, events and the guards of shared memory are made of.
#ifndef IPC_SEMSET_H
#define IPC_SEMSET_H

#include <cstdint>

namespace qzvest {

// The set of a key, which is made with this value unless it is there; 0 for every failure. A key of 0 makes a private
// set, which is recorded, so that it can be removed when this process has died.
int32_t SMIPCSemSetCreate(uint32_t key, int32_t semaphoreCount, uint32_t initialValue, uint32_t accessMask);

// The set of a key that is there; 0 if there is none.
int32_t IPCSemSetOf(uint32_t key);

void SMIPCSemSetRemove(int32_t setId);

// Semaphores in the set; -1 if it cannot be asked.
int32_t IPCSemSetSize(int32_t setId);

// The count of semaphore 0; -1 if it cannot be asked. Setting it cannot be seen to fail.
int32_t IPCSemSetGet(int32_t setId);
void IPCSemSetPut(int32_t setId, int32_t count);

// Takes one from semaphore 0, and with undo gives it back when the process ends. SM_STATUS_OK, SM_STATUS_TIMEOUT,
// SM_STATUS_FAILED.
uint32_t SMIPCSemWait(int32_t setId, uint32_t timeoutMs, bool undo);

// Adds to semaphore 0, one by one. SM_STATUS_OK, or SM_STATUS_FAILED with what was added so far left added.
uint32_t SMIPCSemPost(int32_t setId, int32_t count);

// Removes the private sets whose makers are dead.
void SMIPCStaleSemCleanup();

} // namespace qzvest

#endif
