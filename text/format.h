// The formatted print: an engine of its own, independent of the C library's and of the locale.
//
// One lock is around every call, since the digit generator has process-wide state.
#ifndef TEXT_FORMAT_H
#define TEXT_FORMAT_H

#include <cstdarg>
#include <cstdint>

namespace qzvest {

uint32_t SMvsnprintf(char *destination, uint32_t size, const char *format, va_list arguments);

// The same for internal callers. All give the bytes put into the destination, without the terminator.
int32_t SMFormatPrint(char *destination, uint32_t size, const char *format, ...);

// Attach step: the lock. A second attach gives what the first gave.
int FormatLockAttach();
void FormatLockDetach();

} // namespace qzvest

#endif
