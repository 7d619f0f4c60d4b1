// Bounded print calls that the C library lacks: sprintf_s of the C standard's annex K, and its underscore relatives.
#ifndef COMPAT_PRINT_H
#define COMPAT_PRINT_H

#include <cstddef>

namespace qzvest {

// The characters written, without the terminator; 0 and an empty destination when the text does not fit or an
// argument is NULL; negative when the text cannot be encoded.
__attribute__((format(printf, 3, 4))) int sprintf_s(char *destination, size_t bound, const char *format, ...);

// The digits of value, lower case, radix 2 to 36. Only radix 10 knows a minus sign; in all others a negative value
// shows its 64 bits. Gives 0, or an errno value and an empty destination.
int _ltoa_s(long value, char *destination, size_t bound, int radix);
int _ultoa_s(unsigned long value, char *destination, size_t bound, int radix);

} // namespace qzvest

#endif
