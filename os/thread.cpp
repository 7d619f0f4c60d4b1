#include "os/thread.h"

#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>

#include "frame/heap.h"

struct SMThreadHandle {
    SMThreadRoutine routine;
    void *argument;
    pthread_t thread;
    uint32_t *state; // 0; kept for the record's form
};

namespace qzvest {
namespace {

constexpr size_t kStackSize = 0x20000; // bytes

// The handle outlives the start: SMThreadStop waits for the thread's end.
void *RunRoutine(void *data)
{
    const auto *handle = static_cast<const SMThreadHandle *>(data);
    (void)handle->routine(handle->argument);
    return nullptr;
}

int CreateThread(pthread_t *thread, void *(*start)(void *), void *argument)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return pthread_create(thread, nullptr, start, argument);
    (void)pthread_attr_setstacksize(&attributes, kStackSize); // else the system's size will do
    const int result = pthread_create(thread, &attributes, start, argument);
    (void)pthread_attr_destroy(&attributes);
    return result;
}

void FreeHandle(SMThreadHandle *handle)
{
    std::free(handle->state);
    std::free(handle);
}

} // namespace

SMThreadHandle *SMThreadStart(SMThreadRoutine routine, void *argument)
{
    if (routine == nullptr)
        return nullptr;
    HeapPtr<SMThreadHandle> handle = HeapRoom<SMThreadHandle>(1);
    HeapPtr<uint32_t> state = HeapRoom<uint32_t>(1);
    if (!handle || !state)
        return nullptr;
    *state = 0;
    handle->routine = routine;
    handle->argument = argument;
    handle->state = state.get();
    if (CreateThread(&handle->thread, RunRoutine, handle.get()) != 0)
        return nullptr;
    (void)state.release(); // the handle's
    return handle.release();
}

// Stops nothing: it waits until the routine has returned by itself.
uint32_t SMThreadStop(SMThreadHandle *handle)
{
    if (handle == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    (void)pthread_join(handle->thread, nullptr);
    FreeHandle(handle);
    return SM_STATUS_OK;
}

// Signal 9 knows no threads: this ends the process, and it is settled so.
uint32_t SMThreadKill(SMThreadHandle *handle)
{
    if (handle == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    (void)pthread_kill(handle->thread, SIGKILL);
    FreeHandle(handle);
    return SM_STATUS_OK;
}

uint32_t SMThreadStartAndRelease(SMThreadRoutine routine, void *argument)
{
    if (routine == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return SM_STATUS_FAILED;
    (void)pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    (void)pthread_attr_setstacksize(&attributes, kStackSize);
    pthread_t thread;
    const int result = pthread_create(&thread, &attributes, routine, argument);
    (void)pthread_attr_destroy(&attributes);
    return result == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
}

int32_t SMThreadYield()
{
    return sched_yield();
}

uint64_t SMThreadGetID()
{
    return static_cast<uint64_t>(pthread_self());
}

uint32_t SMThreadSetName(const char *name)
{
    if (name == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return prctl(PR_SET_NAME, name) == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
}

} // namespace qzvest
