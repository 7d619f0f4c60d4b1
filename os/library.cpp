#include "os/library.h"

#include <dlfcn.h>

#include <cstring>

#include "frame/heap.h"
#include "ipc/namerecord.h"

struct SMLibHandle {
    uint32_t kind; // kKindLibrary
    char *path;    // behind this record; kept for its form
    void *handle;  // the loader's
};

namespace qzvest {
namespace {

// SM_STATUS_OK for a handle that can be worked with.
uint32_t StatusOf(const SMLibHandle *handle)
{
    if (handle == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return handle->kind == kKindLibrary && handle->handle != nullptr ? SM_STATUS_OK : SM_STATUS_BAD_FORMAT;
}

} // namespace

SMLibHandle *SMLibLoad(const char *path)
{
    if (path == nullptr)
        return nullptr;
    const size_t size = std::strlen(path) + 1;
    HeapPtr<char> block = HeapRoom<char>(sizeof(SMLibHandle) + size);
    if (!block)
        return nullptr;
    auto *library = reinterpret_cast<SMLibHandle *>(block.get());
    library->kind = kKindLibrary;
    library->path = block.get() + sizeof(SMLibHandle);
    std::memcpy(library->path, path, size);
    library->handle = dlopen(path, RTLD_NOW);
    if (library->handle == nullptr)
        return nullptr;
    (void)block.release();
    return library;
}

uint32_t SMLibUnLoad(SMLibHandle *handle)
{
    if (const uint32_t status = StatusOf(handle); status != SM_STATUS_OK)
        return status;
    if (dlclose(handle->handle) != 0)
        return SM_STATUS_FAILED;
    std::free(handle);
    return SM_STATUS_OK;
}

void *SMLibLinkToExportFN(SMLibHandle *handle, const char *symbol)
{
    if (symbol == nullptr || StatusOf(handle) != SM_STATUS_OK)
        return nullptr;
    (void)dlerror(); // forgets what went wrong before
    void *const address = dlsym(handle->handle, symbol);
    return dlerror() == nullptr ? address : nullptr;
}

// Nothing is to be released.
uint32_t SMLibUnLinkFromExportFN(SMLibHandle *handle, void *address)
{
    const uint32_t status = StatusOf(handle);
    if (status == SM_STATUS_OK && address == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return status;
}

} // namespace qzvest
