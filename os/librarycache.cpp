// The cache of libraries: each is loaded once, however many clients ask, with the symbols that were asked for, and
// leaves with its last client.

#include <cstring>

#include "containers/redblacktree.h"
#include "ipc/mutex.h"
#include "os/library.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

struct Symbol {
    char *name;
    void *address;
};

struct FLibEntry {
    char *path;
    SMLibHandle *library;
    SMRedBlackTree clients; // of name copies
    SMRedBlackTree symbols; // of Symbol, by name
    int32_t clientCount;
    int32_t symbolCount; // kept for the record's form
};

SMMutex *cacheMutex;
SMRedBlackTree cache; // of FLibEntry, by path
int32_t libraryCount; // as symbolCount
uint32_t attachCount;

// Each kind of element by its name.
const char *NameOf(const char *client)
{
    return client;
}

const char *NameOf(const Symbol *symbol)
{
    return symbol->name;
}

const char *NameOf(const FLibEntry *entry)
{
    return entry->path;
}

template <typename Element>
TreePlace Find(SMRedBlackTree *tree, const char *name)
{
    return TreeFind(tree,
                    [name](const void *data) { return std::strcmp(name, NameOf(static_cast<const Element *>(data))); });
}

void FreeSymbol(Symbol *symbol)
{
    std::free(symbol->name);
    std::free(symbol);
}

// True when the client is there, new or known.
bool AddClient(FLibEntry *entry, const char *client)
{
    const TreePlace place = Find<char>(&entry->clients, client);
    if (*place.link != nullptr)
        return true;
    HeapPtr<char> copy(SMUTF8Strdup(client));
    if (!copy || TreeInsertAt(&entry->clients, place, copy.get()) == nullptr)
        return false;
    (void)copy.release(); // the tree's
    ++entry->clientCount;
    return true;
}

void DestroyEntry(FLibEntry *entry)
{
    TreeClear(&entry->clients, [](void *client) { std::free(client); });
    SMLibHandle *const library = entry->library;
    TreeClear(&entry->symbols, [library](void *data) {
        auto *symbol = static_cast<Symbol *>(data);
        (void)SMLibUnLinkFromExportFN(library, symbol->address);
        FreeSymbol(symbol);
    });
    (void)SMLibUnLoad(library);
    --libraryCount;
    std::free(entry->path);
    std::free(entry);
}

// Loads a library for its first client. An entry whose client finds no memory stands without one.
FLibEntry *AddLibrary(const char *path, const char *client, TreePlace place)
{
    HeapPtr<FLibEntry> entry = HeapRoom<FLibEntry>(1);
    if (!entry)
        return nullptr;
    *entry = {nullptr, SMLibLoad(path), nullptr, nullptr, 0, 0};
    if (entry->library == nullptr)
        return nullptr;
    HeapPtr<char> copy(SMUTF8Strdup(path));
    entry->path = copy.get();
    if (!copy || TreeInsertAt(&cache, place, entry.get()) == nullptr) {
        (void)SMLibUnLoad(entry->library);
        return nullptr;
    }
    (void)copy.release(); // the entry's
    ++libraryCount;
    (void)AddClient(entry.get(), client);
    return entry.release(); // the tree's
}

FLibEntry *EntryOf(const char *path, const char *client)
{
    const TreePlace place = Find<FLibEntry>(&cache, path);
    FLibEntry *entry = TreeDataAt<FLibEntry>(place);
    if (entry == nullptr)
        return AddLibrary(path, client, place);
    return AddClient(entry, client) ? entry : nullptr;
}

void *AddressOf(FLibEntry *entry, const char *name)
{
    const TreePlace place = Find<Symbol>(&entry->symbols, name);
    if (const Symbol *known = TreeDataAt<Symbol>(place))
        return known->address;
    HeapPtr<Symbol> symbol = HeapRoom<Symbol>(1);
    HeapPtr<char> copy(SMUTF8Strdup(name));
    if (!symbol || !copy)
        return nullptr;
    *symbol = {copy.get(), SMLibLinkToExportFN(entry->library, name)};
    void *const address = symbol->address;
    if (address == nullptr || TreeInsertAt(&entry->symbols, place, symbol.get()) == nullptr)
        return nullptr;
    (void)copy.release(); // the tree's, both of them
    (void)symbol.release();
    ++entry->symbolCount;
    return address;
}

} // namespace

// The lock is held through the loader, and so also through the constructors of the library.
void *SMFLibLinkToExportFN(const char *client, const char *path, const char *symbol)
{
    if (client == nullptr || path == nullptr)
        return nullptr;
    const MutexGuard guard(cacheMutex);
    FLibEntry *entry = EntryOf(path, client);
    if (entry == nullptr)
        return nullptr;
    return symbol != nullptr ? AddressOf(entry, symbol) : entry->library;
}

// An unknown client counts down as well, and may unload a library from under those that use it. It is settled so.
uint32_t SMFLibUnLoad(const char *client, const char *path)
{
    if (client == nullptr || path == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const MutexGuard guard(cacheMutex);
    const TreePlace place = Find<FLibEntry>(&cache, path);
    auto *entry = TreeDataAt<FLibEntry>(place);
    if (entry == nullptr)
        return SM_STATUS_OK;
    const TreePlace clientPlace = Find<char>(&entry->clients, client);
    if (const HeapPtr<char> known(TreeDataAt<char>(clientPlace)); known)
        TreeRemoveAt(&entry->clients, clientPlace);
    if (--entry->clientCount < 1) {
        TreeRemoveAt(&cache, place);
        DestroyEntry(entry);
    }
    return SM_STATUS_OK;
}

int LibraryCacheAttach()
{
    if (attachCount != 0)
        return 0;
    attachCount = 1;
    cacheMutex = SMMutexCreate(nullptr);
    if (cacheMutex == nullptr) {
        attachCount = 0;
        return 0;
    }
    const MutexGuard guard(cacheMutex);
    libraryCount = 0;
    SMRedBlackTreeAttach(&cache);
    return 1;
}

void LibraryCacheDetach()
{
    if (attachCount == 0)
        return;
    {
        const MutexGuard guard(cacheMutex);
        attachCount = 0;
        TreeClear(&cache, [](void *data) { DestroyEntry(static_cast<FLibEntry *>(data)); });
        libraryCount = 0;
    }
    SMMutexDestroy(cacheMutex);
    cacheMutex = nullptr;
}

} // namespace qzvest
