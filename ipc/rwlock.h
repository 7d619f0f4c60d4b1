// Read-write locks with time-outs.
#ifndef IPC_RWLOCK_H
#define IPC_RWLOCK_H

#include <qzvest/types.h>

namespace qzvest {

SMRWL *SMRWLCreate(const char *name);
void SMRWLDestroy(SMRWL *handle);
uint32_t SMRWLReadLockGet(SMRWL *handle, uint32_t timeoutMs);
void SMRWLReadLockRelease(SMRWL *handle);
uint32_t SMRWLWriteLockGet(SMRWL *handle, uint32_t timeoutMs);
void SMRWLWriteLockRelease(SMRWL *handle);

} // namespace qzvest

#endif
