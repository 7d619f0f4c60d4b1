// The records behind an object in memory, and what an entry adds to the flat size.
#ifndef SDO_ENTRY_H
#define SDO_ENTRY_H

#include <qzvest/types.h>

#include <cstdint>
#include <memory>

#include "compat/load.h"
#include "containers/redblacktree.h"
#include "frame/heap.h"
#include "sdo/sdo.h"

// Invariants: count is the number of entries in the tree; binarySize is 8 and each entry's
// SMSDOEntryBinarySize, until SMSDOConfigReCalcBinarySize or a change behind the parent's back says otherwise.
struct SMSDOConfig {
    SMRedBlackTree root; // of SMSDOEntry, by ascending ID
    uint32_t count;
    uint32_t binarySize;
    SMRedBlackTreeNode *last; // the node of the highest ID, or NULL when it has to be looked for
};

namespace qzvest {

// One block per entry: these fields, then the value. A nested value is pointers, hence the alignment.
struct alignas(SMSDOConfig *) SMSDOEntry {
    uint32_t size; // bytes at Data()
    uint16_t id;
    uint8_t type;

    uint8_t *Data()
    {
        return reinterpret_cast<uint8_t *>(this + 1);
    }
    const uint8_t *Data() const
    {
        return reinterpret_cast<const uint8_t *>(this + 1);
    }
};

constexpr uint32_t kFlatLimit = 65535;  // bytes of any flat block
constexpr uint32_t kCountLimit = 65535; // entries of an object
constexpr uint32_t kDescriptorSize = 8; // bytes of an entry in the flat form, without a long value
constexpr uint32_t kInlineLimit = 4;    // bytes of a value that lies in its descriptor
constexpr uint32_t kPointerSize = sizeof(SMSDOConfig *);

constexpr uint8_t KindOf(uint8_t type)
{
    return type & SM_SDO_KIND_MASK;
}

constexpr uint8_t WithKind(uint8_t type, uint8_t kind)
{
    return static_cast<uint8_t>((type & ~SM_SDO_KIND_MASK) | kind);
}

// 1 to 65533
constexpr bool IsValidID(uint16_t id)
{
    return static_cast<uint16_t>(id - 1) <= 0xFFFC;
}

// The index-th pointer of a nested value, which may lie at any address.
inline SMSDOConfig *NestedAt(const void *data, uint32_t index)
{
    return LoadAs<SMSDOConfig *>(static_cast<const uint8_t *>(data) + size_t{index} * kPointerSize);
}

// Bytes that the value takes in the data area of the flat form. No nested object may be NULL.
uint64_t NestedDataSize(uint8_t type, const void *data, uint32_t size);
inline uint64_t SMSDOEntryDataSize(uint8_t type, const void *data, uint32_t size)
{
    return KindOf(type) == SM_SDO_KIND_OBJECT ? NestedDataSize(type, data, size) : size;
}

// The entry's share of the flat size: its descriptor, and its value when that does not fit in there.
inline uint64_t SMSDOEntryBinarySize(uint8_t type, const void *data, uint32_t size)
{
    const uint64_t length = SMSDOEntryDataSize(type, data, size);
    return kDescriptorSize + (length > kInlineLimit ? length : 0);
}

// Frees what the entry owns and clears the pointers; the entry itself stays.
void FreeNested(SMSDOEntry *entry);
inline void SMSDOEntryFree(SMSDOEntry *entry)
{
    if (KindOf(entry->type) == SM_SDO_KIND_OBJECT)
        FreeNested(entry);
}

// Where the entry of this ID is, or would go.
inline TreePlace EntryPlace(SMRedBlackTree *tree, uint16_t id)
{
    return TreeFind(
        tree, [id](const void *data) { return int32_t{id} - int32_t{static_cast<const SMSDOEntry *>(data)->id}; });
}

struct ConfigRelease {
    void operator()(SMSDOConfig *config) const
    {
        SMSDOConfigFree(config);
    }
};

using ConfigPtr = std::unique_ptr<SMSDOConfig, ConfigRelease>;

} // namespace qzvest

#endif
