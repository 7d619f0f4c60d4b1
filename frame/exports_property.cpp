#include <qzvest/property.h>

#include "config/property.h"

extern "C" {

uint32_t SMPropertyFileReadValue(const char *key, uint32_t typeAndFormat, void *dest, uint32_t *destSize,
                                 const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                 int16_t waitForLock)
{
    return qzvest::SMPropertyFileReadValue(key, typeAndFormat, dest, destSize, defaultValue, defaultSize, pathFileName,
                                           waitForLock);
}

uint32_t SMPropertyFileWriteValue(const char *key, uint32_t typeAndFormat, const void *value, uint32_t valueSize,
                                  const char *pathFileName, int16_t waitForLock)
{
    return qzvest::SMPropertyFileWriteValue(key, typeAndFormat, value, valueSize, pathFileName, waitForLock);
}

} // extern "C"
