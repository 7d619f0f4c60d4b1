#include <algorithm>
#include <cfloat>
#include <cmath>

#include "text/decimal.h"
#include "text/digits.h"
#include "text/field.h"

namespace qzvest {
namespace {

constexpr int64_t kDefaultPrecision = 6;

bool IsAlternate(const Field &field)
{
    return (field.flags & kFieldAlternate) != 0;
}

Digits Generate(double magnitude, DigitMode mode, int64_t wanted)
{
    return GenerateDigits(magnitude, mode, static_cast<int32_t>(std::min<int64_t>(wanted, INT32_MAX)));
}

// The digits before the point, and zeros up to it; 0 if there are none.
void AddWholePart(const Digits &digits, Body &body)
{
    if (digits.point <= 0) {
        body.Add("0", 1);
        return;
    }
    body.Add(digits.text, std::min(digits.count, digits.point));
    body.AddZeros(digits.point - digits.count);
}

// So many digits behind the point, after it the zeros that lead to the first digit, and zeros to the end.
void AddFraction(const Digits &digits, int64_t wanted, Body &body)
{
    const int64_t leading = std::min<int64_t>(std::max(-digits.point, 0), wanted);
    const int32_t skipped = std::clamp(digits.point, 0, digits.count);
    const int64_t own = digits.count - skipped;
    body.AddZeros(leading);
    body.Add(digits.text + skipped, own);
    body.AddZeros(wanted - leading - own);
}

// The letter, a sign, and two or three digits.
void AddExponent(int32_t exponent, char letter, Body &body)
{
    char *text = body.scratch;
    *text++ = letter;
    *text++ = exponent < 0 ? '-' : '+';
    auto magnitude = static_cast<std::size_t>(std::abs(exponent));
    if (magnitude >= 100) {
        *text++ = static_cast<char>('0' + magnitude / 100);
        magnitude %= 100;
    }
    *text++ = kDigitPairs[2 * magnitude];
    *text++ = kDigitPairs[2 * magnitude + 1];
    body.Add(body.scratch, text - body.scratch);
}

// Trailing zeros only where the alternate form asks for them: 1.5 is 1.5e+00. This is settled.
void ScientificBody(const Field &field, const Digits &digits, int64_t significant, char letter, Body &body)
{
    body.Add(digits.text, 1);
    if (digits.count > 1 || IsAlternate(field))
        body.Add(".", 1);
    body.Add(digits.text + 1, digits.count - 1);
    if (IsAlternate(field))
        body.AddZeros(significant - digits.count);
    AddExponent(digits.point - 1, letter, body);
}

void FixedBody(const Field &field, double magnitude, int64_t precision, Body &body)
{
    const Digits digits = Generate(magnitude, DigitMode::kBehindPoint, precision);
    AddWholePart(digits, body);
    if (precision > 0 || IsAlternate(field))
        body.Add(".", 1);
    AddFraction(digits, precision, body);
}

void ExponentBody(const Field &field, double magnitude, int64_t precision, Body &body)
{
    const int64_t significant = precision + 1;
    const Digits digits = Generate(magnitude, DigitMode::kSignificant, significant);
    ScientificBody(field, digits, significant, field.letter, body);
}

void GeneralBody(const Field &field, double magnitude, int64_t precision, Body &body)
{
    const int64_t significant = std::max<int64_t>(precision, 1);
    const Digits digits = Generate(magnitude, DigitMode::kSignificant, significant);
    if (digits.point <= -4 || digits.point > significant) {
        ScientificBody(field, digits, significant, static_cast<char>(field.letter - 'g' + 'e'), body);
        return;
    }
    // The place of the last digit, from the point.
    const int64_t last = IsAlternate(field) ? significant - digits.point : digits.count - digits.point;
    AddWholePart(digits, body);
    if (last > 0 || IsAlternate(field))
        body.Add(".", 1);
    AddFraction(digits, std::max<int64_t>(last, 0), body);
}

} // namespace

void FormatDouble(Field &field, double value, Body &body)
{
    field.flags |= kFieldFloat;
    const double magnitude = std::fabs(value);
    const bool finite = magnitude <= DBL_MAX;
    // A NaN is told from infinity by its missing minus alone.
    if (std::signbit(value) && (finite || value < 0))
        field.sign = '-';
    if (!finite) {
        body.Add("Inf", 3);
        return;
    }
    const int64_t precision = field.precision < 0 ? kDefaultPrecision : field.precision;
    switch (field.letter) {
    case 'f':
        FixedBody(field, magnitude, precision, body);
        break;
    case 'e':
    case 'E':
        ExponentBody(field, magnitude, precision, body);
        break;
    default:
        GeneralBody(field, magnitude, precision, body);
    }
}

} // namespace qzvest
