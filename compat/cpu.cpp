// The compiler's own way to ask does so in a constructor, with some thirty questions, each of which takes microseconds
// on a virtual machine. Loading the library shall not wait for that: three questions, when somebody needs them.

#include "compat/cpu.h"

#if QZVEST_X86

#include <cpuid.h>

namespace qzvest {
namespace {

// Whether the system saves the registers of 16 and 32 bytes.
bool SavesWideRegisters()
{
    constexpr uint32_t kBoth = 6;
    uint32_t low;
    uint32_t high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & kBoth) == kBoth;
}

} // namespace

constinit uint32_t cpuFeatures = 0;

uint32_t FindCPUFeatures()
{
    uint32_t features = kCPUKnown;
    uint32_t a, b, c, d;
    if (__get_cpuid(1, &a, &b, &c, &d) != 0) {
        if ((c & bit_SSSE3) != 0)
            features |= kCPUSSSE3;
        const uint32_t needed = bit_OSXSAVE | bit_AVX | bit_POPCNT;
        if ((c & needed) == needed && SavesWideRegisters() && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
            (b & bit_AVX2) != 0)
            features |= kCPUAVX2;
    }
    __atomic_store_n(&cpuFeatures, features, __ATOMIC_RELAXED);
    return features;
}

} // namespace qzvest

#endif
