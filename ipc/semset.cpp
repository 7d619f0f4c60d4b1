#include "ipc/semset.h"

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "config/ini.h"
#include "frame/heap.h"
#include "ipc/filelock.h"
#include "ipc/keys.h"
#include "ipc/names.h"
#include "ipc/paths.h"
#include "os/system.h"
#include "values/parse.h"

namespace qzvest {
namespace {

constexpr int kOwnerOnly = 0600;
constexpr uint32_t kNumberText = 16;

// The fourth argument of semctl, which its users define.
union SemaphoreArgument {
    int value;
    semid_ds *status;
};

// A failure for which the machine's operator has to do something.
void TellOperator(int error)
{
    constexpr uint32_t kSeverity = 4;
    constexpr uint32_t kSource = 1;
    const char *message;
    if (error == ENOMEM)
        message = "A semaphore set could not be created because the system has not enough memory for the new data "
                  "structure\n";
    else if (error == ENOSPC)
        message = "A semaphore set has to be created but the system limit for the maximum number of semaphore sets has "
                  "been exceeded\n";
    else
        return;
    (void)SMAppendToOSSysLog(kSeverity, kSource, 0, "Fleet Steward (Shared Library)", message);
}

bool RemoveSet(int32_t setId)
{
    return semctl(setId, 0, IPC_RMID) == 0;
}

void DeleteFromList(int32_t setId)
{
    char key[kNumberText];
    (void)std::snprintf(key, sizeof key, "%u",
                        static_cast<unsigned>(setId)); // the text of the record: no id is negative
    (void)SMWriteINIPathFileValue(kSemaphoreListSection, key, INI_TYPE_UTF8, nullptr, 0, IPCRegistryFile(),
                                  kWaitForLock);
}

void RecordInList(int32_t setId)
{
    char key[kNumberText];
    (void)std::snprintf(key, sizeof key, "%d", setId);
    const auto process = static_cast<uint64_t>(getpid());
    (void)SMWriteINIPathFileValue(kSemaphoreListSection, key, INI_TYPE_UINT64, &process, sizeof process,
                                  IPCRegistryFile(), kWaitForLock);
}

bool IsAlive(uint64_t process)
{
    char path[32];
    (void)std::snprintf(path, sizeof path, "/proc/%llu", static_cast<unsigned long long>(process));
    return access(path, F_OK) == 0;
}

// A set that is gone already keeps its entry, and is tried again at every attach.
void RemoveIfStale(const char *key)
{
    uint64_t process;
    uint32_t size = sizeof process;
    if (SMReadINIPathFileValue(kSemaphoreListSection, key, INI_TYPE_UINT64, &process, &size, nullptr, 0,
                               IPCRegistryFile(), kWaitForLock) != SM_STATUS_OK ||
        IsAlive(process))
        return;
    uint32_t status;
    const int32_t setId = SMXLTParseSigned32(key, SMXLT_FORMAT_DEFAULT, &status);
    if (status == SM_STATUS_OK)
        SMIPCSemSetRemove(setId);
}

// Milliseconds of the wall clock, which these waits go by, in 32 bits.
uint32_t WallMilliseconds(const timeval &start, const timeval &end)
{
    return static_cast<uint32_t>((end.tv_usec - start.tv_usec) / 1000 + (end.tv_sec - start.tv_sec) * 1000);
}

timespec DurationOf(uint32_t milliseconds)
{
    return {static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000};
}

uint32_t WaitWithin(int32_t setId, sembuf &operation, uint32_t timeoutMs)
{
    timespec left = DurationOf(timeoutMs);
    timeval start;
    (void)gettimeofday(&start, nullptr);
    for (;;) {
        if (semtimedop(setId, &operation, 1, &left) == 0)
            return SM_STATUS_OK;
        if (errno != EINTR)
            return errno == EAGAIN ? SM_STATUS_TIMEOUT : SM_STATUS_FAILED;
        timeval now;
        (void)gettimeofday(&now, nullptr);
        const uint32_t elapsed = WallMilliseconds(start, now);
        if (timeoutMs <= elapsed)
            return SM_STATUS_TIMEOUT;
        left = DurationOf(timeoutMs - elapsed);
    }
}

bool Operate(int32_t setId, sembuf &operation)
{
    while (semop(setId, &operation, 1) != 0)
        if (errno != EINTR)
            return false;
    return true;
}

} // namespace

int32_t SMIPCSemSetCreate(uint32_t key, int32_t semaphoreCount, uint32_t initialValue, uint32_t accessMask)
{
    const auto systemKey = static_cast<key_t>(key);
    const int flags = IPC_CREAT | IPC_EXCL | static_cast<int>(SMIPCAccessMaskToMode(accessMask));
    const int setId = semget(systemKey, semaphoreCount, flags);
    if (setId == -1) {
        if (errno == EEXIST)
            return IPCSemSetOf(key); // it keeps its value, and the joiner is not told that it joined
        TellOperator(errno);
        return 0;
    }
    if (setId == 0) {
        // The number 0 stands for no set. A set in its place keeps the system from giving it out again.
        (void)RemoveSet(setId);
        const int spare = semget(IPC_PRIVATE, 1, IPC_CREAT | IPC_EXCL | kOwnerOnly);
        const int32_t another = SMIPCSemSetCreate(key, semaphoreCount, initialValue, accessMask);
        (void)RemoveSet(spare);
        return another;
    }
    IPCSemSetPut(setId, static_cast<int32_t>(initialValue));
    if (systemKey == IPC_PRIVATE)
        RecordInList(setId);
    return setId;
}

int32_t IPCSemSetOf(uint32_t key)
{
    const int setId = semget(static_cast<key_t>(key), 0, kOwnerOnly);
    return setId != -1 ? setId : 0;
}

void SMIPCSemSetRemove(int32_t setId)
{
    if (RemoveSet(setId))
        DeleteFromList(setId);
}

int32_t IPCSemSetSize(int32_t setId)
{
    semid_ds status;
    SemaphoreArgument argument;
    argument.status = &status;
    return semctl(setId, 0, IPC_STAT, argument) == 0 ? static_cast<int32_t>(status.sem_nsems) : -1;
}

int32_t IPCSemSetGet(int32_t setId)
{
    return semctl(setId, 0, GETVAL);
}

void IPCSemSetPut(int32_t setId, int32_t count)
{
    SemaphoreArgument argument;
    argument.value = count;
    (void)semctl(setId, 0, SETVAL, argument);
}

uint32_t SMIPCSemWait(int32_t setId, uint32_t timeoutMs, bool undo)
{
    if (setId == 0)
        return SM_STATUS_FAILED;
    sembuf operation = {0, -1, static_cast<short>(undo ? SEM_UNDO : 0)};
    if (timeoutMs == SM_WAIT_FOREVER)
        return Operate(setId, operation) ? SM_STATUS_OK : SM_STATUS_FAILED;
    if (timeoutMs == 0)
        operation.sem_flg = static_cast<short>(operation.sem_flg | IPC_NOWAIT);
    return WaitWithin(setId, operation, timeoutMs);
}

uint32_t SMIPCSemPost(int32_t setId, int32_t count)
{
    if (setId == 0)
        return SM_STATUS_FAILED;
    for (int32_t i = 0; i < count; ++i) {
        sembuf operation = {0, 1, IPC_NOWAIT};
        if (!Operate(setId, operation))
            return SM_STATUS_FAILED;
    }
    return SM_STATUS_OK;
}

void SMIPCStaleSemCleanup()
{
    constexpr uint32_t kListRoom = 8193; // a longer list is left alone
    uint32_t size = kListRoom;
    const HeapPtr<char> keys = HeapRoom<char>(size);
    if (!keys || SMReadINIPathFileValue(kSemaphoreListSection, nullptr, INI_TYPE_UTF8, keys.get(), &size, nullptr, 0,
                                        IPCRegistryFile(), kWaitForLock) != SM_STATUS_OK)
        return;
    for (const char *key = keys.get(); *key != '\0'; key += std::strlen(key) + 1)
        RemoveIfStale(key);
}

} // namespace qzvest
