/* Mutexes: one thread at a time, of this process or, with a name, of all processes that use the name.
 *
 * A mutex is not recursive and keeps no record of its owner: any thread may unlock it. For every call with a
 * handle NULL gives SM_STATUS_INVALID_PARAMETER and a handle of another kind SM_STATUS_BAD_FORMAT.
 *
 * A mutex with a name is a mutex of this process and a lock on an empty file (fcntl, POSIX.1) in the IPC directory,
 * which the installation of the suite has to make. The name is free text; each name has a file of its own, which
 * stays for good. A process that dies loses its lock, and the next one to lock is not told. The system counts such
 * locks by process, not by handle: two handles of one name in one process don't exclude each other, and the end of one
 * drops what the other holds. So a process should keep one handle.
 *
 * Threads: all calls but SMMutexDestroy may be made from any thread at any time. */
#ifndef QZVEST_MUTEX_H
#define QZVEST_MUTEX_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMMutexCreate - a new mutex of this process, or the mutex of a name, whose file is made if it is not there.
 *   name  NULL: of this process alone, without a file
 * Returns the handle, or NULL when memory runs out; with a name also when it is empty, when the IPC directory does not
 *   exist or has a path of more than 213 bytes, and when the file can neither be opened nor made. End it with
 *   SMMutexDestroy. The mutex is unlocked, unless another process holds that name. A file that can only be read makes
 *   a handle that excludes those who may write, but not others like it. */
SM_EXPORT SMMutex *SMMutexCreate(const char *name);

/* SMMutexCreate_s - the same with a say in who may open the file.
 *   accessMask  see SM_ACCESS_GROUP in types.h, which SMMutexCreate gives; sets the mode of a new file, whatever the
 *               process's umask is. Not looked at for a NULL name, nor for a file that exists. */
SM_EXPORT SMMutex *SMMutexCreate_s(const char *name, uint32_t accessMask);

/* SMMutexOpen - the mutex of a name whose file exists; makes none.
 * Returns the handle, or NULL: as SMMutexCreate, for a NULL name, and when there is no such file. */
SM_EXPORT SMMutex *SMMutexOpen(const char *name);

/* SMMutexLock - lock a mutex, waiting for its release as long as needed.
 *   timeoutMs  milliseconds; SM_WAIT_FOREVER waits without limit, 0 tries once. Any wait but the endless one
 *              looks once in a millisecond. With a name the time-out counts twice, for the threads of this process
 *              and then for other processes; the latter are not waited for at all from 0x80000000 on.
 * Returns SM_STATUS_OK; SM_STATUS_TIMEOUT when somebody else holds it to the end of the time; SM_STATUS_FAILED when
 *   the system refuses the lock. It is not locked then. A second lock by the holder waits like any other: with
 *   SM_WAIT_FOREVER it never comes back. */
SM_EXPORT uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs);

/* SMMutexUnLock - release a mutex. Any thread may do so, held by it or not; nothing tells it when nobody holds it.
 * Returns SM_STATUS_OK. */
SM_EXPORT uint32_t SMMutexUnLock(SMMutex *handle);

/* SMMutexDestroy - end a handle. A held mutex is not released first, though the lock of a name goes with the handle; no
 * thread may wait for it or use it any more. The file of a name stays. Nothing for NULL and handles of another kind. */
SM_EXPORT void SMMutexDestroy(SMMutex *handle);

#ifdef __cplusplus
}
#endif

#endif
