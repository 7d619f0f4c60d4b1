/* Formatted print into a bounded buffer: the library's own printf.
 *
 * It is independent of the C library and of the locale: the decimal point is always ".", digits are exact and
 * correctly rounded, an exact tie to the even digit. It resembles C's printf and is not the same; what differs is
 * marked with "!" below. A compiler's check of printf formats does not fit it.
 *
 * A format is text, copied as it is, and conversions: "%", then flags, width, precision and size letters, then the
 * conversion letter. A format that ends behind a "%" and before a letter ends the output there.
 *
 * ! Flags, width, precision and size letters come in any order, and again; of widths and precisions the last counts.
 *
 *   " "      a space before a number without a minus sign, unless "+" stands too
 *   "+"      a sign before every number: d, i, D and floating point only
 *   "-"      left-adjusted: spaces behind; "0" is then without effect
 *   "#"      alternate form, see the conversions
 *   "0"      fills up to the width with zeros, behind sign and prefix.
 *            ! For texts and characters too: "%05s" of "ab" is 000ab.
 *   1 to 9   begins the width, the least bytes of the field, at most 2147483647; digits are read to the first other
 *            byte
 *   "*"      the width is the next argument, an int; a negative one sets "-" and its magnitude counts
 *   "."      a precision follows, at most 2147483647: digits, or "*" for the next argument, an int; with neither it
 *            is 0. Negative: none. ! A number too large, like 2147483648, counts as negative.
 *   "h"      a 16-bit integer; ! "hh" is the same: no 8 bits
 *   "l"      ! a 64-bit integer on every platform; "ll" is the same
 *   "L"      ! nothing: a long double cannot be printed, the argument is a double
 *
 * Integers are of 32 bits, or as "h" and "l" say. A precision is the least count of digits, and cancels "0"; with
 * precision 0 the value 0 has no digits.
 *
 *   d i      signed decimal                     ! D  the same as ld
 *   u        unsigned decimal                   ! U  the same as lu
 *   o        octal                              ! O  the same as lo
 *            "#" puts a 0 before digits that don't begin with one; ! none for value 0 with precision 0
 *   x X      hexadecimal, lower or upper case; "#" gives 0x or 0X before all but 0
 *   p        a pointer: ! lower-case hexadecimal, always behind 0x: NULL is 0x0
 *
 * Texts. A precision is the most bytes that are taken, and a text needs no terminator within them.
 *
 *   c        the low byte of an int, a zero byte too; ! there is no wide form
 *   s        bytes; "l" changes nothing; NULL prints "(null)", as far as the precision lets it
 *   S        ! UCS-2 text, const uint16_t *, printed as UTF-8 as SMUCS2StrToUTF8Str has it. Width and precision count
 *            bytes: the precision can cut a character. NULL prints the three characters U+6E28, U+6C75, U+296C (on a
 *            big-endian host their bytes change places). Where the text cannot be converted, or memory runs out,
 *            the output ends before the field.
 *   n        prints nothing: stores how many bytes the format has produced so far, ! those refused for lack of
 *            room included, in an int32_t; with "h" in an int16_t, with "l" in an int64_t
 *
 * Floating point, always a double. The default precision is 6.
 *
 *   f        fixed, precision digits behind the point
 *   e E      exponent form, precision digits behind the point at most. ! Trailing zeros are dropped, the point with
 *            them, unless "#" stands: "%e" of 1.5 is 1.5e+00, of 100.0 1e+02; "%#e" of 1.5 is 1.500000e+00, as in C.
 *   g G      precision significant digits, 0 counting as 1: exponent form for exponents below -4 or from the
 *            precision on, fixed form else; trailing zeros are dropped unless "#" stands
 *            The exponent has a sign and at least two digits. "#" keeps the point even with nothing behind it.
 *            ! Infinity and NaN print "Inf" in all of them, upper case or not; with a minus sign for negative
 *            infinity, for NaN never; "+", " " and "0" count: "%05f" is 00Inf.
 *
 * ! Any other character, "%" included, prints itself as a field of one byte with the width that stands. It takes no
 *   argument. Such are F, a, A, C and the size letters j, z, t, q: "%zu" prints zu. "%1$d" prints "$d": arguments
 *   cannot be picked by position.
 *
 * The result is the count of bytes put into the destination, without the terminator. ! It is not what an unbounded
 * print would give: a count of size - 1 is the sign of a text that was cut, or that just fitted. There is no error
 * result.
 *
 *   destination  receives the text, always terminated: with size 0 too, where the zero byte goes to the first byte.
 *                NULL: nothing is stored and the bytes are counted, ! but to size - 1 at most, so that a call
 *                measures a text only within the size it is given.
 *   size         bytes of the destination. ! Above 0x80000000 there is no room at all: no text, just the terminator
 *                at the first byte, and the result is 0.
 *   format       not NULL
 *
 * Threads: any thread may call at any time. One lock of the process is held for the whole of a call, so that prints
 * go one after the other; an argument's text must not change meanwhile. Not for signal handlers. Memory for the digits
 * of a double is kept for the next and not given back; running out of it is not survived. */
#ifndef QZVEST_PRINT_H
#define QZVEST_PRINT_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>
#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMsnprintf - print the arguments by the format. Everything above.
 *   ...  one argument for each conversion and each "*", in order
 * Returns the bytes put into the destination: at most size - 1, and 0 where size is 0 or above 0x80000000. */
SM_EXPORT uint32_t SMsnprintf(char *destination, uint32_t size, const char *format, ...);

/* SMvsnprintf - the same over an argument list, which the caller ends and does not read on. Returns
 * the same. */
SM_EXPORT uint32_t SMvsnprintf(char *destination, uint32_t size, const char *format, va_list arguments);

#ifdef __cplusplus
}
#endif

#endif
