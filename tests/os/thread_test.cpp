// Threads: what both kinds run and on which stack, who waits for whom, and what a kill takes along.
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <qzvest/thread.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <future>
#include <memory>
#include <string>

#include "support/trace.h"

namespace {

constexpr size_t kStackSize = 0x20000;

// What a thread finds out about itself.
struct Look {
    uint64_t id;
    size_t stackSize;
    int detachState;
};

void *LookAtSelf(void *argument)
{
    Look look = {SMThreadGetID(), 0, -1};
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &look.stackSize);
        pthread_attr_getdetachstate(&attributes, &look.detachState);
        pthread_attr_destroy(&attributes);
    }
    const std::unique_ptr<std::promise<Look>> promise(static_cast<std::promise<Look> *>(argument));
    promise->set_value(look);
    return argument; // nobody gets it
}

TEST(Thread, BothKindsRunTheRoutineOnASmallStack)
{
    for (const bool released : {false, true}) {
        auto *promise = new std::promise<Look>; // the thread's
        std::future<Look> result = promise->get_future();
        SMThreadHandle *handle = released ? nullptr : SMThreadStart(LookAtSelf, promise);
        ASSERT_EQ(handle == nullptr, released);
        ASSERT_EQ(released ? SMThreadStartAndRelease(LookAtSelf, promise) : SM_STATUS_OK, SM_STATUS_OK);
        const Look look = result.get();
        EXPECT_NE(look.id, SMThreadGetID()) << released;
#ifdef __SANITIZE_THREAD__ // which adds what it needs itself
        EXPECT_GE(look.stackSize, kStackSize) << released;
#else
        EXPECT_EQ(look.stackSize, kStackSize) << released;
#endif
        EXPECT_EQ(look.detachState, released ? PTHREAD_CREATE_DETACHED : PTHREAD_CREATE_JOINABLE);
        EXPECT_EQ(SMThreadStop(handle), released ? SM_STATUS_INVALID_PARAMETER : SM_STATUS_OK);
    }
    EXPECT_EQ(SMThreadGetID(), static_cast<uint64_t>(pthread_self()));
}

TEST(Thread, StopWaitsForTheEndOfTheRoutine)
{
    int turns = 0; // not atomic: the wait orders it
    SMThreadHandle *handle = SMThreadStart(
        [](void *argument) -> void * {
            for (int turn = 0; turn < 10000; ++turn)
                *static_cast<int *>(argument) += SMThreadYield() == 0 ? 1 : 0;
            return nullptr;
        },
        &turns);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(SMThreadStop(handle), SM_STATUS_OK);
    EXPECT_EQ(turns, 10000);
}

std::string NameOfSelf()
{
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    return name;
}

TEST(Thread, NameIsTheCallersAndCutByTheSystem)
{
    const std::string before = NameOfSelf();
    std::string name;
    SMThreadHandle *handle = SMThreadStart(
        [](void *argument) -> void * {
            if (SMThreadSetName("twenty characters ok") == SM_STATUS_OK)
                *static_cast<std::string *>(argument) = NameOfSelf();
            return nullptr;
        },
        &name);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(SMThreadStop(handle), SM_STATUS_OK);
    EXPECT_EQ(name, "twenty characte");
    EXPECT_EQ(NameOfSelf(), before);
}

void *Pause(void *)
{
    for (;;)
        pause();
}

TEST(Thread, KillTakesTheProcessAlong)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        (void)SMThreadKill(SMThreadStart(Pause, nullptr));
        Pause(nullptr);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST(Thread, WithoutAThreadOfTheSystemThereIsNone)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the race detector starts threads of its own";
#endif
    if (const std::string hindrance = TraceHindrance(); !hindrance.empty())
        GTEST_SKIP() << hindrance;
    const TracePlan plan = {1, EAGAIN, [](long call) { return call == SYS_clone || call == SYS_clone3; }};
    for (const bool released : {false, true}) {
        const TraceOutcome outcome = Trace(
            [released] {
                TraceBegin();
                const bool refused = released ? SMThreadStartAndRelease(Pause, nullptr) == SM_STATUS_FAILED
                                              : SMThreadStart(Pause, nullptr) == nullptr;
                TraceEnd();
                return refused ? 1 : 0;
            },
            plan);
        EXPECT_TRUE(outcome.reached) << released;
        EXPECT_EQ(outcome.exitCode, 1) << released;
    }
}

} // namespace
