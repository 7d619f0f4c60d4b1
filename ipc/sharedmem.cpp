// Segments with a guard: a semaphore set under the segment's own key, of which the creator takes the one unit and keeps
// it. The system gives it back when the creator dies, and so anybody can tell a live creator from a dead one: value 0
// is a good segment, value 1 a stale one, no set one that no creator has finished.

#include "ipc/sharedmem.h"

#include <sys/shm.h>

#include <cerrno>
#include <utility>

#include "ipc/keys.h"
#include "ipc/names.h"
#include "ipc/semset.h"

struct SMSharedMem {
    qzvest::IPCNameRecord head;
    void *address;    // where the segment is attached; NULL once it is not
    int64_t guardSet; // 0 when there is none
    int32_t segment;  // -1 after its removal
    uint16_t creator; // 1 if this handle made the segment
};

namespace qzvest {
namespace {

constexpr int kOwnerOnly = 0600;

int32_t GuardOf(const SMSharedMem &memory)
{
    return static_cast<int32_t>(memory.guardSet);
}

// A record with its guard looked for, if there is one, and the key of both.
struct Probe {
    HeapPtr<SMSharedMem> memory;
    uint32_t key;
};

Probe ProbeGuard(const char *name)
{
    if (name == nullptr)
        return {nullptr, 0};
    HeapPtr<SMSharedMem> memory = NameRecordAlloc<SMSharedMem>(name, kKindSharedMemory);
    if (!memory)
        return {nullptr, 0};
    const uint32_t key = SMIPCKeyGet(memory->head.name);
    memory->address = nullptr;
    memory->guardSet = key != 0 ? IPCSemSetOf(key) : 0;
    memory->segment = -1;
    memory->creator = 0;
    return {std::move(memory), key};
}

// Whether the creator is gone. The unit that tells it is given back.
bool IsStale(const SMSharedMem &memory)
{
    if (SMIPCSemWait(GuardOf(memory), 0, false) != SM_STATUS_OK)
        return false;
    (void)SMIPCSemPost(GuardOf(memory), 1);
    return true;
}

int JoinSegment(uint32_t key)
{
    return shmget(static_cast<key_t>(key), 0, kOwnerOnly);
}

// Makes the segment, or joins one whose creator is dead.
bool MakeSegment(SMSharedMem &memory, uint32_t key, uint32_t size, uint32_t accessMask)
{
    const int flags = IPC_CREAT | IPC_EXCL | static_cast<int>(SMIPCAccessMaskToMode(accessMask));
    memory.segment = shmget(static_cast<key_t>(key), size, flags);
    memory.creator = memory.segment != -1 ? 1 : 0;
    if (memory.segment == -1 && errno == EEXIST && memory.guardSet != 0)
        memory.segment = JoinSegment(key);
    return memory.segment != -1;
}

void RemoveSegment(SMSharedMem &memory)
{
    (void)shmctl(memory.segment, IPC_RMID, nullptr);
    memory.segment = -1;
}

// A segment that cannot be attached is removed, for all.
bool AttachSegment(SMSharedMem &memory)
{
    void *const address = shmat(memory.segment, nullptr, 0);
    if (reinterpret_cast<intptr_t>(address) == -1) {
        RemoveSegment(memory);
        return false;
    }
    memory.address = address;
    return true;
}

} // namespace

SMSharedMem *SMSharedMemCreate(const char *name, uint32_t size)
{
    return SMSharedMemCreate_s(name, size, name != nullptr ? SM_ACCESS_GROUP : SM_ACCESS_OWNER);
}

SMSharedMem *SMSharedMemCreate_s(const char *name, uint32_t size, uint32_t accessMask)
{
    Probe probe = ProbeGuard(name);
    SMSharedMem *memory = probe.memory.get();
    if (memory == nullptr || (memory->guardSet != 0 && !IsStale(*memory)))
        return nullptr;
    if (!MakeSegment(*memory, probe.key, size, accessMask) || !AttachSegment(*memory))
        return nullptr;
    if (memory->guardSet == 0)
        memory->guardSet = SMIPCSemSetCreate(probe.key, 1, 1, 0);
    if (memory->guardSet == 0) {
        (void)shmdt(memory->address);
        RemoveSegment(*memory);
        return nullptr;
    }
    (void)SMIPCSemWait(GuardOf(*memory), SM_WAIT_FOREVER, true);
    return probe.memory.release();
}

SMSharedMem *SMSharedMemOpen(const char *name)
{
    Probe probe = ProbeGuard(name);
    SMSharedMem *memory = probe.memory.get();
    if (memory == nullptr || (memory->guardSet != 0 && IsStale(*memory)))
        return nullptr;
    memory->segment = JoinSegment(probe.key);
    if (memory->segment == -1 || !AttachSegment(*memory))
        return nullptr;
    return probe.memory.release();
}

void *SMSharedMemGetAddressPtr(SMSharedMem *handle)
{
    return HandleStatus(handle, kKindSharedMemory) == SM_STATUS_OK ? handle->address : nullptr;
}

void SMSharedMemFree(SMSharedMem *handle)
{
    if (HandleStatus(handle, kKindSharedMemory) != SM_STATUS_OK)
        return;
    (void)shmdt(handle->address);
    if (handle->creator == 1) {
        RemoveSegment(*handle);
        if (handle->guardSet != 0) {
            (void)SMIPCSemPost(GuardOf(*handle), 1);
            SMIPCSemSetRemove(GuardOf(*handle));
        }
    }
    std::free(handle);
}

} // namespace qzvest
