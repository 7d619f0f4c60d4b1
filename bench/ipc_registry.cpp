// Creating and opening semaphores whose name the registry knows.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/ipc_data.h"
#include "ipc/keys.h"
#include "ipc/names.h"
#include "ipc/paths.h"
#include "ipc/semaphore.h"

namespace bench {
namespace {

// A registry of so many names, the last of which is that of kName.
class Registry {
public:
    explicit Registry(int64_t names)
    {
        char digest[qzvest::kNameDigestSize];
        uint32_t digestSize = sizeof digest;
        NeedOK(qzvest::SMNameDigest(kName, digest, &digestSize));
        name_ = std::string("qzvessmp") + digest;
        std::string byName = "[Unique String Name Key Section]\n";
        std::string byNumber = "\n[Unique Numeric Value Key Section]\n";
        for (int64_t i = 1; i <= names; ++i) {
            char other[64];
            std::snprintf(other, sizeof other, "qzvessmp%032lX", static_cast<unsigned long>(i));
            const std::string name = i < names ? other : name_;
            const std::string key = std::to_string(kFirst + i);
            byName.append(name).append("=").append(key).append("\n");
            byNumber.append(key).append("=").append(name).append("\n");
        }
        end_ = byName.size();
        key_ = static_cast<uint32_t>(kFirst + names);
        std::ofstream(qzvest::IPCRegistryFile()) << byName << byNumber;
        Need(qzvest::SMIPCKeyGet(name_.c_str()) == key_);
        registryLock_ = LockFileOf(qzvest::IPCRegistryLockPath());
        fileLock_ = LockFileOf(qzvest::IPCRegistryFile());
        backup_ = std::string(qzvest::IPCRegistryFile()) + ".bak";
        holder_ = qzvest::SMSemaphoreCreate(kName, 0);
        Need(holder_ != nullptr);
    }
    ~Registry()
    {
        qzvest::SMSemaphoreDestroy(holder_);
        unlink(qzvest::IPCRegistryFile());
    }
    Registry(const Registry &) = delete;
    Registry &operator=(const Registry &) = delete;

    // What a look-up cannot do without: the registry's lock and the file's own, and reading up to the name.
    bool LookUp() const
    {
        const int registry = Lock(registryLock_, O_WRONLY, F_WRLCK);
        const int file = Lock(fileLock_, O_RDONLY, F_RDLCK);
        const bool read = Read();
        UnLock(file);
        UnLock(registry);
        return read;
    }
    // The same with what a read and a writer's lock have to look at: a backup, and the rights on what is locked.
    bool LookUpAsOurs() const
    {
        const int registry = Lock(registryLock_, O_WRONLY, F_WRLCK);
        const int file = Lock(fileLock_, O_RDONLY, F_RDLCK);
        const bool read = access(backup_.c_str(), F_OK) != 0 && Read();
        UnLock(file);
        struct stat status;
        (void)stat(qzvest::IPCRegistryLockPath(), &status); // never there
        const bool locked = stat(registryLock_.c_str(), &status) == 0;
        UnLock(registry);
        return read && locked;
    }
    int Join() const
    {
        return semget(static_cast<key_t>(key_), 0, 0600);
    }
    int Create() const
    {
        const int set = semget(static_cast<key_t>(key_), 1, IPC_CREAT | IPC_EXCL | 0664);
        return set != -1 ? set : Join();
    }

private:
    static constexpr int64_t kFirst = 300000;

    static std::string LockFileOf(const char *path)
    {
        char digest[qzvest::kNameDigestSize];
        uint32_t digestSize = sizeof digest;
        NeedOK(qzvest::SMNameDigest(path, digest, &digestSize));
        return std::string(qzvest::IPCDirectory()) + "/.qzvesflk" + digest;
    }
    static bool Set(int descriptor, short type)
    {
        struct flock range = {};
        range.l_type = type;
        range.l_whence = SEEK_SET;
        return fcntl(descriptor, F_SETLKW, &range) == 0;
    }
    static int Lock(const std::string &path, int flags, short type)
    {
        const int descriptor = open(path.c_str(), flags | O_CREAT | O_CLOEXEC, 0600);
        Need(Set(descriptor, type));
        return descriptor;
    }
    static void UnLock(int descriptor)
    {
        Set(descriptor, F_UNLCK);
        close(descriptor);
    }
    bool Read() const
    {
        static char block[65536];
        const int descriptor = open(qzvest::IPCRegistryFile(), O_RDONLY | O_CLOEXEC);
        size_t loaded = 0;
        while (loaded < end_) {
            const ssize_t got = read(descriptor, block, sizeof block);
            if (got <= 0)
                break;
            loaded += static_cast<size_t>(got);
        }
        close(descriptor);
        return loaded >= end_;
    }

    std::string name_;
    std::string registryLock_;
    std::string backup_;
    std::string fileLock_;
    uint32_t key_;
    size_t end_;
    SMSemaphore *holder_; // keeps the set there, for others to join
};

void CreateOurs(const Registry &)
{
    SMSemaphore *semaphore = qzvest::SMSemaphoreCreate(kName, 0);
    Need(semaphore != nullptr);
    std::free(semaphore); // a creator's end would be the set's
}

void OpenOurs(const Registry &)
{
    SMSemaphore *semaphore = qzvest::SMSemaphoreOpen(kName);
    Need(semaphore != nullptr);
    qzvest::SMSemaphoreDestroy(semaphore);
}

template <bool (Registry::*kLookUp)() const>
void CreateBare(const Registry &registry)
{
    Need((registry.*kLookUp)() && registry.Create() != -1);
}

template <bool (Registry::*kLookUp)() const>
void OpenBare(const Registry &registry)
{
    Need((registry.*kLookUp)() && registry.Join() != -1);
}

void Named(benchmark::State &state, void (*call)(const Registry &))
{
    const Registry registry(state.range(0));
    for (auto _ : state)
        call(registry);
}

void RegisterNamed(const char *name, void (*call)(const Registry &))
{
    benchmark::RegisterBenchmark(name, Named, call)->Arg(10)->Arg(1000)->Arg(10000);
}

} // namespace

void RegisterNames()
{
    RegisterNamed("sem_create_known/ours", CreateOurs);
    RegisterNamed("sem_create_known/bare", CreateBare<&Registry::LookUp>);
    RegisterNamed("sem_create_known/same calls", CreateBare<&Registry::LookUpAsOurs>);
    RegisterNamed("sem_open_known/ours", OpenOurs);
    RegisterNamed("sem_open_known/bare", OpenBare<&Registry::LookUp>);
    RegisterNamed("sem_open_known/same calls", OpenBare<&Registry::LookUpAsOurs>);
}

} // namespace bench
