#include "text/number.h"

#include <qzvest/status.h>

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "compat/print.h"
#include "compat/string.h"
#include "frame/heap.h"
#include "text/decimal.h"
#include "text/transcode.h"
#include "text/unitcount.h"

namespace qzvest {
namespace {

constexpr size_t kScratch = 128; // bytes of a number's text on its way to UCS-2

const char *SkipSpace(const char *string)
{
    while (std::isspace(static_cast<unsigned char>(*string)) != 0)
        ++string;
    return string;
}

// Wraps: nothing tests for overflow.
uint64_t ReadDigits(const char *string)
{
    uint64_t value = 0;
    for (; *string >= '0' && *string <= '9'; ++string)
        value = value * 10 + static_cast<uint64_t>(*string - '0');
    return value;
}

// The text as bytes, or nothing. There is one byte for each unit, and no more on purpose: what takes more does not
// fit, so that text with a unit from 0x80 up is no number even if it begins with digits.
HeapPtr<char> NumberText(const uint16_t *string)
{
    if (string == nullptr)
        return nullptr;
    const size_t room = UnitCount(string) + 1;
    HeapPtr<char> text(HeapRoom<char>(room));
    auto size = static_cast<uint32_t>(room);
    if (text && UCS2ToUTF8Convert(text.get(), &size, string) != SM_STATUS_OK)
        text.reset();
    return text;
}

// printFailed: what the print into text gave; not 0 for a failure.
int32_t HandOver(int printFailed, const char *text, uint16_t *destination, uint32_t *sizeInOut)
{
    if (printFailed != 0 || sizeInOut == nullptr)
        return -1;
    if (UTF8ToUCS2Convert(destination, sizeInOut, text) != SM_STATUS_OK)
        return -1;
    return *sizeInOut < sizeof(uint16_t) ? -1 : 0;
}

} // namespace

int64_t UTF8StrToInt64(const char *string)
{
    string = SkipSpace(string);
    const bool minus = *string == '-';
    if (minus || *string == '+')
        ++string;
    const uint64_t magnitude = ReadDigits(string);
    return static_cast<int64_t>(minus ? 0 - magnitude : magnitude);
}

uint64_t UTF8StrToUInt64(const char *string)
{
    string = SkipSpace(string);
    return ReadDigits(*string == '+' ? string + 1 : string);
}

void Int64ToUTF8Str(char *destination, int64_t value)
{
    auto magnitude = static_cast<uint64_t>(value);
    if (value < 0) {
        *destination++ = '-';
        magnitude = 0 - magnitude;
    }
    UInt64ToUTF8Str(destination, magnitude);
}

void UInt64ToUTF8Str(char *destination, uint64_t value)
{
    char text[kInt64Text];
    char *const end = text + sizeof text - 1;
    *end = '\0';
    const char *first = PutDecimal(end, value);
    std::memcpy(destination, first, static_cast<size_t>(end + 1 - first));
}

int32_t TimeToUTF8Str(const time_t *time, char *destination, uint32_t bound)
{
    char text[32];
    if (ctime_s(text, sizeof text, time) != 0)
        return -1;
    const size_t length = std::strlen(text);
    if (length == 0 || bound == 0)
        return 0;
    if (strcpy_s(destination, bound, text) != 0)
        destination[bound - 1] = '\0'; // besides the first byte, which strcpy_s has cleared
    else if (destination[length - 1] == '\n')
        destination[length - 1] = '\0';
    return 0;
}

int32_t UCS2StrToInt32(const uint16_t *string)
{
    const HeapPtr<char> text = NumberText(string);
    return text ? static_cast<int32_t>(std::strtol(text.get(), nullptr, 10)) : 0;
}

uint32_t UCS2StrToUInt32(const uint16_t *string)
{
    const HeapPtr<char> text = NumberText(string);
    return text ? static_cast<uint32_t>(std::strtoul(text.get(), nullptr, 10)) : 0;
}

int64_t UCS2StrToInt64(const uint16_t *string)
{
    const HeapPtr<char> text = NumberText(string);
    return text ? UTF8StrToInt64(text.get()) : 0;
}

uint64_t UCS2StrToUInt64(const uint16_t *string)
{
    const HeapPtr<char> text = NumberText(string);
    return text ? UTF8StrToUInt64(text.get()) : 0;
}

double UCS2StrToDouble(const uint16_t *string)
{
    const HeapPtr<char> text = NumberText(string);
    return text ? std::strtod(text.get(), nullptr) : 0.0;
}

int32_t Int32ToUCS2Str(int32_t value, int32_t radix, uint16_t *destination, uint32_t *sizeInOut)
{
    char text[kScratch];
    return HandOver(_ltoa_s(value, text, sizeof text, radix), text, destination, sizeInOut);
}

int32_t UInt32ToUCS2Str(uint32_t value, int32_t radix, uint16_t *destination, uint32_t *sizeInOut)
{
    char text[kScratch];
    return HandOver(_ultoa_s(value, text, sizeof text, radix), text, destination, sizeInOut);
}

int32_t DoubleToUCS2Str(int32_t precision, uint16_t *destination, uint32_t *sizeInOut, double value)
{
    char format[32];
    char text[kScratch];
    // Not by "%.*f": that takes a negative precision for none, and six digits.
    (void)sprintf_s(format, sizeof format, "%%.%df", precision);
    (void)sprintf_s(text, sizeof text, format, value); // a text that does not fit is empty, and that is no failure
    return HandOver(0, text, destination, sizeInOut);
}

int32_t TimeToUCS2Str(const time_t *time, uint16_t *destination, uint32_t *sizeInOut)
{
    char text[kScratch] = "";
    return HandOver(TimeToUTF8Str(time, text, sizeof text), text, destination, sizeInOut);
}

} // namespace qzvest
