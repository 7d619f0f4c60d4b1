#include "sdo/entry.h"

#include <cstring>

namespace qzvest {

uint64_t NestedDataSize(uint8_t type, const void *data, uint32_t size)
{
    if ((type & SM_SDO_ARRAY) == 0)
        return NestedAt(data, 0)->binarySize;
    uint64_t total = SM_SDO_HEADER_SIZE;
    for (uint32_t i = 0; i < size / kPointerSize; ++i)
        total += NestedAt(data, i)->binarySize;
    return total;
}

void FreeNested(SMSDOEntry *entry)
{
    for (uint32_t i = 0; i < entry->size / kPointerSize; ++i)
        SMSDOConfigFree(NestedAt(entry->Data(), i));
    std::memset(entry->Data(), 0, entry->size);
}

} // namespace qzvest
