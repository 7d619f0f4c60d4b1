/* Read-write locks: many readers or one writer, with time-outs.
 *
 * Without a name, a lock of this process made of the system's own. With a name (any text but the empty one), a lock
 * made of a named mutex and a named semaphore, which prefers writers: a waiting one holds back new readers. A
 * wake-up may reach a waiter of another process or of the other sort: an endless wait may outlast the release. Its
 * counters are this handle's own: it keeps apart the threads that use this handle, but neither processes nor two
 * handles of one name. What handles of one name share is a short section inside each call, and wake-ups.
 * Neither form can be turned from reading to writing or back while held. A holder's second read lock succeeds,
 * unless, in the named form, a writer waits. A second lock by the holder of the write lock fails at once without a name
 * (SM_STATUS_FAILED), and waits in vain with one.
 * Threads: all calls but SMRWLDestroy may be made from any thread at any time. */
#ifndef QZVEST_RWLOCK_H
#define QZVEST_RWLOCK_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMRWLCreate - a new lock, free. All processes create; there is nothing to open.
 *   name  NULL for a lock without a name
 * Returns the handle, which SMRWLDestroy ends, or NULL for an empty name, without a usable IPC directory (named),
 *   when another user has made the name's file or set, which have the mode 0600, and when the system's means or memory
 *   run out. */
SM_EXPORT SMRWL *SMRWLCreate(const char *name);

/* SMRWLDestroy - end a lock. In the named form waiting threads are woken and give SM_STATUS_FAILED; they have but a
 * moment to leave before the handle's memory goes, so that it is better to have none. The first destroy of a name
 * removes its semaphore for every process: waits there give SM_STATUS_FAILED from then on. Without a name nobody may
 * hold the lock or wait for it.
 * Nothing for NULL and for a handle of another kind. */
SM_EXPORT void SMRWLDestroy(SMRWL *handle);

/* SMRWLReadLockGet, SMRWLWriteLockGet - lock for reading or writing.
 *   timeoutMs  milliseconds; SM_WAIT_FOREVER waits without limit, 0 tries once. In the named form each wait has it
 *              afresh, and a wake-up that brings no lock begins another wait. Without a name it is signed: values
 *              from 0x80000000 on, but SM_WAIT_FOREVER, have passed already.
 * Returns SM_STATUS_OK; SM_STATUS_TIMEOUT; SM_STATUS_LIMIT_REACHED for 2147483647 waiters of the sort (named);
 *   SM_STATUS_INVALID_PARAMETER for NULL; SM_STATUS_BAD_FORMAT for a handle of another kind; SM_STATUS_FAILED when
 *   the lock is destroyed meanwhile, the process is unloading the library, or the system refuses. */
SM_EXPORT uint32_t SMRWLReadLockGet(SMRWL *handle, uint32_t timeoutMs);
SM_EXPORT uint32_t SMRWLWriteLockGet(SMRWL *handle, uint32_t timeoutMs);

/* SMRWLReadLockRelease, SMRWLWriteLockRelease - release what the call of the same direction has locked; in the named
 * form any thread may do so. A release of what is not locked is not told: without a name it is not allowed, in the
 * named form each one too many for reading lets a writer in beside one reader.
 * Nothing for NULL and for a handle of another kind. */
SM_EXPORT void SMRWLReadLockRelease(SMRWL *handle);
SM_EXPORT void SMRWLWriteLockRelease(SMRWL *handle);

#ifdef __cplusplus
}
#endif

#endif
