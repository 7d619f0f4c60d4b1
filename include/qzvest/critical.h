/* Critical sections: a function that no two threads of the process are in at once, without a lock of the caller's.
 * The function's address is the lock. */
#ifndef QZVEST_CRITICAL_H
#define QZVEST_CRITICAL_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMCriticalSectionExecute - run a function when no other thread is in it by way of this call, after waiting for that
 * without limit. Different functions run at the same time, and may run each other this way; a function that runs
 * itself so hangs for ever, and so do two that run each other crosswise.
 *   function  its result is dropped
 *   argument  passed on to the function
 *   timeout   SM_WAIT_FOREVER. With any other value THE FUNCTION IS NOT RUN
 * Nothing tells whether the function ran. It does not either when it is NULL, and when memory runs out.
 * Threads: any, at any time. */
SM_EXPORT void SMCriticalSectionExecute(SMCriticalSectionFunction function, uint64_t argument, uint32_t timeout);

#ifdef __cplusplus
}
#endif

#endif
