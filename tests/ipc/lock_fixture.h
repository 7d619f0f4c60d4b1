// What tests of named objects need: a new IPC directory, no System V objects yet, processes that meet by name. For the
// sandbox.
#ifndef TESTS_IPC_LOCK_FIXTURE_H
#define TESTS_IPC_LOCK_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

const std::string kIpcFolder = "/var/run/qz/.ipc";
const std::string kRegistry = kIpcFolder + "/.lxvestIPCini";
constexpr const char *kDigestOfX = "D59C7440D368FAED532F6FB6CDDD865F";
constexpr key_t kFirstKey = 300001; // of the first name
constexpr uint32_t kLong = 600000;

// Access masks and the modes that they stand for, each right of each class alone.
constexpr struct {
    uint32_t mask;
    mode_t mode;
} kAccessModes[] = {
    {0xFFFFFFFF, 0664}, {0, 0600},          {0x00000100, 0007}, {0x00000200, 0004}, {0x00000400, 0002},
    {0x00000800, 0001}, {0x00010000, 0070}, {0x00020000, 0040}, {0x00040000, 0020}, {0x00080000, 0010},
    {0x01000000, 0700}, {0x02000000, 0400}, {0x04000000, 0200}, {0x08000000, 0100}, {0x06060200, 0664},
};

class NamedObjects : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(unshare(CLONE_NEWIPC), 0); // so that the first set has the number 0
        std::filesystem::remove_all(kIpcFolder);
        std::filesystem::create_directories(kIpcFolder);
    }
};

inline std::string Content(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return file ? std::string{std::istreambuf_iterator<char>(file), {}} : "(missing)";
}

inline int SetsInUse()
{
    seminfo info = {};
    return semctl(0, 0, SEM_INFO, &info) < 0 ? -1 : info.semusz;
}

inline int SetOf(key_t key)
{
    return semget(key, 0, 0);
}

inline semid_ds StatusOf(int set)
{
    semid_ds status = {};
    EXPECT_EQ(semctl(set, 0, IPC_STAT, &status), 0);
    return status;
}

// Comes back when somebody waits on the set.
inline void AwaitWaiter(int set)
{
    while (semctl(set, 0, GETNCNT) == 0)
        sched_yield();
}

// From here on this process has the rights of its user alone.
inline bool DropCapabilities()
{
    __user_cap_header_struct head = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &head, none) == 0;
}

// A child; killed at the end if it is still there.
class Process {
public:
    explicit Process(const std::function<int()> &work) : id_(fork())
    {
        if (id_ == 0)
            _exit(work());
    }
    ~Process()
    {
        if (id_ > 0)
            Kill();
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    // What the work returned, -1 when it was killed.
    int Wait()
    {
        int status = 0;
        while (waitpid(id_, &status, 0) < 0 && errno == EINTR) {
        }
        id_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void Kill()
    {
        kill(id_, SIGKILL);
        (void)Wait();
    }
    void Interrupt() const
    {
        kill(id_, SIGUSR1);
    }

private:
    pid_t id_;
};

// One process tells another that something has come to pass.
class Signal {
public:
    Signal()
    {
        EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0);
    }
    ~Signal()
    {
        close(ends_[0]);
        close(ends_[1]);
    }
    Signal(const Signal &) = delete;
    Signal &operator=(const Signal &) = delete;

    void Give() const
    {
        EXPECT_EQ(write(ends_[1], "", 1), 1);
    }
    void Await() const
    {
        char byte;
        EXPECT_EQ(read(ends_[0], &byte, 1), 1);
    }

private:
    int ends_[2];
};

// A work that leaves its status for the exit code.
inline int Code(uint32_t status)
{
    return static_cast<int>(status & 0x7F); // 0, 3, or 127 for a failure
}
constexpr int kFailedCode = 127;

#endif
