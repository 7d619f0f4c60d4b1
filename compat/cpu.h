// Which vector instructions this machine has besides those that every one of its kind has. A function marked
// QZVEST_AVX2 or QZVEST_SSSE3 is called where the question of that name is answered with yes, and nowhere else.
#ifndef COMPAT_CPU_H
#define COMPAT_CPU_H

// For what is to be compiled with the instructions of the function that it is inlined into.
#define QZVEST_INLINE __attribute__((always_inline)) inline

#if defined(__x86_64__) && defined(__GNUC__)

#define QZVEST_X86 1
#define QZVEST_AVX2 __attribute__((target("avx2,popcnt")))
#define QZVEST_SSSE3 __attribute__((target("ssse3")))

#include <cstdint>

namespace qzvest {

enum CPUFeature : uint32_t {
    kCPUKnown = 1, // the others are filled in
    kCPUSSSE3 = 2,
    kCPUAVX2 = 4 // and popcnt, and a system that saves the wide registers
};

// Asks the processor and keeps the answer.
uint32_t FindCPUFeatures();

// Zero until somebody asks. Each thread that finds it so writes the same.
extern constinit uint32_t cpuFeatures; // NOLINT(bugprone-dynamic-static-initializers): it is constinit

inline bool CPUHas(CPUFeature feature)
{
    uint32_t features = __atomic_load_n(&cpuFeatures, __ATOMIC_RELAXED);
    if (features == 0)
        features = FindCPUFeatures();
    return (features & feature) != 0;
}

inline bool HasAVX2()
{
    return CPUHas(kCPUAVX2);
}

inline bool HasSSSE3()
{
    return CPUHas(kCPUSSSE3);
}

} // namespace qzvest

#else
#define QZVEST_X86 0
#endif

#endif
