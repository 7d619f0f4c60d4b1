// INI files: reading under the reader's lock, changes under the writer's, with a swap that survives a crash.
#ifndef CONFIG_INI_H
#define CONFIG_INI_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

uint32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *dest, uint32_t *destSize,
                                const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                int16_t waitForLock);
uint32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *dest, uint32_t *destSize,
                            const void *defaultValue, uint32_t defaultSize, const char *fileName, int16_t waitForLock);
char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultText, uint32_t *outSize,
                                   const char *pathFileName, int16_t waitForLock);
uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMINIEnumEntry *table, int32_t tableCount,
                               uint16_t multiple, const char *pathFileName, int16_t waitForLock);
uint32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                 uint32_t valueSize, const char *pathFileName, int16_t waitForLock);
uint32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t valueSize,
                             const char *fileName, int16_t waitForLock);

} // namespace qzvest

#endif
