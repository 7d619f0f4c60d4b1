// Loading the library, which attaches it, and unloading it again, beside a library with nothing in it.

#include <benchmark/benchmark.h>
#include <dlfcn.h>

namespace {

void LoadRow(benchmark::State &state, const char *path)
{
    for (auto _ : state) {
        void *library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return state.SkipWithError(dlerror());
        dlclose(library);
    }
    // Else the rounds would have measured a count going up and down.
    if (dlopen(path, RTLD_NOW | RTLD_NOLOAD) != nullptr)
        state.SkipWithError("never unloaded");
}

[[maybe_unused]] const benchmark::internal::Benchmark *const kRows[] = {
    benchmark::RegisterBenchmark("attach_detach/ours/1", LoadRow, QZVEST_PATH),
    benchmark::RegisterBenchmark("attach_detach/empty library/1", LoadRow, EMPTY_PATH),
};

} // namespace
