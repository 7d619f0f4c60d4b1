#include "log/limits.h"

#include <cstring>

#include <qzvest/status.h>

#include "containers/redblacktree.h"
#include "frame/heap.h"
#include "frame/module.h"
#include "ipc/mutex.h"
#include "os/system.h"

namespace qzvest {
namespace {

constexpr uint32_t kDefaultLimit = 0x100000; // and the lowest that can be set
constexpr uint32_t kSmallLimit = 0x20000;    // the same on machines that have little room
constexpr uint32_t kHighestLimit = 0x400000;
constexpr size_t kPathRoom = 256;

struct LogLimit {
    char path[kPathRoom];
    uint32_t limit;
};

SMMutex *registryMutex;
SMRedBlackTree registry; // of LogLimit, by path
uint32_t defaultLimit = kDefaultLimit;
uint32_t exportContext; // cleared at attach; what SMSetLogMaxSize announces
uint16_t initialised;
int attachResult;

TreePlace Find(const char *path)
{
    return TreeFind(&registry,
                    [path](const void *data) { return std::strcmp(path, static_cast<const LogLimit *>(data)->path); });
}

// The limit of a path, with this one for a path that has none yet; NULL with the status when there is no memory.
LogLimit *FindOrAdd(const char *path, uint32_t limit, uint32_t &status)
{
    const TreePlace place = Find(path);
    if (auto *known = TreeDataAt<LogLimit>(place))
        return known;
    HeapPtr<LogLimit> record = HeapRoom<LogLimit>(1);
    status = SM_STATUS_NO_MEMORY;
    if (!record)
        return nullptr;
    std::memcpy(record->path, path, std::strlen(path) + 1);
    record->limit = limit;
    status = SM_STATUS_FAILED;
    if (TreeInsertAt(&registry, place, record.get()) == nullptr)
        return nullptr;
    return record.release(); // the tree's
}

bool IsUsablePath(const char *path)
{
    return path != nullptr && *path != '\0';
}

uint32_t SetLimit(const char *path, uint32_t size)
{
    if (!IsUsablePath(path) || std::strlen(path) >= kPathRoom || size < defaultLimit || size > kHighestLimit)
        return SM_STATUS_INVALID_PARAMETER;
    const MutexGuard guard(registryMutex);
    uint32_t status = SM_STATUS_OK;
    LogLimit *record = FindOrAdd(path, size, status);
    if (record == nullptr)
        return status;
    record->limit = size;
    return SM_STATUS_OK;
}

} // namespace

uint32_t SMGetLogMaxSize(const char *pathFileName, uint32_t *size)
{
    if (!IsUsablePath(pathFileName) || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    *size = defaultLimit;
    if (std::strlen(pathFileName) >= kPathRoom)
        return SM_STATUS_OK; // too long for a limit of its own
    const MutexGuard guard(registryMutex);
    uint32_t status;
    if (const LogLimit *record = FindOrAdd(pathFileName, defaultLimit, status); record != nullptr)
        *size = record->limit; // without memory for a record it is the default all the same
    return SM_STATUS_OK;
}

uint32_t SMSetLogMaxSize(const char *pathFileName, uint32_t size)
{
    uint32_t context;
    SMSetExportContext(&context, exportContext);
    const uint32_t status = SetLimit(pathFileName, size);
    SMResetExportContext(&context);
    return status;
}

uint32_t DefaultLogLimit()
{
    return defaultLimit;
}

int LogRegistryAttach()
{
    if (initialised != 0)
        return attachResult;
    exportContext = 0;
    defaultLimit = SMOSTypeGet() == kVMkernel ? kSmallLimit : kDefaultLimit;
    registryMutex = SMMutexCreate(nullptr);
    SMRedBlackTreeAttach(&registry);
    initialised = 1;
    attachResult = registryMutex != nullptr ? 1 : 0;
    return attachResult;
}

void LogRegistryDetach()
{
    if (initialised == 0)
        return;
    if (registryMutex != nullptr) {
        const MutexGuard guard(registryMutex);
        TreeClear(&registry, [](void *limit) { std::free(limit); });
    }
    SMMutexDestroy(registryMutex);
    registryMutex = nullptr;
    initialised = 0;
}

} // namespace qzvest
