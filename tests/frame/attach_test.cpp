// The attach chain: order, unwinding, and the counts of the load-time entries.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "frame/heap.h"
#include "frame/module.h"
#include "support/faults.h"

namespace {

// Four steps that write what is done to them: "+2" brought up, "-2" torn down. The failing one fails.
constexpr int kStepCount = 4;
std::string journal;
int failing;

template <int Step>
constexpr qzvest::AttachStep kStep = {
    [] {
        journal += "+" + std::to_string(Step);
        return Step == failing ? 0 : 1;
    },
    [] { journal += "-" + std::to_string(Step); },
};
constexpr std::array<qzvest::AttachStep, kStepCount> kSteps = {kStep<1>, kStep<2>, kStep<3>, kStep<4>};

TEST(Attach, FailureUnwindsTheEarlierStepsLastFirst)
{
    constexpr struct {
        int failing, result;
        const char *journal;
    } kCases[] = {
        {1, 0, "+1"}, {2, 0, "+1+2-1"}, {3, 0, "+1+2+3-2-1"}, {4, 0, "+1+2+3+4-3-2-1"}, {0, 1, "+1+2+3+4"},
    };
    for (const auto &c : kCases) {
        journal.clear();
        failing = c.failing;
        EXPECT_EQ(qzvest::AttachSteps(kSteps), c.result) << "step " << c.failing << " fails";
        EXPECT_EQ(journal, c.journal) << "step " << c.failing << " fails";
    }
}

TEST(Attach, OnlyOneIsSuccess)
{
    constexpr qzvest::AttachStep kTwo[] = {{[] { return 2; }, [] {}}};
    EXPECT_EQ(qzvest::AttachSteps(kTwo), 0);
    EXPECT_EQ(qzvest::AttachSteps({}), 1);
}

TEST(Attach, DetachTearsDownLastFirst)
{
    journal.clear();
    qzvest::DetachSteps(kSteps);
    EXPECT_EQ(journal, "-4-3-2-1");
}

// The loader has attached this program once before main.
TEST(Attach, LastStopDetachesAndAStartAttachesAgain)
{
    EXPECT_EQ(qzvest::SMModuleIsDetaching(), 0);
    EXPECT_EQ(qzvest::SMModuleStart(), 1);
    EXPECT_EQ(qzvest::SMModuleStop(), 1);
    EXPECT_EQ(qzvest::SMModuleIsDetaching(), 0);

    EXPECT_EQ(qzvest::SMModuleStop(), 1);
    EXPECT_EQ(qzvest::SMModuleIsDetaching(), 1);
    EXPECT_EQ(qzvest::SMModuleStop(), 0);
    EXPECT_EQ(qzvest::SMModuleStop(), 0);
    EXPECT_EQ(qzvest::SMModuleIsDetaching(), 1);

    EXPECT_EQ(qzvest::SMModuleStart(), 1);
    EXPECT_EQ(qzvest::SMModuleIsDetaching(), 0);
}

// What comes up goes down: an attach and a detach more leave no block, wherever they meet the chain's own count.
TEST(Attach, DetachLeavesNoBlock)
{
    const long attached = LiveBlocks();
    EXPECT_EQ(qzvest::SMModuleAttach(), 1); // the second guard: nothing is done
    EXPECT_EQ(LiveBlocks(), attached);
    EXPECT_EQ(qzvest::SMModuleDetach(), 1);
    EXPECT_EQ(LiveBlocks(), attached);

    EXPECT_EQ(qzvest::SMModuleStop(), 1);
    const long detached = LiveBlocks();
    EXPECT_EQ(qzvest::SMModuleStart(), 1);
    EXPECT_EQ(LiveBlocks(), attached);
    EXPECT_EQ(qzvest::SMModuleStop(), 1);
    EXPECT_EQ(LiveBlocks(), detached);
    EXPECT_EQ(qzvest::SMModuleStart(), 1);
}

TEST(Heap, FailureGivesNullAndKeepsTheOldBlock)
{
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMAllocMem(8), nullptr);
    EXPECT_TRUE(StopFault());

    const long before = LiveBlocks();
    char *block = static_cast<char *>(qzvest::SMAllocMem(2));
    block[0] = 'x';
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMReAllocMem(block, 4096), nullptr);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(block[0], 'x');
    qzvest::SMFreeGeneric(block);
    EXPECT_EQ(LiveBlocks(), before);
}

} // namespace
