// Each text is walked over once, to tell whether it is of the format; its value comes with that. The C library's
// parsers are asked only about what may be beyond 64 bits.
#include "values/parse.h"

#include <qzvest/status.h>
#include <qzvest/types.h>

#include <cerrno>
#include <cstdlib>

#include "text/number.h"
#include "values/digit.h"

namespace qzvest {
namespace {

struct Number {
    bool good; // the whole text is of the format
    bool minus;
    size_t digits;
    uint64_t magnitude; // wrapped
};

constexpr Number kNoNumber = {false, false, 0, 0};

template <unsigned kBase>
Number ScanDigits(const char *text, bool minus)
{
    Number number = {false, minus, 0, 0};
    const char *at = text;
    for (unsigned digit = DigitOf(*at); digit < kBase; digit = DigitOf(*++at))
        number.magnitude = number.magnitude * kBase + digit;
    number.good = *at == '\0';
    number.digits = static_cast<size_t>(at - text);
    return number;
}

bool IsEmpty(const char *text)
{
    return text == nullptr || *text == '\0';
}

// A sign alone is good.
Number ScanDecimal(const char *text)
{
    if (IsEmpty(text))
        return kNoNumber;
    return ScanDigits<10>(*text == '+' || *text == '-' ? text + 1 : text, *text == '-');
}

Number ScanOctal(const char *text)
{
    return IsEmpty(text) ? kNoNumber : ScanDigits<8>(text, false);
}

Number ScanHex(const char *text, size_t limit)
{
    if (IsEmpty(text))
        return kNoNumber;
    const bool prefix = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const Number number = ScanDigits<16>(prefix ? text + 2 : text, false);
    return number.digits != 0 && number.digits <= limit ? number : kNoNumber;
}

bool IsDecimalFormat(uint32_t format)
{
    return format == SMXLT_FORMAT_DEFAULT || format == SMXLT_FORMAT_DECIMAL;
}

uint64_t SignedMagnitude(const Number &number)
{
    return number.minus ? 0 - number.magnitude : number.magnitude;
}

// Parse is strtol or strtoul. All that differs is what is beyond 64 bits: the low half is the same.
template <typename Long>
uint32_t ParseLow(const char *text, uint32_t format, Long (*parse)(const char *, char **, int), uint32_t *statusOut)
{
    Number number = kNoNumber;
    int base = 10;
    constexpr size_t kSure = 18; // digits that are within 64 bits whatever they are
    if (IsDecimalFormat(format)) {
        number = ScanDecimal(text);
    } else if (format == SMXLT_FORMAT_OCTAL) {
        number = ScanOctal(text);
        base = 8;
    } else if (format == SMXLT_FORMAT_HEX) {
        number = ScanHex(text, 8);
    }
    *statusOut = SM_STATUS_INVALID_PARAMETER;
    if (!number.good || number.digits == 0)
        return 0;
    errno = 0;
    const uint64_t value =
        number.digits > kSure ? static_cast<uint64_t>(parse(text, nullptr, base)) : SignedMagnitude(number);
    if (errno != 0)
        return 0;
    *statusOut = SM_STATUS_OK;
    return static_cast<uint32_t>(value);
}

} // namespace

int32_t SMXLTParseSigned32(const char *text, uint32_t format, uint32_t *statusOut)
{
    return static_cast<int32_t>(ParseLow(text, format, std::strtol, statusOut));
}

uint32_t SMXLTParseUnsigned32(const char *text, uint32_t format, uint32_t *statusOut)
{
    return ParseLow(text, format, std::strtoul, statusOut);
}

int64_t SMXLTParseSigned64(const char *text, uint32_t format, uint32_t *statusOut)
{
    if (format == SMXLT_FORMAT_OCTAL || format == SMXLT_FORMAT_HEX) {
        *statusOut = SM_STATUS_UNSUPPORTED;
        return 0;
    }
    const Number number = IsDecimalFormat(format) ? ScanDecimal(text) : kNoNumber;
    *statusOut = number.good ? SM_STATUS_OK : SM_STATUS_INVALID_PARAMETER;
    return number.good ? static_cast<int64_t>(SignedMagnitude(number)) : 0;
}

// A minus sign passes the test, but there is nothing that it could mean: a negative number is 0 and no failure.
uint64_t SMXLTParseUnsigned64(const char *text, uint32_t format, uint32_t *statusOut)
{
    if (format == SMXLT_FORMAT_OCTAL) {
        *statusOut = SM_STATUS_UNSUPPORTED;
        return 0;
    }
    Number number = kNoNumber;
    if (format == SMXLT_FORMAT_HEX)
        number = ScanHex(text, 16);
    else if (IsDecimalFormat(format))
        number = ScanDecimal(text);
    *statusOut = number.good ? SM_STATUS_OK : SM_STATUS_INVALID_PARAMETER;
    return number.good && !number.minus ? number.magnitude : 0;
}

double SMXLTParseDouble(const char *text, uint32_t format, uint32_t *statusOut)
{
    *statusOut = SM_STATUS_OK;
    if (IsDecimalFormat(format) && ScanDecimal(text).good)
        return static_cast<double>(UTF8StrToInt64(text));
    return std::strtod(text, nullptr);
}

} // namespace qzvest
