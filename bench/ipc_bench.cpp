// Locks, semaphores and events that processes share by name, beside the system's own and beside the same system calls
// by hand; what it costs to create and to open a name that is known; and what threads of one process use. The
// anonymous mutex is in lock_bench.
//
// It is linked to the library's objects, and run by tests/support/sandbox, whose /run is empty and whose System V
// objects are its own: there it makes the IPC directory and writes the registry.

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>

#include "bench/ipc_data.h"
#include "bench/sandbox.h"
#include "ipc/critical.h"
#include "os/library.h"

namespace {

using namespace bench;

uint64_t guarded;

uint64_t Work(uint64_t argument)
{
    benchmark::DoNotOptimize(guarded += argument);
    return 0;
}

void CriticalOurs()
{
    qzvest::SMCriticalSectionExecute(Work, 1, SM_WAIT_FOREVER);
}

void CriticalMutex()
{
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    auto work = Work;
    benchmark::DoNotOptimize(work);
    pthread_mutex_lock(&mutex);
    work(1);
    pthread_mutex_unlock(&mutex);
}

constexpr const char *kLibrary = "libm.so.6";
constexpr const char *kSymbol = "cos";

void SymbolOurs()
{
    Need(qzvest::SMFLibLinkToExportFN(kName, kLibrary, kSymbol) != nullptr);
}

void SymbolDlsym()
{
    static void *const library = dlopen(kLibrary, RTLD_LAZY);
    Need(dlsym(library, kSymbol) != nullptr);
}

void SymbolDlopen()
{
    void *const library = dlopen(kLibrary, RTLD_LAZY);
    Need(dlsym(library, kSymbol) != nullptr);
    dlclose(library);
}

void Call(benchmark::State &state, void (*call)())
{
    for (auto _ : state)
        call();
}

void RegisterCalls()
{
    benchmark::RegisterBenchmark("critical_section/ours/1", Call, CriticalOurs);
    benchmark::RegisterBenchmark("critical_section/pthread/1", Call, CriticalMutex);
    benchmark::RegisterBenchmark("library_symbol/ours/1", Call, SymbolOurs);
    benchmark::RegisterBenchmark("library_symbol/dlsym/1", Call, SymbolDlsym);
    benchmark::RegisterBenchmark("library_symbol/dlopen+dlsym/1", Call, SymbolDlopen);
}

// In a process of one thread the C library leaves the locked instructions out.
bool StartThread()
{
    std::thread([] { pause(); }).detach();
    return true;
}

void RegisterAll()
{
    RegisterLocks();
    RegisterSemaphores();
    RegisterNames();
    RegisterCalls();
}

} // namespace

int main(int argc, char **argv)
{
    return bench::RunAll(argc, argv, StartThread, RegisterAll);
}
