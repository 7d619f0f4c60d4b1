#include "ipc/paths.h"

#include <initializer_list>

#include "config/registration.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr const char *kDataPathKey = "vestlib.vardatapath";
constexpr const char *kDefaultDataPath = "/var/run/qz";

char *directory;
char *registryFile;
char *registryLockPath;

} // namespace

int SMIPCPathsInit()
{
    HeapPtr<char> dataPath;
    const uint32_t status = RegistrationFile().Read(kDataPathKey, dataPath);
    if (status == SM_STATUS_NO_MEMORY)
        return 0; // the default would lead away from where the other processes meet
    directory = UTF8Join({dataPath ? dataPath.get() : kDefaultDataPath, "/.ipc"}).release();
    if (directory != nullptr)
        registryFile = UTF8Join({directory, "/.lxvestIPCini"}).release();
    if (registryFile != nullptr)
        registryLockPath = UTF8Join({registryFile, "Sem"}).release();
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
