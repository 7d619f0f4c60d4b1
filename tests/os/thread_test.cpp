// Threads: what both kinds run and on which stack, who waits for whom, and what a kill takes along.
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <qzvest/thread.h>
#include <sys/syscall.h>
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
    char name[16];
};

void *LookAtSelf(void *argument)
{
    Look look = {SMThreadGetID(), 0, -1, ""};
    pthread_attr_t attributes;
    EXPECT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
    pthread_attr_getstacksize(&attributes, &look.stackSize);
    pthread_attr_getdetachstate(&attributes, &look.detachState);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(SMThreadSetName("twenty characters ok"), SM_STATUS_OK);
    pthread_getname_np(pthread_self(), look.name, sizeof look.name);
    const std::unique_ptr<std::promise<Look>> promise(static_cast<std::promise<Look> *>(argument));
    promise->set_value(look);
    return argument; // nobody gets it
}

TEST(Thread, BothKindsRunTheRoutineOnASmallStackUnderTheirOwnName)
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
        EXPECT_STREQ(look.name, "twenty characte") << "cut by the system";
        EXPECT_EQ(SMThreadStop(handle), released ? SM_STATUS_INVALID_PARAMETER : SM_STATUS_OK);
    }
    EXPECT_EQ(SMThreadGetID(), static_cast<uint64_t>(pthread_self()));
}

TEST(Thread, StopWaitsForTheEndOfTheRoutine)
{
    int turns = 0; // not atomic: the wait orders it
    const auto run = [](void *argument) {
        for (int turn = 0; turn < 10000; ++turn)
            *static_cast<int *>(argument) += SMThreadYield() == 0 ? 1 : 0;
        return argument;
    };
    EXPECT_EQ(SMThreadStop(SMThreadStart(run, &turns)), SM_STATUS_OK);
    EXPECT_EQ(turns, 10000);
}

void *Pause(void *)
{
    for (;;)
        pause();
}

TEST(Thread, KillTakesTheProcessAlong)
{
    EXPECT_EXIT((void)SMThreadKill(SMThreadStart(Pause, nullptr));
                Pause(nullptr), testing::KilledBySignal(SIGKILL), "");
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
        const auto work = [released] {
            TraceBegin();
            return released ? SMThreadStartAndRelease(Pause, nullptr) == SM_STATUS_FAILED
                            : SMThreadStart(Pause, nullptr) == nullptr;
        };
        EXPECT_EQ(Trace(work, plan).exitCode, 1) << released;
    }
}

} // namespace
