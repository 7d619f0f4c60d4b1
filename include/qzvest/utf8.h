/* Small tools on UTF-8 strings: bytes ended by a zero byte.
 *
 * In spite of the name every call works on bytes and none decodes UTF-8. No call reports a status, and only
 * the calls that say so accept NULL.
 * Threads: all calls are reentrant on distinct strings. SMUTF8StrUpperCase, SMUTF8StrLowerCase and
 * SMUTF8Strstri read the locale of the process. */
#ifndef QZVEST_UTF8_H
#define QZVEST_UTF8_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMUTF8ltrim, SMUTF8rtrim, SMUTF8trim - take white space off the head, the tail, or both: tab, line feed,
 * carriage return and blank, but neither vertical tab nor form feed.
 *   string  changed in place, or NULL
 * What goes is overwritten with zero bytes and nothing is moved, so after white space was taken off the head the
 * old pointer leads to an empty string and the text stands at the pointer returned.
 * Returns SMUTF8ltrim, SMUTF8trim: the first byte kept, which may be the terminator; SMUTF8rtrim: its argument.
 *   NULL for NULL. */
SM_EXPORT char *SMUTF8ltrim(char *string);
SM_EXPORT char *SMUTF8rtrim(char *string);
SM_EXPORT char *SMUTF8trim(char *string);

/* SMUTF8StrUpperCase, SMUTF8StrLowerCase - replace each byte as toupper and tolower do in the locale of the
 * process. Return the argument. */
SM_EXPORT char *SMUTF8StrUpperCase(char *string);
SM_EXPORT char *SMUTF8StrLowerCase(char *string);

/* SMUTF8Strrev - reverse the bytes in place, also those of a sequence of many bytes, which is then no longer one.
 * Returns the argument. */
SM_EXPORT char *SMUTF8Strrev(char *string);

/* SMUTF8Strdup - a copy.
 * Returns NULL for NULL and when memory runs out. The caller owns the copy and ends it with SMFreeGeneric. */
SM_EXPORT char *SMUTF8Strdup(const char *string);

/* SMUTF8Strnicmp - compare without regard to the case of ASCII letters, whatever the locale.
 *   maximum  bytes of both to look at, at most; 0 finds all strings equal
 * Returns the difference of the first two folded bytes that differ, as unsigned numbers, or 0. */
SM_EXPORT int32_t SMUTF8Strnicmp(const char *first, const char *second, uint32_t maximum);

/* SMUTF8Strstri - search without regard to case, by the locale's idea of it.
 * Returns the first place in haystack that matches needle, haystack itself for an empty needle, or NULL: no match,
 *   or an argument is NULL. */
SM_EXPORT char *SMUTF8Strstri(const char *haystack, const char *needle);

#ifdef __cplusplus
}
#endif

#endif
