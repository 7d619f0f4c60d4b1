#include "ipc/event.h"

#include "ipc/localsem.h"
#include "ipc/names.h"
#include "ipc/semobject.h"
#include "ipc/semset.h"

struct SMEvent {
    qzvest::SemObjectRecord record;
    uint16_t manualReset; // 1 for manual
};

namespace qzvest {
namespace {

// How a process that opens an event learns of its kind: the set of one with manual reset has a second semaphore, which
// is never used.
constexpr int32_t kAutomaticSet = 1;
constexpr int32_t kManualSet = 2;

uint32_t StatusOf(const SMEvent *handle)
{
    return handle != nullptr ? HandleStatus(&handle->record, kKindEvent) : SM_STATUS_INVALID_PARAMETER;
}

HeapPtr<SMEvent> NewRecord(const char *name)
{
    return HeapPtr<SMEvent>(reinterpret_cast<SMEvent *>(SMIPCNameRecordAlloc(name, sizeof(SMEvent), kKindEvent)));
}

} // namespace

SMEvent *SMEventCreate(const char *name, uint16_t manualReset, uint16_t initiallySet)
{
    return SMEventCreate_s(name, manualReset, initiallySet, name != nullptr ? SM_ACCESS_GROUP : SM_ACCESS_OWNER);
}

SMEvent *SMEventCreate_s(const char *name, uint16_t manualReset, uint16_t initiallySet, uint32_t accessMask)
{
    HeapPtr<SMEvent> event = NewRecord(name);
    const int32_t semaphoreCount = manualReset == 1 ? kManualSet : kAutomaticSet;
    const uint32_t start = initiallySet == 1 ? 1 : 0;
    if (!event || !SemObjectCreate(event->record, semaphoreCount, start, accessMask))
        return nullptr;
    event->manualReset = manualReset; // the caller's also where it joined a set of the other kind
    return event.release();
}

SMEvent *SMEventOpen(const char *name)
{
    if (name == nullptr)
        return nullptr;
    HeapPtr<SMEvent> event = NewRecord(name);
    if (!event || !SemObjectOpen(event->record))
        return nullptr;
    const int32_t size = IPCSemSetSize(static_cast<int32_t>(event->record.object.set));
    event->manualReset = size == kManualSet ? 1 : 0;
    return event.release();
}

// Between the wait and what follows, another thread may run: a reset may be undone, a set may be lost. This is settled.
uint32_t SMEventWait(SMEvent *handle, uint32_t timeoutMs)
{
    if (const uint32_t status = StatusOf(handle); status != SM_STATUS_OK)
        return status;
    if (const uint32_t status = SemObjectWait(handle->record, timeoutMs); status != SM_STATUS_OK)
        return status;
    if (handle->manualReset == 1)
        (void)SMEventSet(handle); // for the next waiter
    else
        (void)SMEventReset(handle); // with whatever earlier sets added
    return SM_STATUS_OK;
}

uint32_t SMEventSet(SMEvent *handle)
{
    const uint32_t status = StatusOf(handle);
    return status == SM_STATUS_OK ? SemObjectPost(handle->record, 1) : status;
}

uint32_t SMEventReset(SMEvent *handle)
{
    if (const uint32_t status = StatusOf(handle); status != SM_STATUS_OK)
        return status;
    const SemObjectRecord &record = handle->record;
    if (!IsNamed(&record))
        return LocalSemSet(record.object.local, 0);
    if (record.object.set == 0)
        return SM_STATUS_FAILED;
    IPCSemSetPut(static_cast<int32_t>(record.object.set), 0);
    return SM_STATUS_OK;
}

void SMEventDestroy(SMEvent *handle)
{
    if (StatusOf(handle) == SM_STATUS_OK)
        SemObjectDestroy(&handle->record);
}

} // namespace qzvest
