#include "text/powersoften.h"

#include <array>
#include <bit>
#include <cstddef>
#include <utility>

namespace qzvest {
namespace {

constexpr int32_t kStep = 28;
constexpr int32_t kLowestStep = kLowestPowerOfTen / kStep;
constexpr int32_t kHighestStep = kHighestPowerOfTen / kStep;
static_assert(kLowestStep * kStep == kLowestPowerOfTen && kHighestStep * kStep + kStep - 1 == kHighestPowerOfTen);

constexpr uint64_t kFiveToThe7 = 78125;

// Digits of a number for the compiler's use, 32 bits each, lowest first. 5^363 has 843 bits.
using Wide = std::array<uint32_t, 28>;

constexpr void MultiplyWide(Wide &number, uint64_t factor)
{
    uint64_t carry = 0;
    for (uint32_t &digit : number) {
        carry += factor * digit;
        digit = static_cast<uint32_t>(carry);
        carry >>= 32;
    }
}

// 5 to the power of 28 * steps.
constexpr Wide WidePowerOfFive(int32_t steps)
{
    Wide power{1};
    for (int32_t i = 0; i < 4 * steps; ++i)
        MultiplyWide(power, kFiveToThe7);
    return power;
}

constexpr int32_t WideBits(const Wide &number)
{
    int32_t top = static_cast<int32_t>(number.size()) - 1;
    while (number[static_cast<std::size_t>(top)] == 0)
        --top;
    return 32 * top + static_cast<int32_t>(std::bit_width(number[static_cast<std::size_t>(top)]));
}

constexpr uint32_t WideBit(const Wide &number, int32_t place)
{
    return place < 0 ? 0 : number[static_cast<std::size_t>(place / 32)] >> (place % 32) & 1;
}

// The 128 highest bits.
constexpr uint128 Highest(const Wide &number)
{
    const int32_t bits = WideBits(number);
    uint128 highest = 0;
    for (int32_t i = 1; i <= 128; ++i)
        highest = highest << 1 | WideBit(number, bits - i);
    return highest;
}

constexpr bool DoubleAndReduce(Wide &remainder, const Wide &divisor)
{
    uint32_t carry = 0;
    for (uint32_t &digit : remainder) {
        const uint32_t out = digit >> 31;
        digit = digit << 1 | carry;
        carry = out;
    }
    Wide difference{};
    uint64_t borrow = 0;
    for (std::size_t i = 0; i < divisor.size(); ++i) {
        const uint64_t digit = uint64_t{remainder[i]} - divisor[i] - borrow;
        difference[i] = static_cast<uint32_t>(digit);
        borrow = digit >> 63;
    }
    if (borrow != 0)
        return false;
    remainder = difference;
    return true;
}

// The 128 highest bits of 1 / number: 2^(bits + 127) / number.
constexpr uint128 HighestOfReciprocal(const Wide &number)
{
    const int32_t bits = WideBits(number);
    Wide remainder{};
    remainder[static_cast<std::size_t>((bits - 1) / 32)] = uint32_t{1} << ((bits - 1) % 32);
    uint128 quotient = 0;
    for (int32_t i = 0; i < 128; ++i)
        quotient = quotient << 1 | static_cast<uint32_t>(DoubleAndReduce(remainder, number));
    return quotient;
}

constexpr uint128 CoarseEntry(int32_t step)
{
    return step < 0 ? HighestOfReciprocal(WidePowerOfFive(-step)) : Highest(WidePowerOfFive(step));
}

// An evaluation of its own for each entry, since compilers bound the work of one.
template <int32_t step>
constexpr uint128 kCoarseEntry = CoarseEntry(step);

template <std::size_t... places>
constexpr auto CoarseTable(std::index_sequence<places...>)
{
    return std::array<uint128, sizeof...(places)>{kCoarseEntry<static_cast<int32_t>(places) + kLowestStep>...};
}

constexpr auto kCoarse = CoarseTable(std::make_index_sequence<kHighestStep - kLowestStep + 1>());

// 5^0 to 5^27, the highest bit set.
constexpr auto kFine = [] {
    std::array<uint64_t, kStep> table{};
    uint64_t power = 1;
    for (uint64_t &entry : table) {
        entry = power << std::countl_zero(power);
        power *= 5;
    }
    return table;
}();

// The binary logarithm of 10^power, rounded down.
constexpr int32_t BinaryExponent(int32_t power)
{
    return power * 217706 >> 16;
}

constexpr bool BinaryExponentsHold()
{
    Wide power{1};
    for (int32_t n = 0; n <= kHighestPowerOfTen; ++n) {
        const int32_t bits = WideBits(power);
        if (BinaryExponent(n) != bits - 1 + n || (n > 0 && BinaryExponent(-n) != -bits - n))
            return false;
        MultiplyWide(power, 5);
    }
    return true;
}
static_assert(BinaryExponentsHold());

} // namespace

PowerOfTen PowerOfTenOf(int32_t power)
{
    const int32_t place = power - kLowestPowerOfTen;
    const uint128 coarse = kCoarse[static_cast<std::size_t>(place / kStep)];
    const uint64_t fine = kFine[static_cast<std::size_t>(place % kStep)];
    // 192 bits, of which the highest 128 stay; either the first or the second of them is set.
    const uint128 low = static_cast<uint128>(static_cast<uint64_t>(coarse)) * fine;
    const uint128 high = (coarse >> 64) * fine + (low >> 64);
    const uint64_t rest = static_cast<uint64_t>(low);
    const bool normal = high >> 127 != 0;
    return {normal ? high : high << 1 | rest >> 63, BinaryExponent(power) - 127};
}

} // namespace qzvest
