/* Small file operations: directories, names for temporary files, sizes, copies, a watch for changes, listings.
 *
 * Paths are NUL-terminated bytes as the operating system takes them. What is passed must not be NULL where NULL is
 * not mentioned. SM_STATUS_FAILED is every failure of the operating system that has no status of its own.
 *
 * Threads: nothing is locked here, neither files nor records. Calls on different files and records don't meet, but
 * for SMGetTmpFile. */
#ifndef QZVEST_FILE_H
#define QZVEST_FILE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMMkDir - make a directory, mode 0755 less the umask. One level only: its parent must be there.
 * Returns SM_STATUS_OK, also when there is something of that name already, of whatever kind; else SM_STATUS_FAILED. */
SM_EXPORT uint32_t SMMkDir(const char *path);

/* SMRmDir - remove an empty directory.
 * Returns
 *   SM_STATUS_OK          it is gone
 *   SM_STATUS_NOT_FOUND   it was not there
 *   SM_STATUS_BAD_FORMAT  it is not empty
 *   SM_STATUS_FAILED      otherwise */
SM_EXPORT uint32_t SMRmDir(const char *path);

/* SMGetTmpFile - a name of 8 letters and digits that no file of a directory has.
 *   directory  path of the directory; need not exist. With more than 246 bytes it is not looked into
 *   buffer     takes the bare name with its terminator; written in a failure too, but for a small buffer
 *   size       in: bytes at buffer; out: 9, the bytes written or needed
 * Returns
 *   SM_STATUS_OK                a name
 *   SM_STATUS_BUFFER_TOO_SMALL  size was below 9
 *   SM_STATUS_NO_MEMORY         memory ran out; nothing is written
 *   SM_STATUS_FAILED            100 names were taken, all of them
 * The file is not created, and the name is easily guessed: until it is created, somebody else may put a file or a
 * link there. Where others can write, create it with O_EXCL | O_NOFOLLOW (open(2)).
 * Threads: draws from rand (C), and seeds it with the time at the first call of the process, without a lock. */
SM_EXPORT uint32_t SMGetTmpFile(const char *directory, char *buffer, uint32_t *size);

/* SMGetSizeOfFile - the bytes of a file that can be read.
 *   size  takes the low 32 bits of it; 0 in a failure
 * Returns SM_STATUS_OK; SM_STATUS_FAILED when the file cannot be opened or has no end to go to. */
SM_EXPORT uint32_t SMGetSizeOfFile(const char *path, uint32_t *size);

/* SMDeleteFile - unlink a file or a link.
 * Returns SM_STATUS_OK; SM_STATUS_FAILED also when it is not there. */
SM_EXPORT uint32_t SMDeleteFile(const char *path);

/* SMFileCopy - copy a file's content and mode. SMFileCopyAndSync then waits for the disk (fsync).
 *   destination  must not be the source itself, which would be emptied. A link is followed
 *   overwrite    0: an existing destination is left alone
 * Returns
 *   SM_STATUS_OK                copied. Neither the mode nor the disk make the call fail
 *   SM_STATUS_BAD_ARGUMENT      source or destination is NULL
 *   SM_STATUS_FILE_NOT_FOUND    the source cannot be opened
 *   SM_STATUS_FILE_STAT_FAILED  the source's status could not be read
 *   SM_STATUS_LIMIT_REACHED     the disk is full
 *   SM_STATUS_FILE_EXISTS       the destination exists, and overwrite is 0
 *   SM_STATUS_NO_MEMORY         memory ran out
 *   SM_STATUS_FAILED            the destination cannot be opened; reading or writing failed
 * A failure once the destination is open (memory, reading, writing, a full disk) leaves what was copied so far, or an
 * empty destination; any other leaves it alone. A write that the system cuts short counts as complete: on a disk that
 * fills up the copy may lack a piece. */
SM_EXPORT uint32_t SMFileCopy(const char *source, const char *destination, uint16_t overwrite);
SM_EXPORT uint32_t SMFileCopyAndSync(const char *source, const char *destination, uint16_t overwrite);

/* SMFileAppend - append a file's content to another. SMFileAppendAndSync then waits for the disk (fsync).
 *   destination  must not be the source itself, whose end would never be reached. It keeps its mode
 *   create       0: it must exist; else it is made where it is missing, with the source's mode
 * Returns what SMFileCopy does, but
 *   SM_STATUS_FILE_NOT_FOUND  also for a missing destination when create is 0
 * and never SM_STATUS_FILE_EXISTS. A failure keeps what the destination held, and what was appended so far behind it.
 */
SM_EXPORT uint32_t SMFileAppend(const char *source, const char *destination, uint16_t create);
SM_EXPORT uint32_t SMFileAppendAndSync(const char *source, const char *destination, uint16_t create);

/* SMFilePropAlloc - begin to watch a file or directory.
 * Returns a record for SMFilePropFree; NULL when path is NULL, it is not there, or memory runs out. */
SM_EXPORT SMFileProp *SMFilePropAlloc(const char *path);

/* SMFilePropIsModified - has the time of the last change, in whole seconds, become another since the last look?
 * An older one counts too; two changes within a second may count as one, or as none right after the last look.
 * Returns 1, and that time is remembered; 0 when it has not, for a NULL handle, and while the file is missing. */
SM_EXPORT uint32_t SMFilePropIsModified(SMFileProp *handle);

/* SMFilePropFree - end it. NULL is ignored. */
SM_EXPORT void SMFilePropFree(SMFileProp *handle);

/* SMFileListGet - the regular files of a directory.
 *   directory  its path; the entries' paths are this, "/" and the name
 *   flags      SM_FILE_LIST_..., or'ed; unknown bits are ignored. Unsorted, the order is the file system's
 *   list       takes the list, for SMFileListFree; untouched in a failure
 * Returns
 *   SM_STATUS_OK                 a list of one entry at least
 *   SM_STATUS_FILE_NOT_FOUND     the directory cannot be opened
 *   SM_STATUS_NO_ENTRY           it has no such file; nor has one of a file system that tells no types of entries
 *   SM_STATUS_INVALID_PARAMETER  directory or list is NULL; both ways to sort
 *   SM_STATUS_NO_MEMORY          memory ran out */
SM_EXPORT uint32_t SMFileListGet(const char *directory, uint32_t flags, SMFileList **list);

/* SMFileListFree - free a list and its strings. NULL is ignored. */
SM_EXPORT void SMFileListFree(SMFileList *list);

#ifdef __cplusplus
}
#endif

#endif
