#include <qzvest/eventlog.h>

#include "log/eventlog.h"
#include "log/limits.h"

extern "C" {

uint32_t SMAppendToLog(uint8_t logTargets, uint16_t type, uint16_t category, uint32_t eventId, const char *source,
                       const char *description, const void *data, uint32_t dataSize)
{
    return qzvest::SMAppendToLog(logTargets, type, category, eventId, source, description, data, dataSize);
}

uint32_t SMClearLog(uint8_t logTargets, uint16_t category, const char *source)
{
    return qzvest::SMClearLog(logTargets, category, source);
}

uint32_t SMGetLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize)
{
    return qzvest::SMGetLogPathFileName(logTargets, dest, destSize);
}

uint32_t SMGetBackupLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize)
{
    return qzvest::SMGetBackupLogPathFileName(logTargets, dest, destSize);
}

uint32_t SMGetLogMaxSize(const char *pathFileName, uint32_t *size)
{
    return qzvest::SMGetLogMaxSize(pathFileName, size);
}

uint32_t SMSetLogMaxSize(const char *pathFileName, uint32_t size)
{
    return qzvest::SMSetLogMaxSize(pathFileName, size);
}

} // extern "C"
