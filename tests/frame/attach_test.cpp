// The attach chain: order, unwinding, and the counts of the load-time entries.
#include <gtest/gtest.h>

#include <array>
#include <string>

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
    const char *const journals[] = {"+1+2+3+4", "+1", "+1+2-1", "+1+2+3-2-1", "+1+2+3+4-3-2-1"};
    for (failing = 0; failing <= kStepCount; ++failing) {
        journal.clear();
        EXPECT_EQ(qzvest::AttachSteps(kSteps), failing == 0 ? 1 : 0);
        EXPECT_EQ(journal, journals[failing]);
    }
    journal.clear();
    qzvest::DetachSteps(kSteps);
    EXPECT_EQ(journal, "-4-3-2-1");
    constexpr qzvest::AttachStep kTwo[] = {{[] { return 2; }, [] {}}};
    EXPECT_EQ(qzvest::AttachSteps(kTwo), 0); // 1 alone is success
}

// The loader has attached this program once before main. What comes up goes down.
TEST(Attach, LastStopDetachesAndAStartAttachesAgain)
{
    const long attached = LiveBlocks();
    EXPECT_EQ(qzvest::SMModuleStart(), 1);
    EXPECT_EQ(qzvest::SMModuleStop(), 1);
    EXPECT_EQ(qzvest::SMModuleAttach(), 1); // the second guard: nothing is done
    EXPECT_EQ(qzvest::SMModuleDetach(), 1);
    EXPECT_EQ(LiveBlocks(), attached);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(qzvest::SMModuleIsDetaching(), 0);
        EXPECT_EQ(qzvest::SMModuleStop(), 1);
        EXPECT_EQ(qzvest::SMModuleIsDetaching(), 1);
        const long detached = LiveBlocks();
        EXPECT_LT(detached, attached);
        EXPECT_EQ(qzvest::SMModuleStop(), 0);
        EXPECT_EQ(LiveBlocks(), detached);
        EXPECT_EQ(qzvest::SMModuleIsDetaching(), 1);
        EXPECT_EQ(qzvest::SMModuleStart(), 1);
        EXPECT_EQ(LiveBlocks(), attached);
    }
}

} // namespace
