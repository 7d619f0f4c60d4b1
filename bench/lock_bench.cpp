// The mutex beside the system's own, in a process of several threads: in any other the C library leaves the locked
// instructions out.

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <qzvest/mutex.h>
#include <unistd.h>

#include <thread>

namespace {

[[maybe_unused]] const bool kThreaded = [] {
    std::thread([] { pause(); }).detach();
    return true;
}();

constexpr uint32_t kTimed = 1000;

SMMutex *ours;
pthread_mutex_t bare = PTHREAD_MUTEX_INITIALIZER;
uint64_t guarded; // what the threads contend for

void SetUp(const benchmark::State &)
{
    ours = SMMutexCreate(nullptr);
}

void TearDown(const benchmark::State &)
{
    SMMutexDestroy(ours);
}

void LockOurs(benchmark::State &state, uint32_t timeoutMs)
{
    for (auto _ : state) {
        SMMutexLock(ours, timeoutMs);
        benchmark::DoNotOptimize(++guarded);
        SMMutexUnLock(ours);
    }
}

void LockBare(benchmark::State &state)
{
    for (auto _ : state) {
        pthread_mutex_lock(&bare);
        benchmark::DoNotOptimize(++guarded);
        pthread_mutex_unlock(&bare);
    }
}

// The system's timed lock takes the time of day at which it gives up.
void LockBareTimed(benchmark::State &state)
{
    for (auto _ : state) {
        timespec until;
        clock_gettime(CLOCK_MONOTONIC, &until);
        ++until.tv_sec;
        pthread_mutex_clocklock(&bare, CLOCK_MONOTONIC, &until);
        benchmark::DoNotOptimize(++guarded);
        pthread_mutex_unlock(&bare);
    }
}

BENCHMARK_CAPTURE(LockOurs, , SM_WAIT_FOREVER)->Name("mutex_uncontended/ours/1")->Setup(SetUp)->Teardown(TearDown);
BENCHMARK(LockBare)->Name("mutex_uncontended/pthread/1");
BENCHMARK_CAPTURE(LockOurs, , kTimed)->Name("mutex_timed/ours/1")->Setup(SetUp)->Teardown(TearDown);
BENCHMARK(LockBareTimed)->Name("mutex_timed/pthread/1");
BENCHMARK_CAPTURE(LockOurs, , SM_WAIT_FOREVER)
    ->Name("mutex_contended/ours")
    ->Setup(SetUp)
    ->Teardown(TearDown)
    ->Threads(2)
    ->UseRealTime();
BENCHMARK(LockBare)->Name("mutex_contended/pthread")->Threads(2)->UseRealTime();

} // namespace
