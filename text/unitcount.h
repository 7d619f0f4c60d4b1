// The length of a UCS-2 string. It reads whole aligned blocks, and so a little beyond the terminator, but never
// beyond the page that holds it; the sanitizers are told.
#ifndef TEXT_UNITCOUNT_H
#define TEXT_UNITCOUNT_H

#include <bit>
#include <cstddef>
#include <cstdint>

#include "compat/cpu.h"

#if QZVEST_X86
#include <immintrin.h>
#endif

namespace qzvest {

#define QZVEST_READS_BLOCKS __attribute__((no_sanitize("address", "thread")))

// Four units at a time, in aligned words.
QZVEST_READS_BLOCKS inline size_t UnitCountPortable(const uint16_t *string)
{
    using Word __attribute__((may_alias)) = uint64_t;
    const uint16_t *at = string;
    // A string at an odd address never comes to a word's edge and is counted here to its end.
    for (; reinterpret_cast<uintptr_t>(at) % sizeof(Word) != 0; ++at) {
        if (*at == 0)
            return static_cast<size_t>(at - string);
    }
    constexpr uint64_t kOnes = UINT64_C(0x0001000100010001);
    for (;; at += 4) {
        const uint64_t word = *reinterpret_cast<const Word *>(at);
        if (((word - kOnes) & ~word & kOnes << 15) != 0)
            break;
    }
    while (*at != 0)
        ++at;
    return static_cast<size_t>(at - string);
}

#if QZVEST_X86

// Of the 32 bytes at an address divisible by 32, two bits for each unit that is zero.
QZVEST_READS_BLOCKS QZVEST_AVX2 inline uint32_t ZeroUnits(const void *block)
{
    const __m256i units = *static_cast<const __m256i *>(block);
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(units, _mm256_setzero_si256())));
}

// For an even address. A block is read only when those before it had no zero, so that none lies wholly behind the
// terminator: memory checkers report such a read, where they let pass one that begins within the string.
QZVEST_READS_BLOCKS QZVEST_AVX2 inline size_t UnitCountAVX2(const uint16_t *string)
{
    const auto address = reinterpret_cast<uintptr_t>(string);
    const char *bytes = reinterpret_cast<const char *>(string);
    const char *at = bytes - address % 32;
    uint32_t zero = ZeroUnits(at) >> address % 32;
    if (zero != 0)
        return static_cast<size_t>(std::countr_zero(zero)) / 2;
    while (zero == 0)
        zero = ZeroUnits(at += 32);
    return (static_cast<size_t>(at - bytes) + static_cast<size_t>(std::countr_zero(zero))) / 2;
}

#endif

// Units before the terminator.
inline size_t UnitCount(const uint16_t *string)
{
#if QZVEST_X86
    if (HasAVX2() && reinterpret_cast<uintptr_t>(string) % sizeof *string == 0)
        return UnitCountAVX2(string);
#endif
    return UnitCountPortable(string);
}

} // namespace qzvest

#endif
