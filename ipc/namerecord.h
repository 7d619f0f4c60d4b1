// What every handle of a lock or shared object begins with.
#ifndef IPC_NAMERECORD_H
#define IPC_NAMERECORD_H

#include <cstddef>

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
static_assert(offsetof(IPCNameRecord, kind) == 0 && offsetof(IPCNameRecord, name) == 8);

// What every call with a handle tests first: SM_STATUS_OK, SM_STATUS_INVALID_PARAMETER for NULL, or
// SM_STATUS_BAD_FORMAT for a handle of another kind.
template <typename Record>
uint32_t HandleStatus(const Record *handle, HandleKind kind)
{
    if (handle == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return handle->head.kind == kind ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT;
}

template <typename Record>
bool IsNamed(const Record *handle)
{
    return handle->head.name != nullptr;
}

} // namespace qzvest

#endif
