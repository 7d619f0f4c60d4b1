// The event log's front end: one event, up to three targets.
#ifndef LOG_EVENTLOG_H
#define LOG_EVENTLOG_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

uint32_t SMAppendToLog(uint8_t logTargets, uint16_t type, uint16_t category, uint32_t eventId, const char *source,
                       const char *description, const void *data, uint32_t dataSize);
uint32_t SMClearLog(uint8_t logTargets, uint16_t category, const char *source);
uint32_t SMGetLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize);
uint32_t SMGetBackupLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize);

} // namespace qzvest

#endif
