#include "sdo/entry.h"

#include <cstring>

namespace qzvest {

uint64_t SMSDOEntryDataSize(uint8_t type, const void *data, uint32_t size)
{
    if (KindOf(type) != SM_SDO_KIND_OBJECT)
        return size;
    if ((type & SM_SDO_ARRAY) == 0)
        return NestedAt(data, 0)->binarySize;
    uint64_t total = SM_SDO_HEADER_SIZE;
    for (uint32_t i = 0; i < size / kPointerSize; ++i)
        total += NestedAt(data, i)->binarySize;
    return total;
}

uint64_t SMSDOEntryBinarySize(uint8_t type, const void *data, uint32_t size)
{
    const uint64_t length = SMSDOEntryDataSize(type, data, size);
    return kDescriptorSize + (length > kInlineLimit ? length : 0);
}

void SMSDOEntryFree(SMSDOEntry *entry)
{
    if (KindOf(entry->type) != SM_SDO_KIND_OBJECT)
        return;
    for (uint32_t i = 0; i < entry->size / kPointerSize; ++i)
        SMSDOConfigFree(NestedAt(entry->data(), i));
    std::memset(entry->data(), 0, entry->size);
}

} // namespace qzvest
