// The C heap as the library hands it out, and the guard for blocks that are still ours.
#ifndef FRAME_HEAP_H
#define FRAME_HEAP_H

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace qzvest {

void *SMAllocMem(uint32_t size);
void *SMReAllocMem(void *ptr, uint32_t size);
void SMFreeMem(void *ptr);
void SMFreeGeneric(void *ptr);

struct HeapRelease {
    void operator()(void *block) const
    {
        std::free(block);
    }
};

template <typename T>
using HeapPtr = std::unique_ptr<T, HeapRelease>;

// Room for count objects of a type that needs no construction; empty when memory runs out.
template <typename T>
HeapPtr<T> HeapRoom(size_t count)
{
    return HeapPtr<T>(static_cast<T *>(std::malloc(count * sizeof(T))));
}

} // namespace qzvest

#endif
