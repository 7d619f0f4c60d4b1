#include <qzvest/sharedmem.h>

#include "ipc/sharedmem.h"

extern "C" {

SMSharedMem *SMSharedMemCreate(const char *name, uint32_t size)
{
    return qzvest::SMSharedMemCreate(name, size);
}

SMSharedMem *SMSharedMemCreate_s(const char *name, uint32_t size, uint32_t accessMask)
{
    return qzvest::SMSharedMemCreate_s(name, size, accessMask);
}

SMSharedMem *SMSharedMemOpen(const char *name)
{
    return qzvest::SMSharedMemOpen(name);
}

void *SMSharedMemGetAddressPtr(SMSharedMem *handle)
{
    return qzvest::SMSharedMemGetAddressPtr(handle);
}

void SMSharedMemFree(SMSharedMem *handle)
{
    qzvest::SMSharedMemFree(handle);
}

} // extern "C"
