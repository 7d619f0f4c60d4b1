// Time and system services.
#ifndef OS_SYSTEM_H
#define OS_SYSTEM_H

#include <cstdint>

namespace qzvest {

int64_t SMRefTicksGet();
uint32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *elapsed, uint16_t *passed,
                                  uint16_t *expired);

enum OSType : uint32_t { kOrdinary = 3, kVMkernel = 4 };
uint32_t SMOSTypeGet(); // an OSType

uint32_t SMOSShutdown(uint16_t first, uint16_t second);
uint32_t SMkbhit();
char *SMEnvDup(const char *name, uint32_t *size);
uint32_t SMLongFileNamesEnable();
uint32_t SMLongFileNamesDisable();

// The name of a source of lines in the system log, which is a category of events too. They count from 1; NULL for one
// that there is not.
const char *LogSourceName(uint32_t source);
uint32_t SMAppendToOSSysLog(uint32_t severity, uint32_t source, uint32_t eventId, const char *identity,
                            const char *message);

} // namespace qzvest

#endif
