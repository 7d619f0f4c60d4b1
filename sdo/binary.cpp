// The flat form, there and back, and what goes by way of it.

#include <cstring>

#include "sdo/entry.h"
#include "sdo/flat.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

struct FlatWriter {
    uint8_t *block;
    uint32_t capacity;   // bytes at block
    uint32_t descriptor; // offset of the next descriptor
    uint32_t total;      // offset of the next long value, and bytes so far
};

// The flat form of what a nested entry owns, in a block of its own; empty on any failure.
HeapPtr<uint8_t> FlattenNested(const SMSDOEntry *entry, uint32_t length)
{
    HeapPtr<uint8_t> block = HeapRoom<uint8_t>(length);
    if (!block)
        return block;
    uint32_t status;
    if ((entry->type & SM_SDO_ARRAY) != 0) {
        const auto *table = reinterpret_cast<SMSDOConfig *const *>(entry->Data());
        status = SMSDOConfigArrayToBinaryArray(table, static_cast<int32_t>(entry->size / kPointerSize), block.get(),
                                               &length);
    } else {
        status = SMSDOConfigToBinary(NestedAt(entry->Data(), 0), block.get(), &length);
    }
    if (status != SM_STATUS_OK)
        block.reset();
    return block;
}

// The value into the data area, its length and offset into the descriptor. A nested object that grew behind the
// parent's back may not fit. The total counts it all the same and so gives it away.
void WriteLong(FlatWriter &writer, uint8_t *descriptor, const uint8_t *value, uint32_t length)
{
    StoreAs(descriptor + offsetof(SMSDOBinaryEntry, length), static_cast<uint16_t>(length));
    StoreAs(descriptor + offsetof(SMSDOBinaryEntry, offset), static_cast<uint16_t>(writer.total - writer.descriptor));
    if (uint64_t{writer.total} + length <= writer.capacity)
        std::memcpy(writer.block + writer.total, value, length);
    writer.total += length;
}

// False, with the total as it was, ends the writing.
bool WriteEntry(FlatWriter &writer, const SMSDOEntry *entry)
{
    const auto length = static_cast<uint32_t>(SMSDOEntryDataSize(entry->type, entry->Data(), entry->size));
    const uint8_t *value = entry->Data();
    uint8_t type = entry->type;
    HeapPtr<uint8_t> nested;
    if (KindOf(type) == SM_SDO_KIND_OBJECT) {
        nested = FlattenNested(entry, length);
        if (!nested)
            return false;
        type = WithKind(type, SM_SDO_KIND_FLAT);
        value = nested.get();
    }
    // Written field by field where it stands: put together first, it would be read back before its parts have
    // reached memory, and the processor waits for that.
    const bool isLong = length > kInlineLimit;
    uint8_t *descriptor = writer.block + writer.descriptor;
    StoreAs(descriptor + offsetof(SMSDOBinaryEntry, id), entry->id);
    descriptor[offsetof(SMSDOBinaryEntry, type)] = type;
    descriptor[offsetof(SMSDOBinaryEntry, storage)] =
        isLong ? kOutOfLine : static_cast<uint8_t>((length - 1) & kInlineLength);
    if (isLong) {
        WriteLong(writer, descriptor, value, length);
    } else {
        // Most short values are whole words, copied without a call.
        if (length == kInlineLimit) {
            std::memcpy(descriptor + kInlineAt, value, kInlineLimit);
        } else {
            StoreAs(descriptor + kInlineAt, uint32_t{0});
            std::memcpy(descriptor + kInlineAt, value, length);
        }
    }
    writer.descriptor += kDescriptorSize;
    return true;
}

bool IsFlattenable(const SMSDOConfig *config)
{
    return config->binarySize >= SM_SDO_HEADER_SIZE && config->binarySize <= kFlatLimit;
}

// The whole object in a block of its own; empty on any failure.
HeapPtr<uint8_t> Flatten(const SMSDOConfig *config)
{
    HeapPtr<uint8_t> block = HeapRoom<uint8_t>(config->binarySize);
    uint32_t size = config->binarySize;
    if (block && SMSDOConfigToBinary(config, block.get(), &size) != SM_STATUS_OK)
        block.reset();
    return block;
}

} // namespace

uint32_t SMSDOConfigToBinary(const SMSDOConfig *config, void *buffer, uint32_t *sizeInOut)
{
    if (config == nullptr || buffer == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (*sizeInOut < config->binarySize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    FlatWriter writer{static_cast<uint8_t *>(buffer), *sizeInOut, SM_SDO_HEADER_SIZE,
                      SM_SDO_HEADER_SIZE + config->count * kDescriptorSize};
    bool isWhole = writer.total <= writer.capacity; // false only where the kept size is wrong altogether
    if (isWhole) {
        StoreAs(buffer, FlatHeader{kObjectMagic, static_cast<uint16_t>(config->count),
                                   static_cast<uint16_t>(config->binarySize)});
        SMRedBlackTreeNode *node = TreeFirst(config->root);
        for (; node != nullptr && isWhole; node = TreeNext(node))
            isWhole = WriteEntry(writer, static_cast<const SMSDOEntry *>(node->data));
    }
    *sizeInOut = writer.total;
    isWhole = isWhole && writer.total == config->binarySize && writer.total <= kFlatLimit;
    return isWhole ? SM_STATUS_OK : SM_STATUS_FAILED;
}

SMSDOConfig *SMSDOBinaryToConfig(const SMSDOBinary *binary)
{
    if (binary == nullptr)
        return nullptr;
    ConfigPtr config(SMSDOConfigAlloc());
    const FlatHeader header = HeaderOf(binary);
    if (!config || header.magic != kObjectMagic)
        return nullptr;
    for (uint32_t i = 0; i < header.count; ++i) {
        const uint8_t *descriptor = DescriptorAt(binary, i);
        const auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
        if (KindOf(entry.type) == SM_SDO_KIND_OBJECT)
            return nullptr; // a block holds no pointers, whatever it says
        const FlatValue value = ValueOf(descriptor);
        if (SMSDOConfigAddData(config.get(), entry.id, entry.type, value.bytes, value.size, 0) != SM_STATUS_OK)
            return nullptr;
    }
    return config.release();
}

SMSDOConfig *SMSDOConfigClone(const SMSDOConfig *config)
{
    if (config == nullptr || !IsFlattenable(config))
        return nullptr;
    const HeapPtr<uint8_t> block = Flatten(config);
    return block ? SMSDOBinaryToConfig(block.get()) : nullptr;
}

uint32_t SMSDOConfigCompareByValue(const SMSDOConfig *a, const SMSDOConfig *b)
{
    if (a == nullptr || b == nullptr)
        return a == b ? 1 : 0;
    if (a->binarySize != b->binarySize || !IsFlattenable(a))
        return 0;
    const HeapPtr<uint8_t> blockA = Flatten(a);
    const HeapPtr<uint8_t> blockB = Flatten(b);
    return blockA && blockB && std::memcmp(blockA.get(), blockB.get(), a->binarySize) == 0 ? 1 : 0;
}

} // namespace qzvest
