// Critical sections: which functions keep each other out, which run at all, and what is left of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <thread>
#include <vector>

#include "frame/module.h"
#include "ipc/critical.h"
#include "support/faults.h"
#include "support/trace.h"

namespace {

using qzvest::SMCriticalSectionExecute;

uint64_t sum; // of the arguments, where a function ran

uint64_t Add(uint64_t argument)
{
    sum += argument;
    return argument;
}

TEST(Critical, OneFunctionRunsInOneThread)
{
    static int inside, most, runs; // not atomic: the section is their lock
    constexpr int kThreads = 4, kRunsOfEach = 500;
    const auto count = [](uint64_t) -> uint64_t {
        most = std::max(most, ++inside);
        std::this_thread::yield();
        --inside;
        return static_cast<uint64_t>(++runs);
    };
    const long before = LiveBlocks();
    std::vector<std::thread> threads(kThreads);
    for (std::thread &thread : threads)
        thread = std::thread([count] {
            for (int run = 0; run < kRunsOfEach; ++run)
                SMCriticalSectionExecute(count, 0, SM_WAIT_FOREVER);
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(runs, kThreads * kRunsOfEach);
    EXPECT_EQ(most, 1);
    EXPECT_EQ(LiveBlocks(), before); // the table is empty again
}

TEST(Critical, DifferentFunctionsOverlap)
{
    static std::barrier<> meeting(2);
    const SMCriticalSectionFunction first = [](uint64_t) -> uint64_t {
        meeting.arrive_and_wait();
        return 1;
    };
    const SMCriticalSectionFunction second = [](uint64_t) -> uint64_t {
        meeting.arrive_and_wait();
        return 2;
    };
    std::thread thread([first] { SMCriticalSectionExecute(first, 0, SM_WAIT_FOREVER); });
    SMCriticalSectionExecute(second, 0, SM_WAIT_FOREVER); // comes back when both have been inside
    thread.join();
}

TEST(Critical, FunctionsNest)
{
    sum = 0;
    const long before = LiveBlocks();
    SMCriticalSectionExecute(
        [](uint64_t argument) {
            const long inside = LiveBlocks();
            for (int run = 0; run < 2; ++run)
                SMCriticalSectionExecute(Add, argument, SM_WAIT_FOREVER);
            return Add(LiveBlocks() == inside ? 1 : 0);
        },
        uint64_t{1} << 62, SM_WAIT_FOREVER);
    EXPECT_EQ(sum, (uint64_t{1} << 63) + 1);
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(Critical, RunsOnlyWithoutLimitAndWithMemory)
{
    sum = 0;
    for (const uint32_t timeout : {0u, 1u, 1000u, SM_WAIT_FOREVER - 1})
        SMCriticalSectionExecute(Add, 1, timeout);
    SMCriticalSectionExecute(nullptr, 1, SM_WAIT_FOREVER);
    EXPECT_EQ(sum, 0u);
    SMCriticalSectionExecute(Add, 1, SM_WAIT_FOREVER);
    EXPECT_EQ(sum, 1u);
}

// A function may outlast the table; after that none runs, until the next attach. What was inside is left where it
// is, and so this is another process.
TEST(Critical, NothingRunsDetached)
{
    const int ran = InOtherProcess([] {
        sum = 0;
        SMCriticalSectionExecute([](uint64_t) { return static_cast<uint64_t>(qzvest::SMModuleStop()); }, 0,
                                 SM_WAIT_FOREVER);
        SMCriticalSectionExecute(Add, 1, SM_WAIT_FOREVER);
        qzvest::SMModuleStart();
        SMCriticalSectionExecute(Add, 2, SM_WAIT_FOREVER);
        return static_cast<int>(sum);
    });
    EXPECT_EQ(ran, 2);
}

TEST(Critical, SecondAttachGivesTheFirstsResult)
{
    const long before = LiveBlocks();
    EXPECT_EQ(qzvest::CriticalSectionAttach(), 1);
    EXPECT_EQ(LiveBlocks(), before);
    qzvest::CriticalSectionDetach();
    FailAllocation(1);
    EXPECT_EQ(qzvest::CriticalSectionAttach(), 0);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(qzvest::CriticalSectionAttach(), 0);
    qzvest::CriticalSectionDetach();
    EXPECT_EQ(qzvest::CriticalSectionAttach(), 1);
    EXPECT_EQ(LiveBlocks(), before);
}

} // namespace
