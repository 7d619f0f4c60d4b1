// The digit generator of the formatted print: correctly rounded decimal digits of a double.
#ifndef TEXT_DIGITS_H
#define TEXT_DIGITS_H

#include <cstdint>

namespace qzvest {

enum class DigitMode {
    kSignificant, // so many significant digits
    kBehindPoint  // so many digits behind the point
};

// The value is 0.d1d2d3... times 10^point. Significant digits have no trailing zeros, those behind the point may have
// some. Zero is one digit 0 with the point behind it. What rounds to zero has no digits, and its point is as far before
// them as digits were wanted.
struct Digits {
    const char *text;
    int32_t count;
    int32_t point;
};

// magnitude is finite and not negative; wanted is not negative, and 0 significant digits count as 1. The caller holds
// the lock of the formatted print; the text lives to the next call.
Digits GenerateDigits(double magnitude, DigitMode mode, int32_t wanted);

} // namespace qzvest

#endif
