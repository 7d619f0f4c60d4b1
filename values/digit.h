// The value of a single digit.
#ifndef VALUES_DIGIT_H
#define VALUES_DIGIT_H

namespace qzvest {

constexpr unsigned kNoDigit = 16;

// A hexadecimal digit of either case, else kNoDigit.
inline unsigned DigitOf(char character)
{
    const auto code = static_cast<unsigned char>(character);
    const unsigned digit = code - unsigned{'0'};
    if (digit < 10)
        return digit;
    const unsigned letter = (code | 0x20u) - 'a';
    return letter < 6 ? letter + 10 : kNoDigit;
}

} // namespace qzvest

#endif
