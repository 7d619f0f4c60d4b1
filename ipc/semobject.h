// What semaphores and events count on: a System V set when they have a name, a process-local semaphore when not.
#ifndef IPC_SEMOBJECT_H
#define IPC_SEMOBJECT_H

#include "ipc/namerecord.h"

namespace qzvest {

struct SMLocalSem;

// The head of a semaphore's and of an event's record.
struct SemObjectRecord {
    IPCNameRecord head;
    union {
        int64_t set; // of a named object; 0 for none
        SMLocalSem *local;
    } object;
    uint16_t owner; // 1 from a creator, 0 from an opener
};

// Makes or joins the object of a record whose head is filled in, and makes the record an owner. False if it cannot be
// had.
bool SemObjectCreate(SemObjectRecord &record, int32_t semaphoreCount, uint32_t initialCount, uint32_t accessMask);

// Finds the set that a name has. False if there is none.
bool SemObjectOpen(SemObjectRecord &record);

uint32_t SemObjectWait(const SemObjectRecord &record, uint32_t timeoutMs);
uint32_t SemObjectPost(const SemObjectRecord &record, int32_t count);

// Ends the object, if the record owns it, and frees the record.
void SemObjectDestroy(SemObjectRecord *record);

} // namespace qzvest

#endif
