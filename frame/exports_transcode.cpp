#include <qzvest/transcode.h>

#include "text/transcode.h"

extern "C" {

uint32_t SMUCS2StrToUTF8Str(char *destination, uint32_t *sizeInOut, const uint16_t *source)
{
    return qzvest::SMUCS2StrToUTF8Str(destination, sizeInOut, source);
}

uint32_t SMUTF8StrToUCS2Str(uint16_t *destination, uint32_t *sizeInOut, const char *source)
{
    return qzvest::SMUTF8StrToUCS2Str(destination, sizeInOut, source);
}

} // extern "C"
