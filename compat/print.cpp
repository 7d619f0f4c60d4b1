#include "compat/print.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "compat/string.h"

namespace qzvest {
namespace {

int PrintDigits(bool minus, unsigned long magnitude, char *destination, size_t bound, int radix)
{
    if (!UsableRoom(destination, bound))
        return EINVAL;
    *destination = '\0';
    if (radix < 2 || radix > 36)
        return EINVAL;
    char text[sizeof magnitude * CHAR_BIT + 2]; // a minus sign, base 2, the terminator
    char *start = text + sizeof text;
    *--start = '\0';
    const auto base = static_cast<unsigned long>(radix);
    do {
        *--start = "0123456789abcdefghijklmnopqrstuvwxyz"[magnitude % base];
        magnitude /= base;
    } while (magnitude != 0);
    if (minus)
        *--start = '-';
    return strcpy_s(destination, bound, start);
}

} // namespace

int sprintf_s(char *destination, size_t bound, const char *format, ...)
{
    if (!UsableRoom(destination, bound))
        return 0;
    *destination = '\0';
    if (format == nullptr)
        return 0;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(destination, bound, format, arguments);
    va_end(arguments);
    const bool fits = length >= 0 && static_cast<size_t>(length) < bound;
    // A length that no int can say comes back as 0 or below, with text in the room all the same.
    destination[fits ? length : 0] = '\0';
    return fits || length < 0 ? length : 0;
}

int _ltoa_s(long value, char *destination, size_t bound, int radix)
{
    const auto bits = static_cast<unsigned long>(value);
    const bool minus = value < 0 && radix == 10;
    return PrintDigits(minus, minus ? 0 - bits : bits, destination, bound, radix);
}

int _ultoa_s(unsigned long value, char *destination, size_t bound, int radix)
{
    return PrintDigits(false, value, destination, bound, radix);
}

} // namespace qzvest
