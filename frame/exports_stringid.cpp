#include <qzvest/stringid.h>

#include "config/stringid.h"

extern "C" {

uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringId, uint32_t *languageId, const char *pathFileName, char *dest,
                                    uint32_t *destSize)
{
    return qzvest::SMGetUTF8StrFromIDPathFile(stringId, languageId, pathFileName, dest, destSize);
}

uint32_t SMGetUCS2StrFromID(uint32_t stringId, uint32_t *languageId, uint16_t *dest, uint32_t *destSize)
{
    return qzvest::SMGetUCS2StrFromID(stringId, languageId, dest, destSize);
}

} // extern "C"
