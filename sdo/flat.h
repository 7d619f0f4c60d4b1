// The flat form's header and descriptors. A block lies at any address, so numbers are copied in and out.
#ifndef SDO_FLAT_H
#define SDO_FLAT_H

#include <qzvest/types.h>

#include <cstddef>
#include <cstdint>

#include "compat/load.h"
#include "sdo/entry.h"

namespace qzvest {

constexpr uint32_t kObjectMagic = 0x53444F42; // "BODS"
constexpr uint32_t kArrayMagic = 0x53444142;  // "BADS"

struct FlatHeader {
    uint32_t magic;
    uint16_t count;
    uint16_t size; // of the whole block
};

// length and offset hold the value itself when it lies inline.
struct SMSDOBinaryEntry {
    uint16_t id;
    uint8_t type;
    uint8_t storage;
    uint16_t length;
    uint16_t offset; // from this descriptor
};

static_assert(offsetof(FlatHeader, magic) == 0 && offsetof(FlatHeader, count) == 4);
static_assert(offsetof(FlatHeader, size) == 6 && sizeof(FlatHeader) == SM_SDO_HEADER_SIZE);
static_assert(offsetof(SMSDOBinaryEntry, id) == 0 && offsetof(SMSDOBinaryEntry, type) == 2);
static_assert(offsetof(SMSDOBinaryEntry, storage) == 3 && offsetof(SMSDOBinaryEntry, length) == 4);
static_assert(offsetof(SMSDOBinaryEntry, offset) == 6 && sizeof(SMSDOBinaryEntry) == kDescriptorSize);

constexpr uint8_t kOutOfLine = 4; // bit of storage; the bits below are the inline length less 1
constexpr uint8_t kInlineLength = 3;

constexpr size_t kInlineAt = offsetof(SMSDOBinaryEntry, length);

inline const uint8_t *BytesOf(const SMSDOBinary *block)
{
    return static_cast<const uint8_t *>(block);
}

inline FlatHeader HeaderOf(const SMSDOBinary *block)
{
    return LoadAs<FlatHeader>(block);
}

inline const uint8_t *DescriptorAt(const SMSDOBinary *block, uint32_t index)
{
    return BytesOf(block) + sizeof(FlatHeader) + size_t{index} * kDescriptorSize;
}

struct FlatValue {
    const uint8_t *bytes;
    uint32_t size;
};

// A descriptor's value with its true length.
inline FlatValue ValueOf(const uint8_t *descriptor)
{
    const auto entry = LoadAs<SMSDOBinaryEntry>(descriptor);
    if ((entry.storage & kOutOfLine) != 0)
        return {descriptor + entry.offset, entry.length};
    return {descriptor + kInlineAt, (entry.storage & kInlineLength) + 1u};
}

} // namespace qzvest

#endif
