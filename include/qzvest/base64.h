/* Base64 (RFC 4648) of bytes and back.
 *
 * The caller provides and sizes the destination; neither call takes its capacity or returns a length, and both
 * end their output with a zero byte. There is no failure: both return SM_STATUS_OK whatever they are given.
 * Pointers are not tested, and source and destination are different memory.
 * Threads: the calls use their arguments alone. */
#ifndef QZVEST_BASE64_H
#define QZVEST_BASE64_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMBase64Encode - the text of bytes, in one line whatever its length.
 *   text      takes (size + 2) / 3 * 4 + 1 bytes, or 1 for a size below 0
 *   size      bytes at bytes; 0 and below give an empty text
 *   alphabet  64 characters, or NULL for A-Z a-z 0-9 + /; the pad character is = with any
 * Returns SM_STATUS_OK. */
SM_EXPORT uint32_t SMBase64Encode(char *text, const void *bytes, int32_t size, const char *alphabet);

/* SMBase64Decode - the bytes of a text in the default alphabet.
 *   bytes   takes length / 4 * 3 + 1 bytes at most, or 1 for a length below 0; how many were written can be
 *           told from the text alone
 *   text    need not be terminated; it is taken in groups of four characters, as they come
 *   length  characters at text; those behind the last whole group are ignored, below 4 the result is empty
 * A character outside the alphabet, a line break too, counts as the value 63. A = in the first or second place
 * of a group drops the group, in the third it leaves one byte of it, in the fourth two; the groups behind it
 * are decoded all the same and their bytes follow directly.
 * Returns SM_STATUS_OK. */
SM_EXPORT uint32_t SMBase64Decode(void *bytes, const char *text, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
