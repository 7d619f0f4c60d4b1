// Decimal digits of whole numbers.
#ifndef TEXT_DECIMAL_H
#define TEXT_DECIMAL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qzvest {

constexpr uint32_t kMostDecimalDigits = 20; // of 64 bits

inline constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Writes the digits of value so that they end before end, and gives the first. 0 has one digit.
inline char *PutDecimal(char *end, uint64_t value)
{
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[2 * (value % 100)], 2);
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[2 * value], 2);
        return end;
    }
    *--end = static_cast<char>('0' + value);
    return end;
}

} // namespace qzvest

#endif
