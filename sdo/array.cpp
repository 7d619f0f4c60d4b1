// Flat arrays. There is no index: an element is reached by stepping over those before it.

#include <cstring>

#include "sdo/entry.h"
#include "sdo/flat.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

// Offset of the index-th element, or of the end when index is the count.
uint32_t ElementOffset(const SMSDOBinaryArray *array, uint32_t index)
{
    uint32_t offset = sizeof(FlatHeader);
    for (; index > 0; --index)
        offset += HeaderOf(BytesOf(array) + offset).size;
    return offset;
}

// A size that a word of 32 bits cannot say is at least not said too small.
uint32_t SizeWord(uint64_t size)
{
    return size < UINT32_MAX ? static_cast<uint32_t>(size) : UINT32_MAX;
}

// Appends at the known end of the array.
uint32_t AppendAt(SMSDOBinaryArray *array, uint64_t end, uint32_t *sizeInOut, const SMSDOBinary *binary,
                  uint32_t binarySize)
{
    const uint64_t total = end + binarySize;
    if (total > *sizeInOut) {
        *sizeInOut = SizeWord(total);
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    if (total > kFlatLimit)
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memcpy(static_cast<uint8_t *>(array) + end, binary, binarySize);
    FlatHeader header = HeaderOf(array);
    header.count += 1;
    header.size = static_cast<uint16_t>(total);
    StoreAs(array, header);
    return SM_STATUS_OK;
}

uint32_t CopyElement(const uint8_t *element, void *buffer, uint32_t *sizeInOut)
{
    const FlatHeader header = HeaderOf(element);
    if (header.magic != kObjectMagic)
        return SM_STATUS_BAD_FORMAT;
    const bool fits = buffer != nullptr && *sizeInOut >= header.size;
    if (fits)
        std::memcpy(buffer, element, header.size);
    *sizeInOut = header.size;
    return fits ? SM_STATUS_OK : SM_STATUS_BUFFER_TOO_SMALL;
}

// Rebuilds count elements into the table. Each is fetched whole into a work buffer that holds the largest; that
// there is no memory for it is told apart from an element that cannot be rebuilt.
uint32_t RebuildElements(const SMSDOBinaryArray *array, uint32_t count, SMSDOConfig **configs)
{
    const HeapPtr<uint8_t> work = HeapRoom<uint8_t>(kFlatLimit);
    if (!work)
        return SM_STATUS_NO_MEMORY;
    const uint8_t *element = BytesOf(array) + sizeof(FlatHeader);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t size = kFlatLimit;
        const uint32_t status = CopyElement(element, work.get(), &size);
        if (status != SM_STATUS_OK)
            return status;
        configs[i] = SMSDOBinaryToConfig(work.get());
        if (configs[i] == nullptr)
            return SM_STATUS_FAILED;
        element += size;
    }
    return SM_STATUS_OK;
}

// Flattens one object and appends it when an array is there and has room. The total counts it either way.
uint32_t AppendConfig(const SMSDOConfig *config, SMSDOBinaryArray *array, uint32_t *capacity, uint64_t *total)
{
    uint32_t size = config->binarySize;
    const HeapPtr<uint8_t> block = HeapRoom<uint8_t>(size);
    if (!block)
        return SM_STATUS_NO_MEMORY;
    const uint32_t status = SMSDOConfigToBinary(config, block.get(), &size);
    if (status != SM_STATUS_OK)
        return status;
    const uint64_t end = *total;
    *total += size;
    if (array == nullptr || *total > *capacity)
        return SM_STATUS_OK;
    return AppendAt(array, end, capacity, block.get(), size);
}

} // namespace

uint32_t SMSDOBinaryArrayInitHeader(SMSDOBinaryArray *array, uint32_t bufferSize)
{
    if (array == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (bufferSize < sizeof(FlatHeader))
        return SM_STATUS_BUFFER_TOO_SMALL;
    StoreAs(array, FlatHeader{kArrayMagic, 0, sizeof(FlatHeader)});
    return SM_STATUS_OK;
}

uint32_t SMSDOBinaryArrayAddData(SMSDOBinaryArray *array, uint32_t *sizeInOut, const SMSDOBinary *binary,
                                 uint32_t binarySize)
{
    if (array == nullptr || sizeInOut == nullptr || binary == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (*sizeInOut < 2 * sizeof(FlatHeader))
        return SM_STATUS_BUFFER_TOO_SMALL;
    const FlatHeader header = HeaderOf(array);
    if (header.magic != kArrayMagic)
        return SM_STATUS_INVALID_PARAMETER;
    return AppendAt(array, ElementOffset(array, header.count), sizeInOut, binary, binarySize);
}

uint32_t SMSDOBinaryArrayGetByIndex(const SMSDOBinaryArray *array, uint32_t, uint32_t index, void *buffer,
                                    uint32_t *sizeInOut)
{
    if (array == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const FlatHeader header = HeaderOf(array);
    if (header.magic != kArrayMagic)
        return SM_STATUS_BAD_FORMAT;
    if (index >= header.count)
        return SM_STATUS_NOT_FOUND;
    return CopyElement(BytesOf(array) + ElementOffset(array, index), buffer, sizeInOut);
}

uint32_t SMSDOConfigArrayToBinaryArray(SMSDOConfig *const *configs, int32_t configCount, SMSDOBinaryArray *array,
                                       uint32_t *sizeInOut)
{
    if (configs == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    uint32_t capacity = *sizeInOut;
    uint64_t total = 0; // without an array the header does not count
    if (array != nullptr) {
        const uint32_t status = SMSDOBinaryArrayInitHeader(array, capacity);
        if (status != SM_STATUS_OK)
            return status;
        total = sizeof(FlatHeader);
    }
    for (int32_t i = 0; i < configCount; ++i) {
        if (configs[i] == nullptr)
            continue;
        const uint32_t status = AppendConfig(configs[i], array, &capacity, &total);
        if (status != SM_STATUS_OK)
            return status;
    }
    *sizeInOut = SizeWord(total);
    return SM_STATUS_OK;
}

uint32_t SMSDOBinaryArrayToConfigArray(const SMSDOBinaryArray *array, SMSDOConfig **configs, uint32_t *countInOut)
{
    if (array == nullptr || countInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const FlatHeader header = HeaderOf(array);
    if (header.magic != kArrayMagic)
        return SM_STATUS_BAD_FORMAT;
    const uint32_t slots = *countInOut;
    if (static_cast<int32_t>(slots) < int32_t{header.count}) {
        *countInOut = header.count;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    if (header.count != 0 && configs == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t status = header.count != 0 ? RebuildElements(array, header.count, configs) : SM_STATUS_OK;
    if (status == SM_STATUS_OK) {
        *countInOut = header.count;
        return SM_STATUS_OK;
    }
    // The whole table goes, also slots that were not reached: it was cleared by the caller.
    for (uint32_t i = 0; i < slots; ++i) {
        SMSDOConfigFree(configs[i]);
        configs[i] = nullptr;
    }
    return status;
}

} // namespace qzvest
