/* Semaphores: a count that waits take from and releases add to.
 *
 * Without a name a semaphore belongs to this process. With a name it is a set of one System V semaphore, for all
 * processes that use the name; a name for a semaphore has nothing to do with the same name for an event. The number of
 * the name is kept in a registry in the IPC directory, which the installation of the suite has to make; it stays for
 * good. The set lives until one of its creators destroys it, and outlives a creator that dies without that: the next
 * creator joins it with its count as it stands.
 * Creating and opening give a new name its number. When memory or descriptors run out in one of them, or the registry
 * file cannot be read, a name may lose its number: it gets another one, apart from who has the old one, perhaps that of
 * another name, or none at all (every call with the name then gives NULL) until its line in the file is mended.
 *
 * For every call with a handle that returns a status, NULL gives SM_STATUS_INVALID_PARAMETER and a handle of another
 * kind SM_STATUS_BAD_FORMAT.
 * Threads: all calls but SMSemaphoreDestroy may be made from any thread at any time. Creating and opening read and
 * write the registry file; keep the handle. */
#ifndef QZVEST_SEMAPHORE_H
#define QZVEST_SEMAPHORE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMSemaphoreCreate - a new semaphore of this process, or the semaphore of a name, which is made or joined.
 *   name          NULL: of this process alone
 *   initialCount  0 to 32767; not looked at further when the semaphore of the name is there already
 * Returns the handle, or NULL: a larger initialCount, an empty name, memory runs out; with a name also no IPC
 *   directory, a registry that cannot be written, no right to join the set, or no set left in the system, which the
 *   system log is told. End it with SMSemaphoreDestroy. */
SM_EXPORT SMSemaphore *SMSemaphoreCreate(const char *name, uint32_t initialCount);

/* SMSemaphoreCreate_s - the same with a say in who may open the set.
 *   accessMask  see SM_ACCESS_GROUP in types.h, which SMSemaphoreCreate gives; the mode of a new set. Not looked at
 *               for a NULL name, nor when joining. */
SM_EXPORT SMSemaphore *SMSemaphoreCreate_s(const char *name, uint32_t initialCount, uint32_t accessMask);

/* SMSemaphoreOpen - the semaphore of a name, if somebody has created it.
 * Returns the handle, or NULL: as SMSemaphoreCreate, for a NULL name, and when there is no set. End it with
 *   SMSemaphoreDestroy. */
SM_EXPORT SMSemaphore *SMSemaphoreOpen(const char *name);

/* SMSemaphoreAcquireWait - take one, waiting for it as long as needed.
 *   timeoutMs  milliseconds; SM_WAIT_FOREVER waits without limit, 0 tries once. Without a name a time-out from
 *              0x80000000 on has run out already. With a name, a signal makes the time left be counted by the wall
 *              clock.
 * Returns SM_STATUS_OK; SM_STATUS_TIMEOUT when there was none to the end of the time; SM_STATUS_FAILED when the set has
 *   been removed, also during the wait, or must not be changed. */
SM_EXPORT uint32_t SMSemaphoreAcquireWait(SMSemaphore *handle, uint32_t timeoutMs);

/* SMSemaphoreRelease - add to the count.
 *   count     1 to 32767
 *   previous  takes the count from before, another thread's changes in between aside; -1 when the set is gone. NULL if
 *             it is of no interest.
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER also for another count; SM_STATUS_FAILED when the set is gone or
 *   must not be changed, and with a name when the system's largest value is reached: what was added until then stays
 *   added. Without a name there is no ceiling. */
SM_EXPORT uint32_t SMSemaphoreRelease(SMSemaphore *handle, int32_t count, int32_t *previous);

/* SMSemaphoreDestroy - end a handle. That of a creator, also one that joined, ends the semaphore of the name for all:
 * every wait for it fails. That of an opener leaves it. Without a name, no thread may wait for it or use it any more.
 * Nothing for NULL and handles of another kind. */
SM_EXPORT void SMSemaphoreDestroy(SMSemaphore *handle);

#ifdef __cplusplus
}
#endif

#endif
