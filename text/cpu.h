// The vector instructions that the text conversions know besides the compiler's own choice: AVX2, asked for at run
// time. A function marked QZVEST_AVX2 is called where HasAVX2() is true, and nowhere else.
#ifndef TEXT_CPU_H
#define TEXT_CPU_H

#if defined(__x86_64__) && defined(__GNUC__)
#define QZVEST_X86 1
#define QZVEST_AVX2 __attribute__((target("avx2,popcnt")))
#else
#define QZVEST_X86 0
#endif

namespace qzvest {

inline bool HasAVX2()
{
#if QZVEST_X86
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt"); // two bits of a word set at load
#else
    return false;
#endif
}

} // namespace qzvest

#endif
