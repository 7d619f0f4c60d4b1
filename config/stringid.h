// Messages of the suite by number and language, from INI files.
#ifndef CONFIG_STRINGID_H
#define CONFIG_STRINGID_H

#include <cstdint>

namespace qzvest {

uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringId, uint32_t *languageId, const char *pathFileName, char *dest,
                                    uint32_t *destSize);
uint32_t SMGetUCS2StrFromID(uint32_t stringId, uint32_t *languageId, uint16_t *dest, uint32_t *destSize);

} // namespace qzvest

#endif
