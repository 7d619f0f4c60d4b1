// Critical sections: which functions run at all, and what is left of them. That one function runs in one thread is
// seen in the storm.
#include <gtest/gtest.h>

#include <barrier>
#include <thread>

#include "frame/module.h"
#include "ipc/critical.h"
#include "support/faults.h"
#include "support/trace.h"

namespace {

using qzvest::SMCriticalSectionExecute;

uint64_t sum; // of the arguments, where a function ran

uint64_t Add(uint64_t argument)
{
    return sum += argument;
}

std::barrier<> meeting(2);

template <int>
uint64_t Meet(uint64_t argument)
{
    meeting.arrive_and_wait();
    return argument;
}

TEST(Critical, DifferentFunctionsOverlap)
{
    std::jthread other(SMCriticalSectionExecute, Meet<1>, 0, SM_WAIT_FOREVER);
    SMCriticalSectionExecute(Meet<2>, 0, SM_WAIT_FOREVER); // comes back when both have been inside
}

TEST(Critical, RunsOnlyWithoutLimitAndWithMemory)
{
    sum = 0;
    for (const uint32_t timeout : {0u, 1u, 1000u, SM_WAIT_FOREVER - 1})
        SMCriticalSectionExecute(Add, 1, timeout);
    SMCriticalSectionExecute(nullptr, 1, SM_WAIT_FOREVER);
    EXPECT_EQ(sum, 0u);
    const long before = LiveBlocks();
    SMCriticalSectionExecute(Add, uint64_t{1} << 62, SM_WAIT_FOREVER);
    EXPECT_EQ(sum, uint64_t{1} << 62);
    EXPECT_EQ(LiveBlocks(), before); // the table is empty again
}

// A function may outlast the table; after that none runs, until the next attach. What was inside is left where it
// is, and so this is another process.
TEST(Critical, NothingRunsDetached)
{
    const auto work = [] {
        sum = 0;
        const auto stop = [](uint64_t) { return static_cast<uint64_t>(qzvest::SMModuleStop()); };
        SMCriticalSectionExecute(stop, 0, SM_WAIT_FOREVER);
        SMCriticalSectionExecute(Add, 1, SM_WAIT_FOREVER);
        qzvest::SMModuleStart();
        SMCriticalSectionExecute(Add, 2, SM_WAIT_FOREVER);
        return static_cast<int>(sum);
    };
    EXPECT_EQ(InOtherProcess(work), 2);
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
