// System V objects as the kernel lists them, and processes to share them with. For the sandbox.
#ifndef TESTS_IPC_SYSV_H
#define TESTS_IPC_SYSV_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <qzvest/qzvest.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

const std::string kIpcFolder = "/var/run/qz/.ipc";

struct SysVTest : testing::Test {
    void SetUp() override
    {
        std::filesystem::create_directories(kIpcFolder);
    }
};

struct SysVObject {
    int key, id;
    unsigned mode;
    size_t size; // bytes of a segment, semaphores of a set
};

inline std::vector<SysVObject> ListSysV(const char *kind)
{
    std::ifstream table(std::string("/proc/sysvipc/") + kind);
    std::string line;
    std::getline(table, line);
    std::vector<SysVObject> objects;
    for (SysVObject o; table >> o.key >> o.id >> std::oct >> o.mode >> std::dec >> o.size; std::getline(table, line))
        objects.push_back(o);
    return objects;
}

inline std::vector<SysVObject> Sets()
{
    return ListSysV("sem");
}

inline std::vector<SysVObject> Segments()
{
    return ListSysV("shm");
}

inline int UnitsOf(int set)
{
    return semctl(set, 0, GETVAL);
}

// A forked process that does its work, tells the result, and stays until it is killed.
class Child {
public:
    explicit Child(const std::function<int()> &work)
    {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        process_ = fork();
        if (process_ == 0) {
            (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
            const int result = work();
            (void)!write(ends[1], &result, sizeof result);
            for (;;)
                (void)pause();
        }
        (void)close(ends[1]);
        results_ = ends[0];
    }
    ~Child()
    {
        Kill();
        (void)close(results_);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    int Result() const // -2: it came to none
    {
        int result;
        return read(results_, &result, sizeof result) == sizeof result ? result : -2;
    }
    void Kill()
    {
        if (process_ > 0 && kill(process_, SIGKILL) == 0)
            (void)waitpid(process_, nullptr, 0);
        process_ = 0;
    }

private:
    pid_t process_;
    int results_;
};

#endif
