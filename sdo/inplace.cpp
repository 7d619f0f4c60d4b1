// Reading and patching a flat object where it lies.

#include <cstddef>
#include <cstring>

#include "sdo/entry.h"
#include "sdo/flat.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

// The block's header when it is a flat object or array; isArrayOut is told which.
bool ReadHeader(const SMSDOBinary *binary, uint16_t *isArrayOut, FlatHeader *header)
{
    if (isArrayOut != nullptr)
        *isArrayOut = 0;
    if (binary == nullptr)
        return false;
    *header = HeaderOf(binary);
    if (header->magic == kArrayMagic && isArrayOut != nullptr)
        *isArrayOut = 1;
    return header->magic == kArrayMagic || header->magic == kObjectMagic;
}

// The descriptor of this ID, or NULL. Halves in just this way, so that a block whose IDs are not in order gives
// everybody the same answer.
const uint8_t *SearchByID(const SMSDOBinary *binary, uint32_t count, uint16_t id)
{
    uint32_t low = 0;
    uint32_t high = count;
    while (low < high) {
        const uint32_t mid = (low + high) / 2;
        const uint8_t *descriptor = DescriptorAt(binary, mid);
        const auto there = LoadAs<uint16_t>(descriptor);
        if (there == id)
            return descriptor;
        if (there < id)
            low = mid + 1;
        else
            high = mid;
    }
    return nullptr;
}

bool IsEmptyArray(uint8_t type, const void *data, uint32_t size)
{
    if (KindOf(type) != SM_SDO_KIND_FLAT || size < sizeof(uint32_t)) // as much is asked of any flat value
        return false;
    const FlatHeader header = HeaderOf(data);
    return header.magic == kArrayMagic && header.count == 0;
}

// Replaces a value of a rebuilt block. An empty array has no bytes that could differ from the old pointers, so a plain
// replacement would forget the old objects, and here nobody else has them.
uint32_t ReplaceRebuilt(SMSDOConfig *config, uint16_t id, uint8_t type, const void *data, uint32_t size)
{
    constexpr uint32_t kShare = kDescriptorSize + SM_SDO_HEADER_SIZE;
    if (IsEmptyArray(type, data, size) && config->binarySize + kShare <= kFlatLimit)
        (void)SMSDOConfigRemoveData(config, id, 0, 0); // it is there
    return SMSDOConfigAddData(config, id, type, data, size, 1);
}

// A value that needs other room than the old one: the block is made anew, beside the old one until it is whole.
uint32_t Rebuild(SMSDOBinary *binary, uint32_t *sizeInOut, uint16_t id, uint8_t type, const void *data, uint32_t size)
{
    const ConfigPtr config(SMSDOBinaryToConfig(binary));
    if (!config)
        return SM_STATUS_BUFFER_TOO_SMALL;
    uint32_t status = ReplaceRebuilt(config.get(), id, type, data, size);
    if (status != SM_STATUS_OK)
        return status;
    uint32_t needed = config->binarySize;
    if (needed > *sizeInOut) {
        *sizeInOut = needed;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    const HeapPtr<uint8_t> fresh = HeapRoom<uint8_t>(needed);
    if (!fresh)
        return SM_STATUS_NO_MEMORY;
    status = SMSDOConfigToBinary(config.get(), fresh.get(), &needed);
    if (status != SM_STATUS_OK)
        return status;
    std::memcpy(binary, fresh.get(), needed);
    *sizeInOut = needed;
    return SM_STATUS_OK;
}

} // namespace

uint32_t SMSDOBinaryGetCount(const SMSDOBinary *binary, uint16_t *isArrayOut)
{
    FlatHeader header;
    return ReadHeader(binary, isArrayOut, &header) ? header.count : SM_SDO_NO_COUNT;
}

