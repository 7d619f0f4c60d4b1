// Threads with a stack of one size.
#ifndef OS_THREAD_H
#define OS_THREAD_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

SMThreadHandle *SMThreadStart(SMThreadRoutine routine, void *argument);
uint32_t SMThreadStop(SMThreadHandle *handle);
uint32_t SMThreadKill(SMThreadHandle *handle);
uint32_t SMThreadStartAndRelease(SMThreadRoutine routine, void *argument);
int32_t SMThreadYield();
uint64_t SMThreadGetID();
uint32_t SMThreadSetName(const char *name);

} // namespace qzvest

#endif
