#include "ipc/namerecord.h"

#include <cstddef>

namespace qzvest {

static_assert(offsetof(IPCNameRecord, kind) == 0 && offsetof(IPCNameRecord, name) == 8);

IPCNameRecord *SMIPCNameRecordAlloc(const char *name, size_t recordSize, uint32_t kind)
{
    if (name != nullptr)
        return nullptr; // objects that other processes can name are not there yet
    IPCNameRecord *record = static_cast<IPCNameRecord *>(std::malloc(recordSize));
    if (record != nullptr)
        *record = {kind, nullptr};
    return record;
}

} // namespace qzvest
