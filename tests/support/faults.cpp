#include "support/faults.h"

#include <cstdlib>

namespace {

int countdown; // 0: no allocation is to fail
bool failed;
long live;

bool Fails()
{
    if (countdown == 0 || --countdown > 0)
        return false;
    failed = true;
    return true;
}

void *Counted(void *block)
{
    if (block != nullptr)
        ++live;
    return block;
}

} // namespace

void FailAllocation(int nth)
{
    countdown = nth;
    failed = false;
}

bool StopFault()
{
    countdown = 0;
    return failed;
}

long LiveBlocks()
{
    return live;
}

extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);

void *__wrap_malloc(size_t size)
{
    return Fails() ? nullptr : Counted(__real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size)
{
    return Fails() ? nullptr : Counted(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size)
{
    if (Fails())
        return nullptr;
    void *moved = __real_realloc(block, size);
    if (block == nullptr)
        return Counted(moved);
    if (moved == nullptr && size == 0)
        --live;
    return moved;
}

void __wrap_free(void *block)
{
    if (block != nullptr)
        --live;
    __real_free(block);
}

} // extern "C"
