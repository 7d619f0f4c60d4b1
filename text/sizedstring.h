// Growable text in either encoding: the record is the caller's, the buffer ours.
#ifndef TEXT_SIZEDSTRING_H
#define TEXT_SIZEDSTRING_H

#include <qzvest/types.h>

namespace qzvest {

uint16_t *SMSSUCS2StrAlloc(SMSSUCS2Str *record, uint32_t size);
char *SMSSUTF8StrAlloc(SMSSUTF8Str *record, uint32_t size);
void SMSSUCS2StrFree(SMSSUCS2Str *record);
void SMSSUTF8StrFree(SMSSUTF8Str *record);

// A count of 0 means the whole source, up to its terminator; the exported plain calls pass it.
uint16_t *SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str *record, const uint16_t *source, uint32_t count);
uint16_t *SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str *record, const char *source, uint32_t count);
char *SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str *record, const char *source, uint32_t count);
char *SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str *record, const uint16_t *source, uint32_t count);

// Appends what the UTF-8 record (or NULL) holds, and just that.
uint16_t *SSUCS2StrCatSSUTF8Str(SMSSUCS2Str *record, const SMSSUTF8Str *source);

} // namespace qzvest

#endif
