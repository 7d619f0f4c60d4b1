// Correctly rounded conversion of doubles to decimal digits, after David M. Gay, "Correctly Rounded Binary-Decimal and
// Decimal-Binary Conversions" (1990), whose estimate of the exponent and whose big-number road these are.
//
// A double is mantissa * 2^exponent, two whole numbers. What is asked for is the whole number nearest to
// mantissa * 2^exponent * 10^scale, a tie going to the even one. There are three roads to it, the quickest that can
// prove its result:
//
// 1. A whole number of at most 64 bits is divided by a power of ten. That is exact.
// 2. Up to 18 digits come from one product with a power of ten of 128 bits. The product is cut off, never rounded up:
//    the true one lies at it or less than 2^67 of its 2^190 or more units above it. The digits are certain unless the
//    middle between two candidates lies within that stretch. With an exact power (10^0 to 10^55) there is no stretch,
//    and ties are known as such. This is as quick as arithmetic in doubles would be, and proves more.
// 3. Else the value is a fraction of two big numbers, and long division gives nine digits in a step.
//
// No digit of a double lies beyond the 1074th behind the point, and no double has more than 767 significant ones.
// More are never generated; whoever wants more appends zeros.

#include "text/digits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>

#include "text/bignum.h"
#include "text/decimal.h"
#include "text/powersoften.h"

