// What goes into an object. Plain values and pointers to nested objects are stored as they are; a flat value
// is rebuilt first and goes in as nested objects.

#include <cstdlib>
#include <cstring>
#include <utility>

#include "sdo/entry.h"
#include "sdo/flat.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

struct Value {
    uint16_t id;
    uint8_t type;
    const void *data;
    uint32_t size;
};

bool IsFull(const SMSDOConfig *config)
{
    return config->count >= kCountLimit;
}

uint64_t ShareOf(const SMSDOEntry *entry)
{
    return SMSDOEntryBinarySize(entry->type, entry->Data(), entry->size);
}

HeapPtr<SMSDOEntry> MakeEntry(const Value &value)
{
    HeapPtr<SMSDOEntry> entry(static_cast<SMSDOEntry *>(std::malloc(sizeof(SMSDOEntry) + value.size)));
    if (entry) {
        entry->size = value.size;
        entry->id = value.id;
        entry->type = value.type;
        std::memcpy(entry->Data(), value.data, value.size);
    }
    return entry;
}

// The new entry takes the place of the old one in this node.
void Replace(SMSDOConfig *config, SMRedBlackTreeNode *node, HeapPtr<SMSDOEntry> entry, uint64_t share)
{
    const HeapPtr<SMSDOEntry> old(static_cast<SMSDOEntry *>(node->data));
    config->binarySize = static_cast<uint32_t>(config->binarySize + share - ShareOf(old.get()));
    // Old objects go only when new ones take their place: the same pointers given again go on living, and
    // under a plain value the caller keeps them. Callers count on both.
    const bool differs = old->size < entry->size || std::memcmp(old->Data(), entry->Data(), entry->size) != 0;
    if (KindOf(entry->type) == SM_SDO_KIND_OBJECT && differs)
        SMSDOEntryFree(old.get());
    node->data = entry.release();
}

// Objects are mostly filled in ascending order: behind the last entry there is nothing to search.
TreePlace PlaceFor(SMSDOConfig *config, uint16_t id)
{
    if (config->last == nullptr)
        config->last = TreeLast(config->root);
    SMRedBlackTreeNode *last = config->last;
    if (last != nullptr && static_cast<const SMSDOEntry *>(last->data)->id < id)
        return {last, &last->right};
    return EntryPlace(&config->root, id);
}

// Stores a value that is in its form for memory. On failure the config is as it was, and nested objects stay
// with whoever gave them.
uint32_t Store(SMSDOConfig *config, const Value &value, int16_t replace)
{
    // The whole new share is tested although an old value may be about to go, so close to the limit a
    // replacement fails that would fit. Callers count on it; not to be "repaired".
    const uint64_t share = SMSDOEntryBinarySize(value.type, value.data, value.size);
    if (config->binarySize + share > kFlatLimit)
        return SM_STATUS_LIMIT_REACHED;
    HeapPtr<SMSDOEntry> entry = MakeEntry(value);
    if (!entry)
        return SM_STATUS_NO_MEMORY;

    const TreePlace place = PlaceFor(config, value.id);
    if (*place.link != nullptr) {
        if (replace != 1)
            return SM_STATUS_ALREADY_EXISTS;
        Replace(config, *place.link, std::move(entry), share);
        return SM_STATUS_OK;
    }
    SMRedBlackTreeNode *node = TreeInsertAt(&config->root, place, entry.get());
    if (node == nullptr)
        return SM_STATUS_NO_MEMORY;
    (void)entry.release(); // the tree has it
    if (place.parent == config->last && (place.parent == nullptr || place.link == &place.parent->right))
        config->last = node;
    config->count += 1;
    config->binarySize += static_cast<uint32_t>(share);
    return SM_STATUS_OK;
}

uint32_t AddNested(SMSDOConfig *config, const Value &value, int16_t replace)
{
    SMSDOConfig *single = nullptr;
    Value stored = value;
    if ((value.type & SM_SDO_ARRAY) == 0) {
        if (value.size != kPointerSize)
            return SM_STATUS_INVALID_PARAMETER;
        // The argument is the object itself; what is stored is the pointer.
        single = static_cast<SMSDOConfig *>(const_cast<void *>(value.data));
        stored.data = &single;
    }
    for (uint32_t i = 0; i < stored.size / kPointerSize; ++i) {
        const SMSDOConfig *object = NestedAt(stored.data, i);
        if (object == nullptr || object == config)
            return SM_STATUS_INVALID_PARAMETER;
    }
    if (IsFull(config))
        return SM_STATUS_LIMIT_REACHED;
    return Store(config, stored, replace);
}

uint32_t AddFlatObject(SMSDOConfig *config, const Value &value, int16_t replace)
{
    ConfigPtr object(SMSDOBinaryToConfig(value.data));
    if (!object)
        return SM_STATUS_FAILED;
    SMSDOConfig *single = object.get();
    if (IsFull(config)) {
        (void)object.release(); // settled: on this one way, out of reach while bytes run out first, it is not freed
        return SM_STATUS_LIMIT_REACHED;
    }
    const uint8_t type = WithKind(value.type, SM_SDO_KIND_OBJECT);
    const uint32_t status = Store(config, {value.id, type, &single, kPointerSize}, replace);
    if (status == SM_STATUS_OK)
        (void)object.release(); // the config has it
    return status;
}

uint32_t AddFlatArray(SMSDOConfig *config, const Value &value, int16_t replace)
{
    uint32_t count = HeaderOf(value.data).count;
    // An array of no objects has a table too, so that NULL means lack of memory alone.
    const HeapPtr<SMSDOConfig *> table(static_cast<SMSDOConfig **>(std::calloc(count != 0 ? count : 1, kPointerSize)));
    if (!table)
        return SM_STATUS_NO_MEMORY;
    uint32_t status = SMSDOBinaryArrayToConfigArray(value.data, table.get(), &count);
    if (status != SM_STATUS_OK)
        return status;
    const uint8_t type = WithKind(value.type, SM_SDO_KIND_OBJECT) | SM_SDO_ARRAY;
    status = SM_STATUS_LIMIT_REACHED;
    if (!IsFull(config))
        status = Store(config, {value.id, type, table.get(), count * kPointerSize}, replace);
    if (status != SM_STATUS_OK) {
        while (count > 0)
            SMSDOConfigFree(table.get()[--count]);
    }
    return status;
}

uint32_t AddFlat(SMSDOConfig *config, const Value &value, int16_t replace)
{
    if (value.size < sizeof(uint32_t))
        return SM_STATUS_INVALID_PARAMETER;
    switch (LoadAs<uint32_t>(value.data)) { // the magic decides; the block knows its size
    case kObjectMagic:
        return AddFlatObject(config, value, replace);
    case kArrayMagic:
        return AddFlatArray(config, value, replace);
    default:
        return SM_STATUS_INVALID_PARAMETER;
    }
}

} // namespace

uint32_t SMSDOConfigAddData(SMSDOConfig *config, uint16_t id, uint8_t type, const void *data, uint32_t size,
                            int16_t replace)
{
    if (config == nullptr || !IsValidID(id) || data == nullptr || size == 0 || type == 0)
        return SM_STATUS_INVALID_PARAMETER;
    const Value value{id, type, data, size};
    switch (KindOf(type)) {
    case SM_SDO_KIND_FLAT:
        return AddFlat(config, value, replace);
    case SM_SDO_KIND_OBJECT:
        return AddNested(config, value, replace);
    default:
        return IsFull(config) ? SM_STATUS_LIMIT_REACHED : Store(config, value, replace);
    }
}

} // namespace qzvest
