// Powers of ten in 128 bits, from 10^-308 to 10^363.
//
// 10^s is 5^s but for the binary exponent. s is split into a multiple of 28 and a rest: the first has its 128 highest
// bits in a table, cut off and not rounded; the second is below 5^28 and so exact in 64 bits. Both tables are computed
// by the compiler, from nothing but multiplication and division by five.
#ifndef TEXT_POWERSOFTEN_H
#define TEXT_POWERSOFTEN_H

#include <cstdint>

namespace qzvest {

__extension__ using uint128 = unsigned __int128;

constexpr int32_t kLowestPowerOfTen = -308;
constexpr int32_t kHighestPowerOfTen = 363;

// 128 bits of which the highest is set, times 2^exponent. The true power lies from here up to, but without, three
// units of the lowest bit above; it is exact for 10^0 to 10^55.
struct PowerOfTen {
    uint128 bits;
    int32_t exponent;
};

PowerOfTen PowerOfTenOf(int32_t power);

constexpr bool IsExactPowerOfTen(int32_t power)
{
    return power >= 0 && power <= 55;
}

} // namespace qzvest

#endif
