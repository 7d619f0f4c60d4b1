/* Mutexes: one thread at a time.
 *
 * A mutex is not recursive and keeps no record of its owner: any thread may unlock it. For every call with a
 * handle NULL gives SM_STATUS_INVALID_PARAMETER and a handle of another kind SM_STATUS_BAD_FORMAT.
 * Threads: all calls but SMMutexDestroy may be made from any thread at any time. */
#ifndef QZVEST_MUTEX_H
#define QZVEST_MUTEX_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMMutexCreate - a new mutex of this process, unlocked. It makes no file.
 *   name  NULL; this version makes no mutexes with names, and gives NULL for any
 * Returns the handle, or NULL when memory runs out. End it with SMMutexDestroy. */
SM_EXPORT SMMutex *SMMutexCreate(const char *name);

/* SMMutexCreate_s - the same.
 *   accessMask  not looked at for a NULL name */
SM_EXPORT SMMutex *SMMutexCreate_s(const char *name, uint32_t accessMask);

/* SMMutexLock - lock a mutex, waiting for its release as long as needed.
 *   timeoutMs  milliseconds; SM_WAIT_FOREVER waits without limit, 0 tries once. Any wait but the endless one
 *              looks once in a millisecond.
 * Returns SM_STATUS_OK, SM_STATUS_TIMEOUT, SM_STATUS_FAILED. A second lock by the holder waits like any other:
 *   with SM_WAIT_FOREVER it never comes back. */
SM_EXPORT uint32_t SMMutexLock(SMMutex *handle, uint32_t timeoutMs);

/* SMMutexUnLock - release a mutex. Any thread may do so, held by it or not; nothing tells it when nobody holds it.
 * Returns SM_STATUS_OK. */
SM_EXPORT uint32_t SMMutexUnLock(SMMutex *handle);

/* SMMutexDestroy - end a mutex. A held one is not released first; no thread may wait for it or use it any more.
 * Nothing for NULL and handles of another kind. */
SM_EXPORT void SMMutexDestroy(SMMutex *handle);

#ifdef __cplusplus
}
#endif

#endif
