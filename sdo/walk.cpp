// Reading a block in document order, by callbacks.

#include "sdo/entry.h"
#include "sdo/flat.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

uint32_t WalkElements(const SMSDOBinaryArray *array, uint32_t count, const SDOWalkCallbacks &callbacks, uint64_t cookie,
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

// What lasts from one entry of a block to the next.
struct EntryState {
    uint64_t childCookie;  // not cleared in between: who uses cookies sets it each time
    uint32_t lastEntryEnd; // what the last entryEnd gave
};

// A status other than SM_STATUS_OK ends the walk.
uint32_t WalkEntry(const uint8_t *descriptor, const SDOWalkCallbacks &callbacks, int16_t recurse, EntryState *state)
{
    const auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
    const FlatValue value = ValueOf(descriptor);
    const uint8_t kind = KindOf(entry.type);
    const uint8_t bits6And7 = entry.type >> 6;
    const uint8_t bit5 = (entry.type >> 5) & 1;
    const uint8_t arrayFlag = (entry.type & SM_SDO_ARRAY) != 0 ? 1 : 0;
    uint32_t status = callbacks.entry(callbacks.context, &state->childCookie, entry.id, bits6And7, bit5, arrayFlag,
                                      kind, value.size, value.bytes);
    if (status != SM_STATUS_OK)
        return status;
    if (kind == SM_SDO_KIND_FLAT && recurse == 1) {
        status = SMSDOBinaryWalk(value.bytes, callbacks, state->childCookie, SM_SDO_NO_INDEX, recurse, true);
        if (status != SM_STATUS_OK)
            return status;
    }
    if (callbacks.entryEnd != nullptr)
        state->lastEntryEnd = callbacks.entryEnd(callbacks.context, state->childCookie);
    return SM_STATUS_OK;
}

uint32_t WalkEntries(const SMSDOBinary *object, uint32_t count, const SDOWalkCallbacks &callbacks, int16_t recurse,
                     uint32_t *lastEntryEnd)
{
    EntryState state{0, SM_STATUS_OK};
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t status = WalkEntry(DescriptorAt(object, i), callbacks, recurse, &state);
        if (status != SM_STATUS_OK)
            return status;
    }
    *lastEntryEnd = state.lastEntryEnd;
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

    uint32_t lastEntryEnd = SM_STATUS_OK;
    if (visitChildren) {
        status = isArray != 0 ? WalkElements(binary, header.count, callbacks, cookie, recurse)
                              : WalkEntries(binary, header.count, callbacks, recurse, &lastEntryEnd);
        if (status != SM_STATUS_OK)
            return status;
    }
    return callbacks.objectEnd != nullptr ? callbacks.objectEnd(callbacks.context, cookie, isArray) : lastEntryEnd;
}

} // namespace qzvest
