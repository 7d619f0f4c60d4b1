#include "ipc/critical.h"

#include "containers/redblacktree.h"
#include "ipc/mutex.h"

namespace qzvest {
namespace {

SMMutex *tableMutex;
SMRedBlackTree table; // of FunctionEntry, by address
uint16_t begun;
uint16_t succeeded;

// There as long as a thread is inside the function or in front of it.
struct FunctionEntry {
    SMCriticalSectionFunction function;
    uint32_t references;
    pthread_mutex_t mutex;
};

TreePlace Find(SMCriticalSectionFunction function)
{
    const auto wanted = reinterpret_cast<uintptr_t>(function);
    return TreeFind(&table, [wanted](const void *data) {
        const auto address = reinterpret_cast<uintptr_t>(static_cast<const FunctionEntry *>(data)->function);
        return wanted == address ? 0 : wanted < address ? -1 : 1;
    });
}

FunctionEntry *MakeEntry(SMCriticalSectionFunction function, TreePlace place)
{
    HeapPtr<FunctionEntry> entry = HeapRoom<FunctionEntry>(1);
    if (!entry || pthread_mutex_init(&entry->mutex, nullptr) != 0)
        return nullptr;
    entry->function = function;
    entry->references = 0;
    if (TreeInsertAt(&table, place, entry.get()) != nullptr)
        return entry.release(); // the tree's
    (void)pthread_mutex_destroy(&entry->mutex);
    return nullptr;
}

// The entry of a function with one user more; NULL when it cannot be had.
FunctionEntry *Enter(SMCriticalSectionFunction function)
{
    const MutexGuard guard(tableMutex);
    const TreePlace place = Find(function);
    auto *entry = TreeDataAt<FunctionEntry>(place);
    if (entry == nullptr)
        entry = MakeEntry(function, place);
    if (entry != nullptr)
        ++entry->references;
    return entry;
}

void Leave(SMCriticalSectionFunction function)
{
    const MutexGuard guard(tableMutex);
    const TreePlace place = Find(function);
    auto *entry = TreeDataAt<FunctionEntry>(place);
    if (entry == nullptr || --entry->references >= 1)
        return;
    TreeRemoveAt(&table, place);
    (void)pthread_mutex_destroy(&entry->mutex);
    std::free(entry);
}

} // namespace

// Nothing tells the caller that the function did not run.
void SMCriticalSectionExecute(SMCriticalSectionFunction function, uint64_t argument, uint32_t timeout)
{
    if (function == nullptr || timeout != SM_WAIT_FOREVER || tableMutex == nullptr)
        return;
    FunctionEntry *entry = Enter(function);
    if (entry == nullptr)
        return;
    {
        const LocalMutexGuard guard(&entry->mutex);
        function(argument);
    }
    Leave(function);
}

int CriticalSectionAttach()
{
    if (begun != 0)
        return succeeded;
    begun = 1;
    succeeded = 0;
    tableMutex = SMMutexCreate(nullptr);
    if (tableMutex == nullptr)
        return 0;
    const MutexGuard guard(tableMutex);
    SMRedBlackTreeAttach(&table);
    succeeded = 1;
    return 1;
}

// Entries still in use are their users'.
void CriticalSectionDetach()
{
    if (begun == 0)
        return;
    begun = 0;
    if (tableMutex == nullptr)
        return;
    {
        const MutexGuard guard(tableMutex);
        SMRedBlackTreeDetach(&table);
    }
    SMMutexDestroy(tableMutex);
    tableMutex = nullptr;
}

} // namespace qzvest
