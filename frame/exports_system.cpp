#include <qzvest/system.h>

#include "os/system.h"

extern "C" {

int64_t SMRefTicksGet()
{
    return qzvest::SMRefTicksGet();
}

uint32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *elapsed, uint16_t *passed,
                                  uint16_t *expired)
{
    return qzvest::SMRefTicksDiffCheckTimer(start, now, timeout, elapsed, passed, expired);
}

uint32_t SMOSTypeGet()
{
    return qzvest::SMOSTypeGet();
}

uint32_t SMOSShutdown(uint16_t first, uint16_t second)
{
    return qzvest::SMOSShutdown(first, second);
}

uint32_t SMkbhit()
{
    return qzvest::SMkbhit();
}

char *SMEnvDup(const char *name, uint32_t *size)
{
    return qzvest::SMEnvDup(name, size);
}

uint32_t SMLongFileNamesEnable()
{
    return qzvest::SMLongFileNamesEnable();
}

uint32_t SMLongFileNamesDisable()
{
    return qzvest::SMLongFileNamesDisable();
}

uint32_t SMAppendToOSSysLog(uint32_t severity, uint32_t source, uint32_t eventId, const char *identity,
                            const char *message)
{
    return qzvest::SMAppendToOSSysLog(severity, source, eventId, identity, message);
}

} // extern "C"
