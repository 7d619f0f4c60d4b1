#include <qzvest/file.h>

#include "os/file.h"

extern "C" {

uint32_t SMMkDir(const char *path)
{
    return qzvest::SMMkDir(path);
}

uint32_t SMRmDir(const char *path)
{
    return qzvest::SMRmDir(path);
}

uint32_t SMGetTmpFile(const char *directory, char *buffer, uint32_t *size)
{
    return qzvest::SMGetTmpFile(directory, buffer, size);
}

uint32_t SMGetSizeOfFile(const char *path, uint32_t *size)
{
    return qzvest::SMGetSizeOfFile(path, size);
}

uint32_t SMDeleteFile(const char *path)
{
    return qzvest::SMDeleteFile(path);
}

uint32_t SMFileCopy(const char *source, const char *destination, uint16_t overwrite)
{
    return qzvest::SMFileCopy(source, destination, overwrite);
}

uint32_t SMFileCopyAndSync(const char *source, const char *destination, uint16_t overwrite)
{
    return qzvest::SMFileCopyAndSync(source, destination, overwrite);
}

uint32_t SMFileAppend(const char *source, const char *destination, uint16_t create)
{
    return qzvest::SMFileAppend(source, destination, create);
}

uint32_t SMFileAppendAndSync(const char *source, const char *destination, uint16_t create)
{
    return qzvest::SMFileAppendAndSync(source, destination, create);
}

SMFileProp *SMFilePropAlloc(const char *path)
{
    return qzvest::SMFilePropAlloc(path);
}

uint32_t SMFilePropIsModified(SMFileProp *handle)
{
    return qzvest::SMFilePropIsModified(handle);
}

void SMFilePropFree(SMFileProp *handle)
{
    qzvest::SMFilePropFree(handle);
}

uint32_t SMFileListGet(const char *directory, uint32_t flags, SMFileList **list)
{
    return qzvest::SMFileListGet(directory, flags, list);
}

void SMFileListFree(SMFileList *list)
{
    qzvest::SMFileListFree(list);
}

} // extern "C"
