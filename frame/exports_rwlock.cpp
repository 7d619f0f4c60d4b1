#include <qzvest/rwlock.h>

#include "ipc/rwlock.h"

extern "C" {

SMRWL *SMRWLCreate(const char *name)
{
    return qzvest::SMRWLCreate(name);
}

void SMRWLDestroy(SMRWL *handle)
{
    qzvest::SMRWLDestroy(handle);
}

uint32_t SMRWLReadLockGet(SMRWL *handle, uint32_t timeoutMs)
{
    return qzvest::SMRWLReadLockGet(handle, timeoutMs);
}

void SMRWLReadLockRelease(SMRWL *handle)
{
    qzvest::SMRWLReadLockRelease(handle);
}

uint32_t SMRWLWriteLockGet(SMRWL *handle, uint32_t timeoutMs)
{
    return qzvest::SMRWLWriteLockGet(handle, timeoutMs);
}

void SMRWLWriteLockRelease(SMRWL *handle)
{
    qzvest::SMRWLWriteLockRelease(handle);
}

} // extern "C"
