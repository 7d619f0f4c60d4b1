// Events with manual or automatic reset.
#ifndef IPC_EVENT_H
#define IPC_EVENT_H

#include <qzvest/types.h>

namespace qzvest {

SMEvent *SMEventCreate(const char *name, uint16_t manualReset, uint16_t initiallySet);
SMEvent *SMEventCreate_s(const char *name, uint16_t manualReset, uint16_t initiallySet, uint32_t accessMask);
SMEvent *SMEventOpen(const char *name);
uint32_t SMEventWait(SMEvent *handle, uint32_t timeoutMs);
uint32_t SMEventSet(SMEvent *handle);
uint32_t SMEventReset(SMEvent *handle);
void SMEventDestroy(SMEvent *handle);

} // namespace qzvest

#endif
