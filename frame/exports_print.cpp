#include <qzvest/print.h>

#include "text/format.h"

extern "C" {

uint32_t SMsnprintf(char *destination, uint32_t size, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const uint32_t stored = qzvest::SMvsnprintf(destination, size, format, arguments);
    va_end(arguments);
    return stored;
}

uint32_t SMvsnprintf(char *destination, uint32_t size, const char *format, va_list arguments)
{
    return qzvest::SMvsnprintf(destination, size, format, arguments);
}

} // extern "C"
