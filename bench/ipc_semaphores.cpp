// Semaphores and events: alone, and from one process to another and back.

#include <benchmark/benchmark.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/sem.h>

#include "bench/ipc_data.h"
#include "ipc/event.h"
#include "ipc/semaphore.h"

namespace bench {
namespace {

// ---- Semaphores, and events, which are set as one posts and waited for ----

template <bool kNamed>
class OursSemaphore {
public:
    explicit OursSemaphore(const char *name, uint32_t count = 0)
        : semaphore_(qzvest::SMSemaphoreCreate(kNamed ? name : nullptr, count))
    {
    }
    ~OursSemaphore()
    {
        qzvest::SMSemaphoreDestroy(semaphore_);
    }
    void Post()
    {
        NeedOK(qzvest::SMSemaphoreRelease(semaphore_, 1, nullptr));
    }
    void Wait()
    {
        NeedOK(qzvest::SMSemaphoreAcquireWait(semaphore_, SM_WAIT_FOREVER));
    }

private:
    SMSemaphore *semaphore_;
};

class OursEvent {
public:
    explicit OursEvent(const char *name) : event_(qzvest::SMEventCreate(name, 0, 0)) {}
    ~OursEvent()
    {
        qzvest::SMEventDestroy(event_);
    }
    void Post()
    {
        NeedOK(qzvest::SMEventSet(event_));
    }
    void Wait()
    {
        NeedOK(qzvest::SMEventWait(event_, SM_WAIT_FOREVER));
    }

private:
    SMEvent *event_;
};

union SemaphoreArgument {
    int value;
    semid_ds *status;
};

// kReset: what an event with automatic reset does after a wait.
template <bool kReset>
class SystemV {
public:
    explicit SystemV(const char *) : set_(semget(IPC_PRIVATE, 1, IPC_CREAT | 0600))
    {
        Need(set_ != -1);
    }
    ~SystemV()
    {
        semctl(set_, 0, IPC_RMID);
    }
    void Post()
    {
        sembuf operation = {0, 1, IPC_NOWAIT};
        Need(semop(set_, &operation, 1) == 0);
    }
    void Wait()
    {
        sembuf operation = {0, -1, 0};
        Need(semop(set_, &operation, 1) == 0);
        if (kReset)
            Need(semctl(set_, 0, SETVAL, SemaphoreArgument{0}) == 0);
    }

private:
    int set_;
};

class PosixLocal {
public:
    explicit PosixLocal(const char *)
    {
        Need(sem_init(&semaphore_, 0, 0) == 0);
    }
    void Post()
    {
        sem_post(&semaphore_);
    }
    void Wait()
    {
        Need(sem_wait(&semaphore_) == 0);
    }

private:
    sem_t semaphore_;
};

// ---- What is measured ----

template <typename Semaphore>
void Pair(benchmark::State &state)
{
    Semaphore semaphore(kName);
    for (auto _ : state) {
        semaphore.Post();
        semaphore.Wait();
    }
}

// This process and its children are on one processor as long as it lives: where the system would put them is a matter
// of luck, and weighs more than all else.
class OnOneProcessor {
public:
    OnOneProcessor()
    {
        Need(sched_getaffinity(0, sizeof before_, &before_) == 0);
        size_t first = 0;
        while (!CPU_ISSET(first, &before_))
            ++first;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(first, &one);
        Need(sched_setaffinity(0, sizeof one, &one) == 0);
    }
    ~OnOneProcessor()
    {
        sched_setaffinity(0, sizeof before_, &before_);
    }
    OnOneProcessor(const OnOneProcessor &) = delete;
    OnOneProcessor &operator=(const OnOneProcessor &) = delete;

private:
    cpu_set_t before_;
};

// There and back.
template <typename Semaphore>
void PingPong(benchmark::State &state)
{
    const OnOneProcessor pinned;
    Semaphore there("bench there");
    Semaphore back("bench back");
    Shared<Contest> contest;
    const Child child([&] {
        for (;;) {
            there.Wait();
            if (contest->over)
                break;
            back.Post();
        }
    });
    for (auto _ : state) {
        there.Post();
        back.Wait();
    }
    contest->over = true;
    there.Post();
}

// ---- Rows ----

struct Row {
    const char *name;
    void (*function)(benchmark::State &);
};

const Row kAlone[] = {
    {"sem_pair/ours/1", Pair<OursSemaphore<true>>}, {"sem_pair/semop/1", Pair<SystemV<false>>},
    {"sem_pair/sem_open/1", Pair<PosixNamed>},      {"local_sem_pair/ours/1", Pair<OursSemaphore<false>>},
    {"local_sem_pair/sem_t/1", Pair<PosixLocal>},
};

const Row kPingPong[] = {
    {"sem_ping_pong/ours/2", PingPong<OursSemaphore<true>>}, {"sem_ping_pong/semop/2", PingPong<SystemV<false>>},
    {"sem_ping_pong/sem_open/2", PingPong<PosixNamed>},      {"event_ping_pong/ours/2", PingPong<OursEvent>},
    {"event_ping_pong/semop/2", PingPong<SystemV<false>>},   {"event_ping_pong/semop+reset/2", PingPong<SystemV<true>>},
    {"event_ping_pong/sem_open/2", PingPong<PosixNamed>},
};

} // namespace

void RegisterSemaphores()
{
    for (const Row &row : kAlone)
        benchmark::RegisterBenchmark(row.name, row.function);
    for (const Row &row : kPingPong)
        benchmark::RegisterBenchmark(row.name, row.function)->UseRealTime();
}

} // namespace bench