namespace qzvest {
namespace {

constexpr int32_t kMostDigits = 1075;
constexpr int32_t kMostQuickDigits = 18; // below 2^60
constexpr int32_t kMostQuickBits = 61;
constexpr int32_t kDigitsInAStep = 9; // of a long division, by numbers below 2^32
constexpr int32_t kFractionBits = 52;
constexpr int32_t kExponentOffset = 1075; // of the stored exponent, for a whole mantissa

constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr auto kWholePowers = [] {
    std::array<uint64_t, kMostDecimalDigits> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

struct Binary {
    uint64_t mantissa;
    int32_t exponent;
};

// number is the value times 10^scale.
struct Scaled {
    uint64_t number;
    int32_t scale;
};

// Under the print's lock: the last digit string. It goes back to its free list when the next one is made.
Bignum *resultString;

char *NewResult(int32_t size)
{
    const auto words = (static_cast<uint32_t>(size) + 3) / 4;
    resultString = BignumAcquire(static_cast<uint32_t>(std::bit_width(words - 1)));
    return reinterpret_cast<char *>(resultString->Digits());
}

Binary Decompose(double magnitude)
{
    const auto bits = std::bit_cast<uint64_t>(magnitude);
    const auto stored = static_cast<int32_t>(bits >> kFractionBits);
    const uint64_t fraction = bits & ((uint64_t{1} << kFractionBits) - 1);
    if (stored == 0)
        return {fraction, 1 - kExponentOffset};
    return {fraction | uint64_t{1} << kFractionBits, stored - kExponentOffset};
}

// The decimal exponent of the value, the place of its first digit before the point counted from 0. It may be one too
// high, never too low.
int32_t EstimateExponent(double magnitude, Binary value)
{
    const int32_t unused = std::countl_zero(value.mantissa);
    const double first = static_cast<double>(value.mantissa << unused) * 0x1p-63; // 1 up to 2
    const int32_t binary = value.exponent + 63 - unused;
    const double logarithm =
        (first - 1.5) * 0.289529654602168 + 0.1760912590558 + static_cast<double>(binary) * 0.301029995663981;
    auto exponent = static_cast<int32_t>(logarithm);
    if (logarithm < 0 && logarithm != static_cast<double>(exponent))
        --exponent;
    if (exponent >= 0 && exponent < static_cast<int32_t>(std::size(kExactPowers)) && magnitude < kExactPowers[exponent])
        --exponent;
    return exponent;
}

Digits TextOf(Scaled result, DigitMode mode, int32_t wanted)
{
    if (result.number == 0)
        return {"", 0, -wanted};
    char *text = NewResult(kMostDecimalDigits);
    char *end = text + kMostDecimalDigits;
    const char *first = PutDecimal(end, result.number);
    const auto length = static_cast<int32_t>(end - first);
    if (mode == DigitMode::kSignificant)
        while (end[-1] == '0')
            --end;
    return {first, static_cast<int32_t>(end - first), length - result.scale};
}

// ---- Whole numbers ----

bool IsSmallWhole(Binary value)
{
    if (value.exponent >= 0)
        return value.exponent <= std::countl_zero(value.mantissa);
    return value.exponent > -64 && std::countr_zero(value.mantissa) >= -value.exponent;
}

Scaled RoundWhole(Binary value, DigitMode mode, int32_t wanted)
{
    const uint64_t number = value.exponent >= 0 ? value.mantissa << value.exponent : value.mantissa >> -value.exponent;
    int32_t length = 1;
    while (length < static_cast<int32_t>(kMostDecimalDigits) &&
           number >= kWholePowers[static_cast<std::size_t>(length)])
        ++length;
    if (mode == DigitMode::kBehindPoint || length <= wanted)
        return {number, 0};
    const int32_t dropped = length - wanted;
    const uint64_t unit = kWholePowers[static_cast<std::size_t>(dropped)];
    const uint64_t quotient = number / unit;
    const uint64_t rest = number % unit;
    const uint64_t half = unit / 2;
    const bool up = rest > half || (rest == half && quotient % 2 != 0);
    return {quotient + (up ? 1 : 0), -dropped};
}

// ---- 128 bits ----

struct QuickProduct {
    uint64_t whole; // the product without its fraction
    bool up;        // nearest is the next one
    bool certain;
};

// value * 10^scale. Not certain where the whole part may have more than kMostQuickBits.
QuickProduct MultiplyQuick(Binary value, int32_t scale)
{
    const PowerOfTen power = PowerOfTenOf(scale);
    const int32_t unused = std::countl_zero(value.mantissa);
    const uint64_t mantissa = value.mantissa << unused;
    // 192 bits: high and low.
    const uint128 lowest = static_cast<uint128>(static_cast<uint64_t>(power.bits)) * mantissa;
    const uint128 upper = (power.bits >> 64) * mantissa + (lowest >> 64);
    const auto high = static_cast<uint64_t>(upper >> 64);
    const uint128 low = upper << 64 | static_cast<uint64_t>(lowest);

    const int32_t fractionBits = -(value.exponent - unused + power.exponent);
    if (fractionBits < 192 - kMostQuickBits)
        return {0, false, false};
    if (fractionBits > 192)
        return {0, false, true}; // below one half
    const int32_t highFraction = fractionBits - 128;
    const uint64_t whole = highFraction == 64 ? 0 : high >> highFraction;
    const uint64_t highHalf = uint64_t{1} << (highFraction - 1);
    const uint64_t highMask = highHalf - 1 + highHalf; // twice the half may not fit
    const uint64_t highRest = high & highMask;

    if (IsExactPowerOfTen(scale)) {
        const bool above = highRest > highHalf || (highRest == highHalf && low != 0);
        const bool tie = highRest == highHalf && low == 0;
        return {whole, above || (tie && whole % 2 != 0), true};
    }
    if (highRest >= highHalf) // and so above the half: the true product is above ours
        return {whole, true, true};
    const bool near = highHalf - highRest == 1 && low >> 67 == static_cast<uint128>(-1) >> 67;
    return {whole, false, !near};
}

bool RoundQuick(Binary value, double magnitude, DigitMode mode, int32_t wanted, Scaled &result)
{
    int32_t scale = wanted;
    if (mode == DigitMode::kSignificant) {
        if (wanted > kMostQuickDigits)
            return false;
        scale -= EstimateExponent(magnitude, value) + 1;
    }
    if (scale < kLowestPowerOfTen || scale >= kHighestPowerOfTen) // one more may be needed
        return false;
    QuickProduct product = MultiplyQuick(value, scale);
    if (mode == DigitMode::kSignificant) {
        if (product.whole < kWholePowers[static_cast<std::size_t>(wanted - 1)])
            product = MultiplyQuick(value, ++scale); // the estimate was one too high
    }
    result = {product.whole + (product.up ? 1 : 0), scale};
    return product.certain;
}

// ---- Big numbers ----

// The value is numerator / denominator * 10^exponent, and that quotient is from 1 up to 10.
struct Fraction {
    Bignum *numerator;
    Bignum *denominator;
    int32_t exponent;
};

Fraction FractionOf(Binary value, int32_t exponent)
{
    Fraction fraction{BignumFrom(value.mantissa), BignumFrom(1), exponent};
    int32_t above = std::max(value.exponent, 0);
    int32_t below = std::max(-value.exponent, 0);
    if (exponent >= 0) {
        fraction.denominator = BignumTimesPowerOf5(fraction.denominator, static_cast<uint32_t>(exponent));
        below += exponent;
    } else {
        fraction.numerator = BignumTimesPowerOf5(fraction.numerator, static_cast<uint32_t>(-exponent));
        above -= exponent;
    }
    const int32_t common = std::min(above, below);
    // The quotient step wants the highest bit of its divisor set.
    const auto shift = static_cast<uint32_t>(below - common);
    const uint32_t fill = (0 - (BignumBits(fraction.denominator) + shift)) % 32;
    fraction.denominator = BignumShiftLeft(fraction.denominator, shift + fill);
    fraction.numerator = BignumShiftLeft(fraction.numerator, static_cast<uint32_t>(above - common) + fill);
    if (BignumCompare(fraction.numerator, fraction.denominator) < 0) { // the estimate was one too high
        --fraction.exponent;
        fraction.numerator = BignumMultiplyAdd(fraction.numerator, 10, 0);
    }
    return fraction;
}

// Compares what is left of the value with half a unit of the last digit generated.
int CompareWithHalf(Fraction &fraction)
{
    fraction.numerator = BignumMultiplyAdd(fraction.numerator, 2, 0);
    return BignumCompare(fraction.numerator, fraction.denominator);
}

// Adds one unit to the last digit; gives the digits that are left without trailing zeros, none if all were nines.
int32_t RoundUp(char *text, int32_t count)
{
    while (count > 0 && text[count - 1] == '9')
        --count;
    if (count > 0)
        ++text[count - 1];
    return count;
}

uint32_t StepFactor(int32_t digits)
{
    return static_cast<uint32_t>(kWholePowers[static_cast<std::size_t>(digits)]);
}

// So many digits, zeros in front included.
void PutDigits(char *text, uint32_t value, int32_t count)
{
    for (int32_t i = count; i-- > 0; value /= 10)
        text[i] = static_cast<char>('0' + value % 10);
}

Digits Divide(Fraction &fraction, int32_t count)
{
    char *text = NewResult(std::max(count, 1));
    int32_t made = 0;
    while (made < count && fraction.numerator->count != 0) {
        // The first step gives the one digit before the point, each further one nine.
        const int32_t step = made == 0 ? 1 : std::min(count - made, kDigitsInAStep);
        if (made > 0)
            fraction.numerator = BignumMultiplyAdd(fraction.numerator, StepFactor(step), 0);
        PutDigits(text + made, BignumQuotientStep(fraction.numerator, fraction.denominator), step);
        made += step;
    }
    if (count == 0) // rounded to the place before the first digit, whose half is 5
        fraction.denominator = BignumMultiplyAdd(fraction.denominator, 10, 0);
    const int half = CompareWithHalf(fraction);
    const bool odd = made > 0 && (text[made - 1] - '0') % 2 != 0;
    if (half > 0 || (half == 0 && odd)) {
        made = RoundUp(text, made);
        if (made == 0) {
            text[0] = '1';
            return {text, 1, fraction.exponent + 2};
        }
    }
    while (made > 0 && text[made - 1] == '0')
        --made;
    return {text, made, fraction.exponent + 1};
}

Digits DivideBig(Binary value, DigitMode mode, int32_t wanted, int32_t exponent)
{
    Fraction fraction = FractionOf(value, exponent);
    const int32_t count = mode == DigitMode::kSignificant ? wanted : wanted + fraction.exponent + 1;
    const Digits digits = count < 0 ? Digits{"", 0, -wanted} : Divide(fraction, count);
    BignumRelease(fraction.numerator);
    BignumRelease(fraction.denominator);
    return digits.count == 0 ? Digits{"", 0, -wanted} : digits;
}

} // namespace

Digits GenerateDigits(double magnitude, DigitMode mode, int32_t wanted)
{
    BignumRelease(resultString);
    resultString = nullptr;
    if (magnitude == 0)
        return {"0", 1, 1};
    wanted = std::min(wanted, kMostDigits);
    if (mode == DigitMode::kSignificant)
        wanted = std::max(wanted, 1);
    const Binary value = Decompose(magnitude);
    if (IsSmallWhole(value))
        return TextOf(RoundWhole(value, mode, wanted), mode, wanted);
    Scaled quick;
    if (RoundQuick(value, magnitude, mode, wanted, quick))
        return TextOf(quick, mode, wanted);
    return DivideBig(value, mode, wanted, EstimateExponent(magnitude, value));
}

} // namespace qzvest
