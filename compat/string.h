// Bounded string calls of the C standard's annex K, which the C library lacks. A violated constraint (a NULL, a
// bound that is 0 or absurdly large, a result that does not fit) leaves an empty destination where there is one and
// gives an errno value; 0 is success. No constraint handler is called.
#ifndef COMPAT_STRING_H
#define COMPAT_STRING_H

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace qzvest {

// A bound above this is taken for a negative number that went astray.
constexpr size_t kLargestBound = SIZE_MAX / 2;

// True when a destination of this bound can be written to at all.
inline bool UsableRoom(const void *destination, size_t bound)
{
    return destination != nullptr && bound != 0 && bound <= kLargestBound;
}

int strcpy_s(char *destination, size_t bound, const char *source);

// The bound is that of the whole destination, what it holds already included.
int strcat_s(char *destination, size_t bound, const char *source);

// The 25 characters of the C library's time text, line feed included; the bound is at least 26. Years outside 0 to
// 9999 are refused.
int ctime_s(char *destination, size_t bound, const time_t *time);

} // namespace qzvest

#endif
