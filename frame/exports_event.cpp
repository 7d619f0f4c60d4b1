#include <qzvest/event.h>

#include "ipc/event.h"

extern "C" {

SMEvent *SMEventCreate(const char *name, uint16_t manualReset, uint16_t initiallySet)
{
    return qzvest::SMEventCreate(name, manualReset, initiallySet);
}

SMEvent *SMEventCreate_s(const char *name, uint16_t manualReset, uint16_t initiallySet, uint32_t accessMask)
{
    return qzvest::SMEventCreate_s(name, manualReset, initiallySet, accessMask);
}

SMEvent *SMEventOpen(const char *name)
{
    return qzvest::SMEventOpen(name);
}

uint32_t SMEventWait(SMEvent *handle, uint32_t timeoutMs)
{
    return qzvest::SMEventWait(handle, timeoutMs);
}

uint32_t SMEventSet(SMEvent *handle)
{
    return qzvest::SMEventSet(handle);
}

uint32_t SMEventReset(SMEvent *handle)
{
    return qzvest::SMEventReset(handle);
}

void SMEventDestroy(SMEvent *handle)
{
    qzvest::SMEventDestroy(handle);
}

} // extern "C"