uint32_t SMSDOBinaryGetSize(const SMSDOBinary *binary, uint16_t *isArrayOut)
{
    FlatHeader header;
    return ReadHeader(binary, isArrayOut, &header) ? header.size : 0;
}

uint32_t SMSDOBinaryGetDataByID(const SMSDOBinary *binary, uint16_t id, uint8_t *typeOut, void *buffer,
                                uint32_t *sizeInOut)
{
    if (binary == nullptr || sizeInOut == nullptr || !IsValidID(id))
        return SM_STATUS_INVALID_PARAMETER;
    const FlatHeader header = HeaderOf(binary);
    if (header.magic != kObjectMagic)
        return SM_STATUS_BAD_FORMAT;
    const uint8_t *descriptor = SearchByID(binary, header.count, id);
    if (descriptor == nullptr)
        return SM_STATUS_NOT_FOUND;
    const auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
    FlatValue value = ValueOf(descriptor);
    // An inline value is read with its filling, whatever its length. Callers read numbers of 1 to 4 bytes into a
    // word, cleared or not; who wants the true length asks by index.
    if ((entry.storage & kOutOfLine) == 0)
        value.size = kInlineLimit;
    if (buffer == nullptr || *sizeInOut < value.size) {
        *sizeInOut = value.size;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    std::memcpy(buffer, value.bytes, value.size);
    *sizeInOut = value.size;
    if (typeOut != nullptr)
        *typeOut = entry.type;
    return SM_STATUS_OK;
}

uint32_t SMSDOBinaryGetDataByIndex(const SMSDOBinary *binary, uint32_t index, uint16_t *idOut, uint8_t *typeOut,
                                   void *buffer, uint32_t *sizeInOut)
{
    if (idOut == nullptr || sizeInOut == nullptr || binary == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const FlatHeader header = HeaderOf(binary);
    if (index >= header.count)
        return SM_STATUS_NOT_IN_USE;
    if (header.magic != kObjectMagic)
        return SM_STATUS_BAD_FORMAT;
    const uint8_t *descriptor = DescriptorAt(binary, index);
    const FlatValue value = ValueOf(descriptor);
    if (buffer == nullptr || *sizeInOut < value.size) {
        *sizeInOut = value.size;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    const auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
    std::memcpy(buffer, value.bytes, value.size);
    *idOut = entry.id;
    *sizeInOut = value.size;
    if (typeOut != nullptr)
        *typeOut = entry.type;
    return SM_STATUS_OK;
}

uint32_t SMSDOBinarySetData(SMSDOBinary *binary, uint32_t *sizeInOut, uint16_t id, uint8_t type, const void *data,
                            uint32_t size)
{
    if (binary == nullptr || sizeInOut == nullptr || !IsValidID(id) || type == 0 || data == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (*sizeInOut < SM_SDO_HEADER_SIZE + kDescriptorSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    const FlatHeader header = HeaderOf(binary);
    if (header.magic != kObjectMagic)
        return SM_STATUS_INVALID_PARAMETER;
    const uint8_t *found = SearchByID(binary, header.count, id);
    if (found == nullptr)
        return SM_STATUS_NOT_FOUND;
    auto *descriptor = static_cast<uint8_t *>(binary) + (found - BytesOf(binary));
    auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
    if (entry.type != type)
        return SM_STATUS_NOT_FOUND;

    const bool isInline = (entry.storage & kOutOfLine) == 0;
    if (isInline && size <= kInlineLimit) {
        std::memmove(descriptor + kInlineAt, data, size); // data may lie in this block
        descriptor[offsetof(SMSDOBinaryEntry, storage)] = static_cast<uint8_t>((size - 1) & kInlineLength);
    } else if (!isInline && size == entry.length) {
        std::memmove(descriptor + entry.offset, data, size);
    } else {
        return Rebuild(binary, sizeInOut, id, type, data, size);
    }
    *sizeInOut = header.size;
    return SM_STATUS_OK;
}

} // namespace qzvest
