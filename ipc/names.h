// Object names: how a caller's free text becomes the same name in every process of a machine.
#ifndef IPC_NAMES_H
#define IPC_NAMES_H

#include <sys/types.h>

#include "ipc/namerecord.h"

namespace qzvest {

constexpr uint32_t kNameDigestSize = 33; // 32 hexadecimal digits and the terminator

uint32_t SMNameDigest(const char *name, char *buffer, uint32_t *sizeInOut);

// The mode bits of an access mask of the creators.
mode_t SMIPCAccessMaskToMode(uint32_t accessMask);

// A new record of recordSize bytes, of which the head is filled in and the rest is not, or NULL. Its object name lies
// behind it in the same block; a NULL name makes an anonymous object, which has none.
IPCNameRecord *SMIPCNameRecordAlloc(const char *name, size_t recordSize, uint32_t kind);

// The same for a record type, which has the head as its first member `head`.
template <typename Record>
HeapPtr<Record> NameRecordAlloc(const char *name, HandleKind kind)
{
    static_assert(offsetof(Record, head) == 0);
    return HeapPtr<Record>(reinterpret_cast<Record *>(SMIPCNameRecordAlloc(name, sizeof(Record), kind)));
}

} // namespace qzvest

#endif
