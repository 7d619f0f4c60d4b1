// Property files: flat keys and values in a loose grammar, typed by the translator.
#ifndef CONFIG_PROPERTY_H
#define CONFIG_PROPERTY_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

uint32_t SMPropertyFileReadValue(const char *key, uint32_t typeAndFormat, void *dest, uint32_t *destSize,
                                 const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                 int16_t waitForLock);
uint32_t SMPropertyFileWriteValue(const char *key, uint32_t typeAndFormat, const void *value, uint32_t valueSize,
                                  const char *pathFileName, int16_t waitForLock);

} // namespace qzvest

#endif
