/* UCS-2 strings: unsigned 16-bit units in host byte order, ended by a zero unit.
 *
 * Every call works on units, not on characters: a surrogate pair is two unrelated units. Counts are units.
 * No pointer is tested for NULL but where it says so, and no call knows the room at its destination: an
 * overflow is the caller's fault, also in the calls that end in _s. Those have their plain twin's arguments
 * with one more, which is not looked at, and do exactly what the twin does.
 *
 * Threads: all calls are reentrant on distinct strings but SMUCS2Strtok and SMUCS2Strtok_s, which share one
 * position in the whole process. */
#ifndef QZVEST_UCS2_H
#define QZVEST_UCS2_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMUCS2Strlen - the number of units before the terminator. */
SM_EXPORT uint32_t SMUCS2Strlen(const uint16_t *string);

/* SMUCS2Strcpy, SMUCS2Strcat - copy the source with its terminator to the destination, or over the
 * destination's terminator.
 *   size  not looked at
 * Return the destination. */
SM_EXPORT uint16_t *SMUCS2Strcpy(uint16_t *destination, const uint16_t *source);
SM_EXPORT uint16_t *SMUCS2Strcpy_s(uint16_t *destination, uint32_t size, const uint16_t *source);
SM_EXPORT uint16_t *SMUCS2Strcat(uint16_t *destination, const uint16_t *source);
SM_EXPORT uint16_t *SMUCS2Strcat_s(uint16_t *destination, uint32_t size, const uint16_t *source);

/* SMUCS2Strncpy - copy at most count units, the terminator if it is among them. The rest of the destination
 * stays as it is: nothing is padded, and count units without a terminator are not terminated.
 * SMUCS2Strncat - append at most count units and a terminator in any case; a count of 0 does nothing.
 *   size  not looked at
 * Return the destination. */
SM_EXPORT uint16_t *SMUCS2Strncpy(uint16_t *destination, const uint16_t *source, uint32_t count);
SM_EXPORT uint16_t *SMUCS2Strncpy_s(uint16_t *destination, uint32_t size, const uint16_t *source, uint32_t count);
SM_EXPORT uint16_t *SMUCS2Strncat(uint16_t *destination, const uint16_t *source, uint32_t count);
SM_EXPORT uint16_t *SMUCS2Strncat_s(uint16_t *destination, uint32_t size, const uint16_t *source, uint32_t count);

/* SMUCS2Strcmp - 0 when equal, else the difference of the first two units that differ, first less second, cut
 * to 16 bits: 1 to 65535. Tells equal from different and nothing else; it has no sign to order by. */
SM_EXPORT uint32_t SMUCS2Strcmp(const uint16_t *first, const uint16_t *second);

/* SMUCS2Strchr - the first such unit, or NULL. The terminator counts: unit 0 finds it. */
SM_EXPORT uint16_t *SMUCS2Strchr(const uint16_t *string, uint16_t unit);

/* SMUCS2Strstr - the first place where needle stands in haystack, or NULL. An empty needle gives haystack. */
SM_EXPORT uint16_t *SMUCS2Strstr(const uint16_t *haystack, const uint16_t *needle);

/* SMUCS2Strspn, SMUCS2Strcspn - how many units the opening run has that are all in set, or all not in set. */
SM_EXPORT uint32_t SMUCS2Strspn(const uint16_t *string, const uint16_t *set);
SM_EXPORT uint32_t SMUCS2Strcspn(const uint16_t *string, const uint16_t *set);

/* SMUCS2Strtok - the next token of a string, or NULL when there is none.
 *   string      to begin with, or NULL to go on behind the last token; it is changed: a zero unit ends each token
 *   delimiters  units that separate tokens; may differ from call to call; empty: the rest is one token
 *   context     not looked at, may be NULL: both calls go on from the one position that the process has, which
 *               points into the string */
SM_EXPORT uint16_t *SMUCS2Strtok(uint16_t *string, const uint16_t *delimiters);
SM_EXPORT uint16_t *SMUCS2Strtok_s(uint16_t *string, const uint16_t *delimiters, uint16_t **context);

/* SMUCS2Strset - overwrite every unit before the terminator.
 * SMUCS2Strnset - write exactly count units, over the terminator and beyond it if count says so.
 *   size  not looked at
 * Return the string. */
SM_EXPORT uint16_t *SMUCS2Strset(uint16_t *string, uint16_t unit);
SM_EXPORT uint16_t *SMUCS2Strset_s(uint16_t *string, uint32_t size, uint16_t unit);
SM_EXPORT uint16_t *SMUCS2Strnset(uint16_t *string, uint16_t unit, uint32_t count);
SM_EXPORT uint16_t *SMUCS2Strnset_s(uint16_t *string, uint32_t size, uint16_t unit, uint32_t count);

/* SMUCS2Strrev - reverse the units in place. Returns the string. */
SM_EXPORT uint16_t *SMUCS2Strrev(uint16_t *string);

/* SMUCS2ToEscape - a UCS-2 string as printable ASCII: tab, line feed, carriage return and backslash as \t, \n, \r
 * and \\; 0x20 to 0x7F as they are; any other unit as \u and four lower-case hexadecimal digits.
 *   destination  takes the text, or NULL to ask for the size
 *   sizeInOut    in: bytes at destination; out: bytes of the text with its terminator, in every case but a NULL
 *                source and lack of memory. NULL: the destination is taken to have the room.
 *   source       may be NULL
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL (the text needs more than sizeInOut said, destination or not;
 *   nothing is written), SM_STATUS_BAD_ARGUMENT (source NULL), SM_STATUS_FAILED (no memory to begin with). When
 *   memory runs out later, the pieces that did not fit are missing and the status is SM_STATUS_OK. */
SM_EXPORT uint32_t SMUCS2ToEscape(char *destination, uint32_t *sizeInOut, const uint16_t *source);

#ifdef __cplusplus
}
#endif

#endif
