#include <qzvest/sizedstring.h>

#include "text/sizedstring.h"

extern "C" {

uint16_t *SMSSUCS2StrAlloc(SMSSUCS2Str *record, uint32_t size)
{
    return qzvest::SMSSUCS2StrAlloc(record, size);
}

char *SMSSUTF8StrAlloc(SMSSUTF8Str *record, uint32_t size)
{
    return qzvest::SMSSUTF8StrAlloc(record, size);
}

void SMSSUCS2StrFree(SMSSUCS2Str *record)
{
    qzvest::SMSSUCS2StrFree(record);
}

void SMSSUTF8StrFree(SMSSUTF8Str *record)
{
    qzvest::SMSSUTF8StrFree(record);
}

uint16_t *SMSSUCS2StrCatUCS2Str(SMSSUCS2Str *record, const uint16_t *source)
{
    return qzvest::SMSSUCS2StrNCatUCS2Str(record, source, 0);
}

uint16_t *SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str *record, const uint16_t *source, uint32_t count)
{
    return qzvest::SMSSUCS2StrNCatUCS2Str(record, source, count);
}

char *SMSSUTF8StrCatUTF8Str(SMSSUTF8Str *record, const char *source)
{
    return qzvest::SMSSUTF8StrNCatUTF8Str(record, source, 0);
}

char *SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str *record, const char *source, uint32_t count)
{
    return qzvest::SMSSUTF8StrNCatUTF8Str(record, source, count);
}

uint16_t *SMSSUCS2StrCatUTF8Str(SMSSUCS2Str *record, const char *source)
{
    return qzvest::SMSSUCS2StrNCatUTF8Str(record, source, 0);
}

uint16_t *SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str *record, const char *source, uint32_t count)
{
    return qzvest::SMSSUCS2StrNCatUTF8Str(record, source, count);
}

char *SMSSUTF8StrCatUCS2Str(SMSSUTF8Str *record, const uint16_t *source)
{
    return qzvest::SMSSUTF8StrNCatUCS2Str(record, source, 0);
}

char *SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str *record, const uint16_t *source, uint32_t count)
{
    return qzvest::SMSSUTF8StrNCatUCS2Str(record, source, count);
}

} // extern "C"
