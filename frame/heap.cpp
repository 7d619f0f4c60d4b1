#include "frame/heap.h"

namespace qzvest {

void *SMAllocMem(uint32_t size)
{
    return std::malloc(size);
}

void *SMReAllocMem(void *ptr, uint32_t size)
{
    return std::realloc(ptr, size);
}

void SMFreeMem(void *ptr)
{
    std::free(ptr);
}

void SMFreeGeneric(void *ptr)
{
    std::free(ptr);
}

} // namespace qzvest
