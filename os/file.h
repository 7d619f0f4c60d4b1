// File services, and what the stores of settings build on them.
#ifndef OS_FILE_H
#define OS_FILE_H

#include <sys/stat.h>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "frame/heap.h"
#include "os/descriptor.h"

namespace qzvest {

uint32_t SMMkDir(const char *path);
uint32_t SMRmDir(const char *path);
// Only a name, and a guessable one: who creates the file asks for O_EXCL | O_NOFOLLOW, lest a planted link be followed.
uint32_t SMGetTmpFile(const char *directory, char *buffer, uint32_t *size);
uint32_t SMGetSizeOfFile(const char *path, uint32_t *size);
uint32_t SMDeleteFile(const char *path);
uint32_t SMFileCopy(const char *source, const char *destination, uint16_t overwrite);
uint32_t SMFileCopyAndSync(const char *source, const char *destination, uint16_t overwrite);
uint32_t SMFileAppend(const char *source, const char *destination, uint16_t create);
uint32_t SMFileAppendAndSync(const char *source, const char *destination, uint16_t create);
SMFileProp *SMFilePropAlloc(const char *path);
uint32_t SMFilePropIsModified(SMFileProp *handle);
void SMFilePropFree(SMFileProp *handle);
uint32_t SMFileListGet(const char *directory, uint32_t flags, SMFileList **list);
void SMFileListFree(SMFileList *list);

// The mode of a file, masked to what a lock file takes over of it, or with kKeepSticky to what its replacement does;
// defaultMode when the file cannot be examined.
enum FileModeFlag : uint32_t { kKeepSticky = 1 };
mode_t SMFileModeGet(const char *path, mode_t defaultMode, uint32_t flags);

// Writes all of it, however many calls that takes. False when a write fails.
bool WriteFully(int descriptor, const void *bytes, size_t size);

// A path of a file that is not there, with a name of SMGetTmpFile; empty, with that call's status, if none can be had.
HeapPtr<char> TmpPathIn(const char *directory, uint32_t &status);

// Creates the file of such a path, under another name if somebody was quicker. Neither an existing file nor a planted
// link is taken for it. Without a file the status is SM_STATUS_FILE_NOT_FOUND if it cannot be made, or one of
// SMGetTmpFile.
Descriptor CreateTmpFile(const char *directory, HeapPtr<char> &path, mode_t mode, uint32_t &status);

// Swaps a finished new version into place, by way of path with ".bak" behind it, which a crash may leave.
uint32_t SMSafeFileReplace(const char *path, const char *newPath);

// Renames a backup that an unfinished swap has left onto its file. False when memory runs out.
bool RollBack(const char *path);

} // namespace qzvest

#endif
