// What the files of ipc_bench have in common. log_bench takes its processes from here, too.
#ifndef BENCH_IPC_DATA_H
#define BENCH_IPC_DATA_H

#include <fcntl.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <qzvest/status.h>

namespace bench {

constexpr const char *kName = "bench";

inline void Need(bool done)
{
    if (!done) {
        std::perror("bench");
        std::abort();
    }
}

inline void NeedOK(uint32_t status)
{
    Need(status == SM_STATUS_OK);
}

// A value that a child shares.
template <typename Value>
class Shared {
public:
    Shared()
    {
        void *room = mmap(nullptr, sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        Need(room != MAP_FAILED);
        value_ = new (room) Value();
    }
    ~Shared()
    {
        munmap(value_, sizeof(Value));
    }
    Shared(const Shared &) = delete;
    Shared &operator=(const Shared &) = delete;
    Value *operator->()
    {
        return value_;
    }
    Value *Get()
    {
        return value_;
    }

private:
    Value *value_;
};

// Another process, which is waited for.
class Child {
public:
    template <typename Work>
    explicit Child(Work work) : process_(fork())
    {
        Need(process_ != -1);
        if (process_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            work();
            _exit(0);
        }
    }
    ~Child()
    {
        int status;
        Need(waitpid(process_, &status, 0) == process_ && status == 0);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

private:
    pid_t process_;
};

struct Contest {
    std::atomic<bool> over;
    std::atomic<int64_t> others;
};

class PosixNamed {
public:
    explicit PosixNamed(const char *name, unsigned count = 0)
        : semaphore_(sem_open(name, O_CREAT | O_EXCL, 0600, count))
    {
        Need(semaphore_ != SEM_FAILED);
        sem_unlink(name);
    }
    ~PosixNamed()
    {
        sem_close(semaphore_);
    }
    void Post()
    {
        sem_post(semaphore_);
    }
    void Wait()
    {
        Need(sem_wait(semaphore_) == 0);
    }

private:
    sem_t *semaphore_;
};

// Each file's rows.
void RegisterLocks();
void RegisterSemaphores();
void RegisterNames();

} // namespace bench

#endif
