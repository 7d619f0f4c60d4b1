/* Threads: a thin layer over the system's (POSIX threads), with stacks of 128 KiB.
 *
 * A routine that needs more stack than that overruns it. The stack has the system's size instead where the system
 * refuses this one; nothing tells so.
 * Threads: all calls may be made from any thread; a handle belongs to one thread at a time. */
#ifndef QZVEST_THREAD_H
#define QZVEST_THREAD_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMThreadStart - run a routine in a thread of its own.
 *   routine   its result is dropped
 *   argument  passed on to the routine
 * Returns the handle, or NULL for a NULL routine, when memory runs out and when the system gives no thread. End it
 * with SMThreadStop, once. */
SM_EXPORT SMThreadHandle *SMThreadStart(SMThreadRoutine routine, void *argument);

/* SMThreadStop - wait until a thread has ended by itself, without limit, and free its handle. It stops nothing: how
 * the routine hears that it is to return is the caller's business. Not for the thread itself.
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER for NULL. */
SM_EXPORT uint32_t SMThreadStop(SMThreadHandle *handle);

/* SMThreadKill - send signal 9 to a thread, and free its handle. That signal cannot be confined to one thread: IT
 * ENDS THE WHOLE PROCESS.
 * Returns SM_STATUS_INVALID_PARAMETER for NULL; SM_STATUS_OK when the thread had ended before and got no signal. */
SM_EXPORT uint32_t SMThreadKill(SMThreadHandle *handle);

/* SMThreadStartAndRelease - run a routine in a thread of its own that has no handle and is not waited for. Its
 * argument is passed on.
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER for a NULL routine; SM_STATUS_FAILED when the system gives no
 * thread. */
SM_EXPORT uint32_t SMThreadStartAndRelease(SMThreadRoutine routine, void *argument);

/* SMThreadYield - let others run first. Returns what sched_yield (POSIX) does: 0, or -1 with errno set. */
SM_EXPORT int32_t SMThreadYield(void);

/* SMThreadGetID - the calling thread, as a number that no other running thread of the process has (pthread_self). */
SM_EXPORT uint64_t SMThreadGetID(void);

/* SMThreadSetName - name the calling thread, for tools to show (PR_SET_NAME of prctl, Linux).
 *   name  the system keeps the first 15 characters
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER for NULL; SM_STATUS_FAILED when the system refuses. */
SM_EXPORT uint32_t SMThreadSetName(const char *name);

#ifdef __cplusplus
}
#endif

#endif
