// What tests of named objects need: a new IPC directory, no System V objects yet, processes that meet by name. For the
// sandbox.
#ifndef TESTS_IPC_LOCK_FIXTURE_H
#define TESTS_IPC_LOCK_FIXTURE_H

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

#include "os/folder.h"
#include "support/trace.h"

const std::string kIpcFolder = "/var/run/qz/.ipc";
const std::string kRegistry = kIpcFolder + "/.lxvestIPCini";
constexpr key_t kFirstKey = 300001; // of the first name
constexpr uint32_t kLong = 600000;

class NamedObjects : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(unshare(CLONE_NEWIPC), 0); // so that the first set has the number 0
        std::filesystem::remove_all(kIpcFolder);
        std::filesystem::create_directories(kIpcFolder);
    }
};

// For handles that a unique_ptr holds.
template <auto kEnd>
struct Ends {
    void operator()(auto *handle) const
    {
        kEnd(handle);
    }
};

inline int SetsInUse()
{
    seminfo info = {};
    return semctl(0, 0, SEM_INFO, &info) < 0 ? -1 : info.semusz;
}

inline int SegmentsInUse()
{
    shm_info info = {};
    return shmctl(0, SHM_INFO, reinterpret_cast<shmid_ds *>(&info)) < 0 ? -1 : info.used_ids;
}

inline int SetOf(key_t key)
{
    return semget(key, 0, 0);
}

inline int UnitsOf(int set)
{
    return semctl(set, 0, GETVAL);
}

inline semid_ds StatusOf(int set)
{
    semid_ds status = {};
    EXPECT_EQ(semctl(set, 0, IPC_STAT, &status), 0);
    return status;
}

inline mode_t ModeOfSet(int set)
{
    return StatusOf(set).sem_perm.mode & 0777;
}

// Not sched_yield: a test may have one of its own.
inline void LetOthersRun()
{
    (void)syscall(SYS_sched_yield);
}

// Comes back when so many wait on the set, and there is nothing for them.
inline void AwaitWaiters(int set, int count)
{
    while (semctl(set, 0, GETNCNT) != count || UnitsOf(set) != 0)
        LetOthersRun();
}

// What processes tell each other.
using Step = Shared<std::atomic<int>>;

inline void Await(const Step &step, int number)
{
    while (*step < number)
        LetOthersRun();
}

// From here on this thread has the rights of its user alone.
inline bool DropCapabilities()
{
    __user_cap_header_struct head = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &head, none) == 0;
}

// A child; killed at the end if it is still there.
struct Process {
    explicit Process(const std::function<int()> &work) : id(fork())
    {
        if (id == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL); // nobody outlives the test
            _exit(work());
        }
    }
    Process(const Process &) = delete;
    ~Process()
    {
        Kill();
    }

    // What the work returned, -1 when it was killed.
    int Wait()
    {
        int status = 0;
        const pid_t child = std::exchange(id, 0);
        return child != 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void Kill()
    {
        if (id != 0)
            (void)kill(id, SIGKILL);
        (void)Wait();
    }

    pid_t id;
};

// A work that leaves its status for the exit code.
inline int Code(uint32_t status)
{
    return static_cast<int>(status & 0x7F); // 0, 3, or 127 for a failure
}
constexpr int kFailedCode = 127;

#endif
