#include "ipc/semobject.h"

#include "ipc/keys.h"
#include "ipc/localsem.h"
#include "ipc/semset.h"

namespace qzvest {
namespace {

int32_t SetOf(const SemObjectRecord &record)
{
    return static_cast<int32_t>(record.object.set);
}

} // namespace

bool SemObjectCreate(SemObjectRecord &record, int32_t semaphoreCount, uint32_t initialCount, uint32_t accessMask)
{
    record.owner = 1;
    if (!IsNamed(&record)) {
        record.object.local = LocalSemCreate(static_cast<int32_t>(initialCount));
        return record.object.local != nullptr;
    }
    const uint32_t key = SMIPCKeyGet(record.head.name);
    record.object.set = key != 0 ? SMIPCSemSetCreate(key, semaphoreCount, initialCount, accessMask) : 0;
    return record.object.set != 0;
}

bool SemObjectOpen(SemObjectRecord &record)
{
    record.owner = 0;
    const uint32_t key = SMIPCKeyGet(record.head.name);
    record.object.set = key != 0 ? IPCSemSetOf(key) : 0;
    return record.object.set != 0;
}

uint32_t SemObjectWait(const SemObjectRecord &record, uint32_t timeoutMs)
{
    return IsNamed(&record) ? SMIPCSemWait(SetOf(record), timeoutMs, false)
                            : LocalSemWait(record.object.local, static_cast<int32_t>(timeoutMs));
}

uint32_t SemObjectPost(const SemObjectRecord &record, int32_t count)
{
    return IsNamed(&record) ? SMIPCSemPost(SetOf(record), count) : LocalSemPost(record.object.local, count);
}

void SemObjectDestroy(SemObjectRecord *record)
{
    if (record->owner == 1) {
        if (!IsNamed(record))
            LocalSemDestroy(record->object.local);
        else if (record->object.set != 0)
            SMIPCSemSetRemove(SetOf(*record));
    }
    std::free(record);
}

} // namespace qzvest
