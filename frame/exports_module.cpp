#include <qzvest/module.h>

#include "frame/heap.h"
#include "frame/module.h"

extern "C" {

uint32_t VESTGetMajorVersion()
{
    return qzvest::VESTGetMajorVersion();
}

uint32_t VESTGetMinorVersion()
{
    return qzvest::VESTGetMinorVersion();
}

uint32_t VESTGetRevision()
{
    return qzvest::VESTGetRevision();
}

void *SMAllocMem(uint32_t size)
{
    return qzvest::SMAllocMem(size);
}

void *SMReAllocMem(void *ptr, uint32_t size)
{
    return qzvest::SMReAllocMem(ptr, size);
}

void SMFreeMem(void *ptr)
{
    qzvest::SMFreeMem(ptr);
}

void SMFreeGeneric(void *ptr)
{
    qzvest::SMFreeGeneric(ptr);
}

void SMGetExportContext(uint32_t *ctx)
{
    qzvest::SMGetExportContext(ctx);
}

void SMSetExportContext(uint32_t *ctx, uint32_t value)
{
    qzvest::SMSetExportContext(ctx, value);
}

void SMResetExportContext(uint32_t *ctx)
{
    qzvest::SMResetExportContext(ctx);
}

} // extern "C"
