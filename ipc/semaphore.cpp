#include "ipc/semaphore.h"

#include "ipc/localsem.h"
#include "ipc/names.h"
#include "ipc/semobject.h"
#include "ipc/semset.h"

struct SMSemaphore {
    qzvest::SemObjectRecord record;
};

namespace qzvest {
namespace {

constexpr int32_t kMostCount = 32767;

uint32_t StatusOf(const SMSemaphore *handle)
{
    return handle != nullptr ? HandleStatus(&handle->record, kKindSemaphore) : SM_STATUS_INVALID_PARAMETER;
}

HeapPtr<SMSemaphore> NewRecord(const char *name)
{
    return HeapPtr<SMSemaphore>(
        reinterpret_cast<SMSemaphore *>(SMIPCNameRecordAlloc(name, sizeof(SMSemaphore), kKindSemaphore)));
}

} // namespace

SMSemaphore *SMSemaphoreCreate(const char *name, uint32_t initialCount)
{
    return SMSemaphoreCreate_s(name, initialCount, name != nullptr ? SM_ACCESS_GROUP : SM_ACCESS_OWNER);
}

SMSemaphore *SMSemaphoreCreate_s(const char *name, uint32_t initialCount, uint32_t accessMask)
{
    if (initialCount > uint32_t{kMostCount})
        return nullptr;
    HeapPtr<SMSemaphore> semaphore = NewRecord(name);
    if (!semaphore || !SemObjectCreate(semaphore->record, 1, initialCount, accessMask))
        return nullptr;
    return semaphore.release();
}

SMSemaphore *SMSemaphoreOpen(const char *name)
{
    if (name == nullptr)
        return nullptr;
    HeapPtr<SMSemaphore> semaphore = NewRecord(name);
    if (!semaphore || !SemObjectOpen(semaphore->record))
        return nullptr;
    return semaphore.release();
}

uint32_t SMSemaphoreAcquireWait(SMSemaphore *handle, uint32_t timeoutMs)
{
    const uint32_t status = StatusOf(handle);
    return status == SM_STATUS_OK ? SemObjectWait(handle->record, timeoutMs) : status;
}

uint32_t SMSemaphoreRelease(SMSemaphore *handle, int32_t count, int32_t *previous)
{
    if (handle == nullptr || count < 1 || count > kMostCount)
        return SM_STATUS_INVALID_PARAMETER;
    if (const uint32_t status = StatusOf(handle); status != SM_STATUS_OK)
        return status;
    const SemObjectRecord &record = handle->record;
    if (previous != nullptr) {
        if (IsNamed(&record))
            *previous = IPCSemSetGet(static_cast<int32_t>(record.object.set));
        else if (const uint32_t status = LocalSemGet(record.object.local, previous); status != SM_STATUS_OK)
            return status;
    }
    return SemObjectPost(record, count);
}

void SMSemaphoreDestroy(SMSemaphore *handle)
{
    if (StatusOf(handle) == SM_STATUS_OK)
        SemObjectDestroy(&handle->record);
}

} // namespace qzvest
