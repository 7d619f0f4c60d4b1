// Locks on files that are shared by threads and processes, and replaced by rename while they are used. What is locked
// is a lock file in the IPC directory, named by the digest of the protected file's path.
//
// Order of use: open, acquire, the work, release, close. Not recursive.
#ifndef IPC_FILELOCK_H
#define IPC_FILELOCK_H

#include <qzvest/status.h>

#include "frame/heap.h"

namespace qzvest {

struct SMFileLock;

constexpr int16_t kWaitForLock = 1; // anything else tries once

enum FileLockMode : int32_t { kFileLockReader = 1, kFileLockWriter = 2 };

// The record of a path, which lives until detach; NULL for a NULL path and when it cannot be made. Two spellings of a
// path are two locks.
SMFileLock *SMFileLockOpen(const char *path);

// wait: kWaitForLock waits without limit. SM_STATUS_TIMEOUT when it is held elsewhere, SM_STATUS_ACCESS_DENIED,
// SM_STATUS_FAILED when the lock file cannot be opened, SM_STATUS_INVALID_PARAMETER for NULL or another mode.
uint32_t SMFileLockAcquire(SMFileLock *lock, int32_t mode, int32_t wait);
uint32_t SMFileLockRelease(SMFileLock *lock);
void SMFileLockClose(SMFileLock *lock);

// Attach: the registry of the records. 1, or 0 when memory runs out.
int FileLockRegistryAttach();
void FileLockRegistryDetach();

// Open, acquire and, at the end, release and close.
class FileLockGuard {
public:
    FileLockGuard(const char *path, FileLockMode mode, int32_t wait);
    ~FileLockGuard();
    FileLockGuard(const FileLockGuard &) = delete;
    FileLockGuard &operator=(const FileLockGuard &) = delete;

    // SM_STATUS_OK while held; SM_STATUS_NO_MEMORY when there is no record, else what SMFileLockAcquire gave.
    uint32_t Status() const
    {
        return status_;
    }

private:
    SMFileLock *lock_;
    uint32_t status_;
};

} // namespace qzvest

#endif
