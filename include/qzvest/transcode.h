/* Text between UTF-8 and UCS-2 strings.
 *
 * A UCS-2 string is unsigned 16-bit units in host byte order, ended by a zero unit; a UTF-8 string is bytes ended
 * by a zero byte. Sizes are in BYTES in both directions and include the terminator, of 2 bytes or of 1.
 * Above U+FFFF the two calls are not each other's inverse, and neither makes UTF-16; see there.
 *
 * With a NULL destination a call stores the size that the whole result needs; it fails for bad text as it would
 * with a destination. With one, the size word holds the destination's size on entry and the bytes written on
 * success. On failure the size word is as it was, and the destination holds the characters that came before, as
 * many as fit, without a terminator.
 * Threads: both calls are reentrant. */
#ifndef QZVEST_TRANSCODE_H
#define QZVEST_TRANSCODE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMUCS2StrToUTF8Str - write a UCS-2 string as UTF-8.
 *   destination  or NULL to ask for the size
 *   sizeInOut    in: bytes at destination; out: bytes of the result
 *   source       Every unit becomes a character of its own, but for surrogates (0xD800 to 0xDFFF): each of them
 *                stands for what the string begins with. If that is no surrogate, its first character comes once
 *                more; if it is a pair, high before low, the pair's character comes, and so twice for the pair.
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_BAD_FORMAT (the string begins with a surrogate but
 *   not with a pair), SM_STATUS_INVALID_PARAMETER (sizeInOut or source NULL; nothing is touched). */
SM_EXPORT uint32_t SMUCS2StrToUTF8Str(char *destination, uint32_t *sizeInOut, const uint16_t *source);

/* SMUTF8StrToUCS2Str - write a UTF-8 string as UCS-2.
 *   destination  or NULL to ask for the size
 *   sizeInOut    in: bytes at destination; out: bytes of the result
 *   source       Forms of 1 to 6 bytes. The bytes behind a lead byte give six bits each and are not checked but
 *                for zero; overlong forms and encoded surrogates are taken. A character above U+FFFF becomes two
 *                units: 0xD800 and bits 10 to 19, 0xDC00 and bits 0 to 9, of the character itself and not, as in
 *                UTF-16, of what is left after subtracting 0x10000.
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_BAD_FORMAT (a lead byte that is none, a sequence cut
 *   short by the terminator, a character above U+10FFFF), SM_STATUS_INVALID_PARAMETER (sizeInOut or source NULL;
 *   nothing is touched). */
SM_EXPORT uint32_t SMUTF8StrToUCS2Str(uint16_t *destination, uint32_t *sizeInOut, const char *source);

#ifdef __cplusplus
}
#endif

#endif
