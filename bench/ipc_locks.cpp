// Locks: named mutexes, alone and between processes, and read-write locks between threads.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "bench/ipc_data.h"
#include "bench/sandbox.h"
#include "ipc/mutex.h"
#include "ipc/rwlock.h"

#ifdef BENCH_BOOST
#include <boost/interprocess/sync/named_mutex.hpp>
#include <boost/interprocess/sync/named_sharable_mutex.hpp>
#endif

namespace bench {
namespace {

// ---- Locks by name ----

class OursMutex {
public:
    void Lock()
    {
        NeedOK(qzvest::SMMutexLock(mutex_, SM_WAIT_FOREVER));
    }
    void UnLock()
    {
        qzvest::SMMutexUnLock(mutex_);
    }
    ~OursMutex()
    {
        qzvest::SMMutexDestroy(mutex_);
    }

private:
    SMMutex *mutex_ = qzvest::SMMutexCreate(kName);
};

// The way of the named mutex, with nothing in between.
class MutexAndFile {
public:
    MutexAndFile()
        : descriptor_(open((std::string(kIpcDirectory) + "/by-hand").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600))
    {
        Need(descriptor_ != -1);
    }
    ~MutexAndFile()
    {
        close(descriptor_);
    }
    void Lock()
    {
        pthread_mutex_lock(&mutex_);
        Need(Set(F_WRLCK));
    }
    void UnLock()
    {
        Set(F_UNLCK);
        pthread_mutex_unlock(&mutex_);
    }

private:
    bool Set(short type) const
    {
        struct flock range = {};
        range.l_type = type;
        range.l_whence = SEEK_SET;
        return fcntl(descriptor_, F_SETLKW, &range) == 0;
    }
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    int descriptor_;
};

class RobustMutex {
public:
    RobustMutex()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        Need(pthread_mutex_init(mutex_.Get(), &attributes) == 0);
    }
    void Lock()
    {
        Need(pthread_mutex_lock(mutex_.Get()) == 0);
    }
    void UnLock()
    {
        pthread_mutex_unlock(mutex_.Get());
    }

private:
    Shared<pthread_mutex_t> mutex_;
};

#ifdef BENCH_BOOST
template <typename Mutex>
class Boost {
public:
    Boost() : mutex_((Mutex::remove(kName), boost::interprocess::create_only), kName) {}
    ~Boost()
    {
        Mutex::remove(kName);
    }
    void Lock()
    {
        mutex_.lock();
    }
    void UnLock()
    {
        mutex_.unlock();
    }
    void ReadLock()
    {
        mutex_.lock_sharable();
    }
    void ReadUnLock()
    {
        mutex_.unlock_sharable();
    }
    void WriteLock()
    {
        mutex_.lock();
    }
    void WriteUnLock()
    {
        mutex_.unlock();
    }

private:
    Mutex mutex_;
};
#endif

// A semaphore that begins with one unit is a lock.
class PosixLock {
public:
    void Lock()
    {
        semaphore_.Wait();
    }
    void UnLock()
    {
        semaphore_.Post();
    }

private:
    PosixNamed semaphore_{kName, 1};
};

// ---- Read-write locks ----

template <bool kNamed>
class OursRwlock {
public:
    ~OursRwlock()
    {
        qzvest::SMRWLDestroy(lock_);
    }
    void ReadLock()
    {
        NeedOK(qzvest::SMRWLReadLockGet(lock_, SM_WAIT_FOREVER));
    }
    void ReadUnLock()
    {
        qzvest::SMRWLReadLockRelease(lock_);
    }
    void WriteLock()
    {
        NeedOK(qzvest::SMRWLWriteLockGet(lock_, SM_WAIT_FOREVER));
    }
    void WriteUnLock()
    {
        qzvest::SMRWLWriteLockRelease(lock_);
    }

private:
    SMRWL *lock_ = qzvest::SMRWLCreate(kNamed ? kName : nullptr);
};

template <int kPlace>
class PthreadRwlock {
public:
    PthreadRwlock()
    {
        pthread_rwlockattr_t attributes;
        pthread_rwlockattr_init(&attributes);
        pthread_rwlockattr_setpshared(&attributes, kPlace);
        Need(pthread_rwlock_init(lock_.Get(), &attributes) == 0);
    }
    void ReadLock()
    {
        Need(pthread_rwlock_rdlock(lock_.Get()) == 0);
    }
    void ReadUnLock()
    {
        pthread_rwlock_unlock(lock_.Get());
    }
    void WriteLock()
    {
        Need(pthread_rwlock_wrlock(lock_.Get()) == 0);
    }
    void WriteUnLock()
    {
        pthread_rwlock_unlock(lock_.Get());
    }

private:
    Shared<pthread_rwlock_t> lock_;
};

template <typename Rwlock>
struct Reading : Rwlock {
    void Lock()
    {
        this->ReadLock();
    }
    void UnLock()
    {
        this->ReadUnLock();
    }
};

template <typename Rwlock>
struct Writing : Rwlock {
    void Lock()
    {
        this->WriteLock();
    }
    void UnLock()
    {
        this->WriteUnLock();
    }
};

// ---- What is measured ----

uint64_t guarded;

template <typename Lock>
void UseOnce(Lock &lock)
{
    lock.Lock();
    benchmark::DoNotOptimize(++guarded);
    lock.UnLock();
}

template <typename Lock>
void Alone(benchmark::State &state)
{
    Lock lock;
    for (auto _ : state)
        UseOnce(lock);
}

// The time for each use by whomever: a lock that lets one process in more often than the other is not better for it.
template <typename Lock>
void BetweenProcesses(benchmark::State &state)
{
    Lock lock;
    Shared<Contest> contest;
    const Child child([&] {
        while (!contest->over) {
            UseOnce(lock);
            contest->others.fetch_add(1, std::memory_order_relaxed);
        }
    });
    while (contest->others == 0)
        sched_yield();
    const int64_t before = contest->others;
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
        UseOnce(lock);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    const auto own = static_cast<double>(state.iterations());
    const auto others = static_cast<double>(contest->others - before);
    contest->over = true;
    state.SetIterationTime(elapsed.count() * own / (own + others));
}

template <typename Lock>
Lock *threadsLock;

template <typename Lock>
void BetweenThreads(benchmark::State &state)
{
    for (auto _ : state)
        UseOnce(*threadsLock<Lock>);
}

// ---- Rows ----

struct Row {
    const char *who;
    void (*alone)(benchmark::State &);
    void (*contended)(benchmark::State &);
};

template <typename Lock>
constexpr Row RowOf(const char *who)
{
    return {who, Alone<Lock>, BetweenProcesses<Lock>};
}

const Row kMutexes[] = {
    RowOf<OursMutex>("ours"),
    RowOf<MutexAndFile>("mutex+fcntl"),
    RowOf<PosixLock>("sem_open"),
    RowOf<RobustMutex>("robust"),
#ifdef BENCH_BOOST
    RowOf<Boost<boost::interprocess::named_mutex>>("boost"),
#endif
};

// One thread alone is measured by processor time; two may wait for each other.
template <typename Lock>
void RegisterThreads(const std::string &name)
{
    for (const int threads : {1, 2}) {
        auto *row = benchmark::RegisterBenchmark(name.c_str(), BetweenThreads<Lock>);
        row->Threads(threads)
            ->Setup([](const benchmark::State &) { threadsLock<Lock> = new Lock; })
            ->Teardown([](const benchmark::State &) { delete threadsLock<Lock>; });
        if (threads > 1)
            row->UseRealTime();
    }
}

template <typename Rwlock>
void RegisterRwlock(const std::string &kind, const std::string &who)
{
    RegisterThreads<Reading<Rwlock>>(kind + "_read/" + who);
    RegisterThreads<Writing<Rwlock>>(kind + "_write/" + who);
}

} // namespace

void RegisterLocks()
{
    for (const Row &row : kMutexes) {
        const std::string name = std::string("named_mutex/") + row.who;
        benchmark::RegisterBenchmark((name + "/1").c_str(), row.alone);
        benchmark::RegisterBenchmark((name + "/2").c_str(), row.contended)->UseManualTime();
    }
    RegisterRwlock<OursRwlock<false>>("rwlock", "ours");
    RegisterRwlock<PthreadRwlock<PTHREAD_PROCESS_PRIVATE>>("rwlock", "pthread");
    RegisterRwlock<OursRwlock<true>>("named_rwlock", "ours");
    RegisterRwlock<PthreadRwlock<PTHREAD_PROCESS_SHARED>>("named_rwlock", "pthread");
#ifdef BENCH_BOOST
    RegisterRwlock<Boost<boost::interprocess::named_sharable_mutex>>("named_rwlock", "boost");
#endif
}

} // namespace bench
