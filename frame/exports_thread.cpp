#include <qzvest/thread.h>

#include "os/thread.h"

extern "C" {

SMThreadHandle *SMThreadStart(SMThreadRoutine routine, void *argument)
{
    return qzvest::SMThreadStart(routine, argument);
}

uint32_t SMThreadStop(SMThreadHandle *handle)
{
    return qzvest::SMThreadStop(handle);
}

uint32_t SMThreadKill(SMThreadHandle *handle)
{
    return qzvest::SMThreadKill(handle);
}

uint32_t SMThreadStartAndRelease(SMThreadRoutine routine, void *argument)
{
    return qzvest::SMThreadStartAndRelease(routine, argument);
}

int32_t SMThreadYield()
{
    return qzvest::SMThreadYield();
}

uint64_t SMThreadGetID()
{
    return qzvest::SMThreadGetID();
}

uint32_t SMThreadSetName(const char *name)
{
    return qzvest::SMThreadSetName(name);
}

} // extern "C"
