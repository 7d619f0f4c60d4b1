/* Events: set or clear; a wait passes while one is set.
 *
 * An event with manual reset stays set until it is reset; one with automatic reset is cleared by the wait that passes.
 * An event is a count, set while it is above 0. Each set adds 1; a passing wait takes 1 and then puts it back (manual)
 * or clears the count (automatic). Between the two another thread may run: a reset at that moment may be undone, a set
 * lost.
 *
 * Without a name an event belongs to this process. With a name it is a set of System V semaphores, two for manual and
 * one for automatic reset, for all processes that use the name; what semaphore.h tells of names and of the life of a
 * set goes for events too.
 *
 * For every call with a handle that returns a status, NULL gives SM_STATUS_INVALID_PARAMETER and a handle of another
 * kind SM_STATUS_BAD_FORMAT.
 * Threads: all calls but SMEventDestroy may be made from any thread at any time. Creating and opening read and write
 * the registry file; keep the handle. */
#ifndef QZVEST_EVENT_H
#define QZVEST_EVENT_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMEventCreate - a new event of this process, or the event of a name, which is made or joined.
 *   name          NULL: of this process alone
 *   manualReset   1 for manual reset, all else automatic. A handle that joins keeps what is given here.
 *   initiallySet  1 for an event that is set, all else clear; not looked at when joining
 * Returns the handle, or NULL: an empty name, memory runs out; with a name also no IPC directory, a registry that
 *   cannot be written, no right to join the set, or no set left in the system, which the system log is told. End it
 *   with SMEventDestroy. */
SM_EXPORT SMEvent *SMEventCreate(const char *name, uint16_t manualReset, uint16_t initiallySet);

/* SMEventCreate_s - the same with a say in who may open the set.
 *   accessMask  see SM_ACCESS_GROUP in types.h, which SMEventCreate gives; the mode of a new set. Not looked at for a
 *               NULL name, nor when joining. */
SM_EXPORT SMEvent *SMEventCreate_s(const char *name, uint16_t manualReset, uint16_t initiallySet, uint32_t accessMask);

/* SMEventOpen - the event of a name, if somebody has created it; the kind of reset is the one it was made with.
 * Returns the handle, or NULL: as SMEventCreate, for a NULL name, and when there is no set. End it with
 *   SMEventDestroy. */
SM_EXPORT SMEvent *SMEventOpen(const char *name);

/* SMEventWait - wait until an event is set.
 *   timeoutMs  as in SMSemaphoreAcquireWait
 * Returns SM_STATUS_OK; SM_STATUS_TIMEOUT when it was clear to the end of the time; SM_STATUS_FAILED when the set has
 *   been removed, also during the wait, or must not be changed. */
SM_EXPORT uint32_t SMEventWait(SMEvent *handle, uint32_t timeoutMs);

/* SMEventSet - set an event.
 * Returns SM_STATUS_OK; SM_STATUS_FAILED when the set is gone or must not be changed, and with a name when the system's
 *   largest value is reached: the event is set then. */
SM_EXPORT uint32_t SMEventSet(SMEvent *handle);

/* SMEventReset - clear an event.
 * Returns SM_STATUS_OK, also when the set is gone. */
SM_EXPORT uint32_t SMEventReset(SMEvent *handle);

/* SMEventDestroy - end a handle, as SMSemaphoreDestroy does. */
SM_EXPORT void SMEventDestroy(SMEvent *handle);

#ifdef __cplusplus
}
#endif

#endif
