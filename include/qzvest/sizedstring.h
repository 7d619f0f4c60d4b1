/* Sized strings: growable text in UCS-2 (SMSSUCS2Str) or UTF-8 (SMSSUTF8Str).
 *
 * The record is the caller's; its buffer belongs to these calls, from Alloc to Free. The order of use is
 * Alloc, any number of appends, Free. capacity counts bytes in both records; length counts units in an
 * SMSSUCS2Str, bytes in an SMSSUTF8Str. A record is never NULL here: no call tests it.
 *
 * Appends report no failure. They return the record's text, which may have moved, and when memory runs out
 * or a source cannot be converted they change nothing; who wants certainty compares length before and after.
 * A NULL source, or a record without a buffer, changes nothing either; only without a buffer is the result
 * NULL. A buffer that is too small doubles below 1 MiB and grows to 125 % above, or to what is needed if
 * that is more; from 34,359,739 bytes on it grows by what is needed alone. An append that needs 4 GiB or more
 * changes nothing.
 *
 * Threads: a record has no lock and belongs to one thread at a time. */
#ifndef QZVEST_SIZEDSTRING_H
#define QZVEST_SIZEDSTRING_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMSSUCS2StrAlloc, SMSSUTF8StrAlloc - give a record an empty text.
 *   record  its fields are written without being read: a buffer that it already has is forgotten
 *   size    bytes of the first buffer; at least 2 in a UCS-2 record, whose terminator is written in any case
 * Returns the text, or NULL for size 0 and when memory runs out; the record then has no text, and capacity and
 * length stay as they are. */
SM_EXPORT uint16_t *SMSSUCS2StrAlloc(SMSSUCS2Str *record, uint32_t size);
SM_EXPORT char *SMSSUTF8StrAlloc(SMSSUTF8Str *record, uint32_t size);

/* SMSSUCS2StrFree, SMSSUTF8StrFree - free the buffer and clear the record. May be called twice. */
SM_EXPORT void SMSSUCS2StrFree(SMSSUCS2Str *record);
SM_EXPORT void SMSSUTF8StrFree(SMSSUTF8Str *record);

/* Append text of the record's own encoding.
 *   source  the plain calls take it up to its terminator
 *   count   units or bytes to take, terminators included: that many are copied unseen; 0: up to the
 *           terminator */
SM_EXPORT uint16_t *SMSSUCS2StrCatUCS2Str(SMSSUCS2Str *record, const uint16_t *source);
SM_EXPORT uint16_t *SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str *record, const uint16_t *source, uint32_t count);
SM_EXPORT char *SMSSUTF8StrCatUTF8Str(SMSSUTF8Str *record, const char *source);
SM_EXPORT char *SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str *record, const char *source, uint32_t count);

/* Append UTF-8 text to a UCS-2 record. The whole source is converted, always.
 *   count  units of room for the converted text, and units to append; 0, as in the plain call: the bytes of
 *          the source. A count below the units of the source appends nothing. What lies behind the converted
 *          text up to count is appended too, its terminator first: length counts it, but readers of the
 *          terminated text don't see it, nor what is appended later. So it is without a count with every
 *          source that holds a multi-byte sequence. */
SM_EXPORT uint16_t *SMSSUCS2StrCatUTF8Str(SMSSUCS2Str *record, const char *source);
SM_EXPORT uint16_t *SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str *record, const char *source, uint32_t count);

/* Append UCS-2 text to a UTF-8 record. The whole source is converted, always.
 *   count  bytes of room for the converted text, and bytes to append, as above; 0, as in the plain call: the
 *          units of the source, so that a source with any unit from 0x80 on is not appended at all */
SM_EXPORT char *SMSSUTF8StrCatUCS2Str(SMSSUTF8Str *record, const uint16_t *source);
SM_EXPORT char *SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str *record, const uint16_t *source, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
