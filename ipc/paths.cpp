#include "ipc/paths.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "config/registration.h"

namespace qzvest {
namespace {

constexpr const char *kDataPathKey = "vestlib.vardatapath";
constexpr const char *kDefaultDataPath = "/var/run/qz";

char *directory;
char *registryFile;
char *registryLockPath;

// "first" "between" "last" on the heap.
char *Joined(const char *first, const char *between, const char *last)
{
    const size_t size = std::strlen(first) + std::strlen(between) + std::strlen(last) + 1;
    HeapPtr<char> text = HeapRoom<char>(size);
    if (text)
        (void)std::snprintf(text.get(), size, "%s%s%s", first, between, last); // sized to fit
    return text.release();
}

} // namespace

int SMIPCPathsInit()
{
    HeapPtr<char> dataPath;
    const uint32_t status = RegistrationKeyRead(kDataPathKey, dataPath);
    if (status == SM_STATUS_NO_MEMORY)
        return 0; // the default would lead away from where the other processes meet
    directory = Joined(dataPath ? dataPath.get() : kDefaultDataPath, "/", ".ipc");
    if (directory != nullptr)
        registryFile = Joined(directory, "/", ".lxvestIPCini");
    if (registryFile != nullptr)
        registryLockPath = Joined(registryFile, "", "Sem");
    if (registryLockPath != nullptr)
        return 1;
    IPCPathsFree();
    return 0;
}

void IPCPathsFree()
{
    for (char **path : {&directory, &registryFile, &registryLockPath}) {
        std::free(*path);
        *path = nullptr;
    }
}

const char *IPCDirectory()
{
    return directory;
}

const char *IPCRegistryFile()
{
    return registryFile;
}

const char *IPCRegistryLockPath()
{
    return registryLockPath;
}

} // namespace qzvest
