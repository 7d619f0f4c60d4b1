#include <qzvest/ini.h>

#include "config/ini.h"

extern "C" {

uint32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *dest, uint32_t *destSize,
                                const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                int16_t waitForLock)
{
    return qzvest::SMReadINIPathFileValue(section, key, type, dest, destSize, defaultValue, defaultSize, pathFileName,
                                          waitForLock);
}

uint32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *dest, uint32_t *destSize,
                            const void *defaultValue, uint32_t defaultSize, const char *fileName, int16_t waitForLock)
{
    return qzvest::SMReadINIFileValue(section, key, type, dest, destSize, defaultValue, defaultSize, fileName,
                                      waitForLock);
}

char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultText, uint32_t *outSize,
                                   const char *pathFileName, int16_t waitForLock)
{
    return qzvest::SMReadINISectionKeyUTF8Value(section, key, defaultText, outSize, pathFileName, waitForLock);
}

uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMINIEnumEntry *table, int32_t tableCount,
                               uint16_t multiple, const char *pathFileName, int16_t waitForLock)
{
    return qzvest::SMReadINIEnums32Value(section, key, table, tableCount, multiple, pathFileName, waitForLock);
}

uint32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                 uint32_t valueSize, const char *pathFileName, int16_t waitForLock)
{
    return qzvest::SMWriteINIPathFileValue(section, key, type, value, valueSize, pathFileName, waitForLock);
}

uint32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t valueSize,
                             const char *fileName, int16_t waitForLock)
{
    return qzvest::SMWriteINIFileValue(section, key, type, value, valueSize, fileName, waitForLock);
}

} // extern "C"
