// For programs whose objects lie at the fixed places: they run in tests/support/sandbox, and nowhere else.
#ifndef BENCH_SANDBOX_H
#define BENCH_SANDBOX_H

#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "ipc/paths.h"

namespace bench {

constexpr const char *kIpcDirectory = "/run/qz/.ipc";

// Makes the IPC directory, only where nothing is of anybody else.
inline bool MakeIpcDirectory()
{
    namespace fs = std::filesystem;
    const char *directory = qzvest::IPCDirectory();
    std::error_code error;
    if (directory == nullptr || directory != std::string("/var") + kIpcDirectory || !fs::is_empty("/run", error) ||
        error)
        return false;
    umask(022);
    return fs::create_directories(kIpcDirectory, error) && fs::equivalent(kIpcDirectory, directory, error);
}

// The rest of main.
inline int RunAll(int argc, char **argv, bool (*prepare)(), void (*registerAll)())
{
    if (!MakeIpcDirectory() || !prepare()) {
        std::fprintf(stderr, "%s: /run is not empty, or the library looks elsewhere: run it in tests/support/sandbox\n",
                     argv[0]);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace bench

#endif
