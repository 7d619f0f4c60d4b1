#include "sdo/entry.h"
#include "sdo/flat.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

uint32_t WalkElements(const SMSDOBinary *array, uint32_t count, const SDOWalkCallbacks &callbacks, uint64_t cookie,
                      int16_t recurse)
{
    const uint8_t *element = BytesOf(array) + sizeof(FlatHeader);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t status = SMSDOBinaryWalk(element, callbacks, cookie, i, recurse, recurse == 1);
        if (status != SM_STATUS_OK)
            return status;
        element += HeaderOf(element).size;
    }
    return SM_STATUS_OK;
}

// ends: what the last entryEnd gave. A status that ends the walk is returned.
uint32_t WalkEntry(const uint8_t *descriptor, const SDOWalkCallbacks &callbacks, int16_t recurse, uint32_t *ends)
{
    const auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
    const FlatValue value = ValueOf(descriptor);
    const uint8_t kind = KindOf(entry.type);
    uint64_t childCookie; // left to the callback: who uses cookies sets it
    uint32_t status = callbacks.entry(callbacks.context, &childCookie, entry.id, entry.type >> 6, (entry.type >> 5) & 1,
                                      (entry.type >> 4) & 1, kind, value.size, value.bytes);
    if (status != SM_STATUS_OK)
        return status;
    if (kind == SM_SDO_KIND_FLAT && recurse == 1) {
        status = SMSDOBinaryWalk(value.bytes, callbacks, childCookie, SM_SDO_NO_INDEX, recurse, true);
        if (status != SM_STATUS_OK)
            return status;
    }
    if (callbacks.entryEnd != nullptr)
        *ends = callbacks.entryEnd(callbacks.context, childCookie);
    return SM_STATUS_OK;
}

uint32_t WalkEntries(const SMSDOBinary *object, uint32_t count, const SDOWalkCallbacks &callbacks, int16_t recurse,
                     uint32_t *ends)
{
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t status = WalkEntry(DescriptorAt(object, i), callbacks, recurse, ends);
        if (status != SM_STATUS_OK)
            return status;
    }
    return SM_STATUS_OK;
}

} // namespace

uint32_t SMSDOBinaryWalk(const SMSDOBinary *binary, const SDOWalkCallbacks &callbacks, uint64_t cookie,
                         uint32_t arrayIndex, int16_t recurse, bool visitChildren)
{
    if (binary == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const FlatHeader header = HeaderOf(binary);
    const uint16_t isArray = header.magic == kArrayMagic ? 1 : 0;
    if (isArray == 0 && header.magic != kObjectMagic)
        return SM_STATUS_INVALID_PARAMETER;
    if (header.count == 0)
        return SM_STATUS_OK; // not even objectBegin and objectEnd
    uint32_t status = callbacks.objectBegin(callbacks.context, cookie, isArray, header.count, arrayIndex, binary);
    if (status != SM_STATUS_OK)
        return status;

    uint32_t ends = SM_STATUS_OK;
    if (visitChildren) {
        status = isArray != 0 ? WalkElements(binary, header.count, callbacks, cookie, recurse)
                              : WalkEntries(binary, header.count, callbacks, recurse, &ends);
        if (status != SM_STATUS_OK)
            return status;
    }
    return callbacks.objectEnd != nullptr ? callbacks.objectEnd(callbacks.context, cookie, isArray) : ends;
}

} // namespace qzvest
