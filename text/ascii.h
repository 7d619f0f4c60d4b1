// Runs of ASCII between the encodings, in the compiler's own vectors: with the instructions of the function that they
// are inlined into.
#ifndef TEXT_ASCII_H
#define TEXT_ASCII_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "compat/cpu.h"
#include "compat/load.h"

namespace qzvest {

using Bytes16 __attribute__((vector_size(16))) = uint8_t;
using Units16 __attribute__((vector_size(32))) = uint16_t;

// True when one of 16 bytes, or of 16 units, is beyond ASCII.
QZVEST_INLINE bool BeyondAscii(const char *block)
{
    return ((LoadAs<uint64_t>(block) | LoadAs<uint64_t>(block + 8)) & UINT64_C(0x8080808080808080)) != 0;
}

QZVEST_INLINE bool BeyondAscii(const uint16_t *block)
{
    return ((LoadAs<uint64_t>(block) | LoadAs<uint64_t>(block + 4) | LoadAs<uint64_t>(block + 8) |
             LoadAs<uint64_t>(block + 12)) &
            UINT64_C(0xFF80FF80FF80FF80)) != 0;
}

QZVEST_INLINE void CopyBlock(uint16_t *to, const char *from)
{
    Bytes16 block;
    std::memcpy(&block, from, sizeof block);
    const Units16 units = __builtin_convertvector(block, Units16);
    std::memcpy(to, &units, sizeof units);
}

QZVEST_INLINE void CopyBlock(char *to, const uint16_t *from)
{
    Units16 block;
    std::memcpy(&block, from, sizeof block);
    const Bytes16 bytes = __builtin_convertvector(block, Bytes16);
    std::memcpy(to, &bytes, sizeof bytes);
}

QZVEST_INLINE uint16_t CodeOf(char byte)
{
    return static_cast<uint8_t>(byte);
}

QZVEST_INLINE uint16_t CodeOf(uint16_t unit)
{
    return unit;
}

// Copies the opening run of ASCII, at most count of it, and gives its length.
template <bool kWrites, typename To, typename From>
QZVEST_INLINE size_t CopyAscii(To *to, const From *from, size_t count)
{
    size_t done = 0;
    for (; count - done >= 16 && !BeyondAscii(from + done); done += 16) {
        if constexpr (kWrites)
            CopyBlock(to + done, from + done);
    }
    for (; done < count && CodeOf(from[done]) < 0x80; ++done) {
        if constexpr (kWrites)
            to[done] = static_cast<To>(CodeOf(from[done]));
    }
    return done;
}

} // namespace qzvest

#endif
