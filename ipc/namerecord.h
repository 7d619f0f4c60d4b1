// What every handle of a lock or shared object begins with.
#ifndef IPC_NAMERECORD_H
#define IPC_NAMERECORD_H

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "frame/heap.h"

namespace qzvest {

// Stays the same for a handle's whole life; by it a handle of another kind is told and refused.
enum HandleKind : uint32_t {
    kKindLibrary = 0,
    kKindMutex = 1,
    kKindSemaphore = 2,
    kKindSharedMemory = 3,
    kKindEvent = 4,
    kKindReadWriteLock = 5,
    kKindFileLock = 6
};

struct IPCNameRecord {
    uint32_t kind;
    char *name; // object name, behind the record in the same heap block; NULL for an anonymous object
};

// A new record of recordSize bytes, of which the head is filled in and the rest is not, or NULL.
//   name  the caller's name for the object; NULL makes an anonymous one, and any other gives NULL
IPCNameRecord *SMIPCNameRecordAlloc(const char *name, size_t recordSize, uint32_t kind);

// The same for a record type, which has the head as its first member `head`.
template <typename Record>
HeapPtr<Record> NameRecordAlloc(const char *name, HandleKind kind)
{
    static_assert(offsetof(Record, head) == 0);
    return HeapPtr<Record>(reinterpret_cast<Record *>(SMIPCNameRecordAlloc(name, sizeof(Record), kind)));
}

// What every call with a handle tests first: SM_STATUS_OK, SM_STATUS_INVALID_PARAMETER for NULL, or
// SM_STATUS_BAD_FORMAT for a handle of another kind.
template <typename Record>
uint32_t HandleStatus(const Record *handle, HandleKind kind)
{
    if (handle == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return handle->head.kind == kind ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT;
}

} // namespace qzvest

#endif
