// System V semaphore sets: how they come to be, and what is done about those that are left behind.

#include "ipc/semset.h"

#include <qzvest/qzvest.h>

#include <cerrno>

#include "frame/module.h"
#include "ipc/lock_fixture.h"
#include "support/systemlog.h"

namespace {

using qzvest::SMIPCSemSetCreate;

const std::string kList = "[Semaphore List]\n";
using SemSet = NamedObjects;

TEST_F(SemSet, TheNumberZeroIsNotUsed)
{
    const int probe = semget(IPC_PRIVATE, 1, 0600);
    ASSERT_EQ(probe, 0) << "what the system gives out first";
    ASSERT_EQ(unshare(CLONE_NEWIPC), 0);
    const int32_t set = SMIPCSemSetCreate(kFirstKey, 2, 5, 0x06040000);
    EXPECT_GT(set, 0);
    EXPECT_EQ(SetsInUse(), 1);
    EXPECT_EQ(SetOf(kFirstKey), set);
    EXPECT_EQ(ModeOfSet(set), 0620u);
    EXPECT_EQ(SMIPCSemSetCreate(kFirstKey, 1, 7, 0xFFFFFFFF), set) << "joined";
    EXPECT_EQ(UnitsOf(set), 5);
    EXPECT_EQ(StatusOf(set).sem_nsems, 2u);
    EXPECT_FALSE(Exists(kRegistry)) << "only private sets are listed";

    ASSERT_EQ(unshare(CLONE_NEWIPC), 0);
    ASSERT_EQ(semget(kFirstKey, 1, IPC_CREAT | 0600), 0); // not of our making
    EXPECT_EQ(SMIPCSemSetCreate(kFirstKey, 1, 5, 0), 0);
    EXPECT_EQ(UnitsOf(0), 0);
}

TEST_F(SemSet, PrivateOnesAreListed)
{
    const int32_t first = SMIPCSemSetCreate(0, 1, 1, 0);
    const int32_t second = SMIPCSemSetCreate(0, 1, 1, 0);
    EXPECT_TRUE(first > 0 && second > 0 && first != second) << first << ' ' << second;
    const std::string behind = "=" + std::to_string(getpid()) + "\n";
    const std::string entry = std::to_string(second) + behind;
    EXPECT_EQ(Content(kRegistry), kList + std::to_string(first) + behind + entry);
    for (int i = 0; i < 2; ++i) {
        qzvest::SMIPCSemSetRemove(first);
        EXPECT_EQ(Content(kRegistry), kList + entry);
        EXPECT_EQ(SetsInUse(), 1);
    }
}

TEST_F(SemSet, AttachRemovesThoseOfTheDead)
{
    const int32_t own = SMIPCSemSetCreate(0, 1, 1, 0);
    EXPECT_EQ(Process([] { return SMIPCSemSetCreate(0, 1, 1, 0) > 0 ? 0 : 1; }).Wait(), 0);
    EXPECT_EQ(SetsInUse(), 2);
    const std::string listed = Content(kRegistry);
    const std::string mine = kList + std::to_string(own) + "=" + std::to_string(getpid()) + "\n";
    ASSERT_EQ(listed.substr(0, mine.size()), mine);
    const std::string dead = listed.substr(mine.size()); // "set=process\n"
    const std::string process = dead.substr(dead.find('='));

    const std::string kept = "987654" + process + "text" + process + "1x" + process; // gone, and none
    const std::string crowd = kList + dead + std::string(8190, '9') + "=1\n";
    const std::tuple<std::string, std::string, int> cases[] = {
        {kList + "=" + "1\n" + dead, kList + "=" + "1\n" + dead, 2}, // the list seems to be empty
        {crowd, crowd, 2},                                           // does not fit
        {mine + kept + dead, mine + kept, 1},
    };
    for (const auto &[before, after, sets] : cases) {
        std::ofstream(kRegistry, std::ios::binary | std::ios::trunc) << before;
        qzvest::SMModuleStop();
        qzvest::SMModuleStart();
        EXPECT_EQ(Content(kRegistry), after);
        EXPECT_EQ(SetsInUse(), sets);
    }
    EXPECT_EQ(UnitsOf(own), 1);
}

TEST_F(SemSet, UndoGivesBackWhatTheDeadTook)
{
    const int32_t set = SMIPCSemSetCreate(kFirstKey, 1, 2, 0);
    for (const bool undo : {true, false}) {
        const auto take = [&] { return Code(qzvest::SMIPCSemWait(set, undo ? SM_WAIT_FOREVER : 0, undo)); };
        EXPECT_EQ(Process(take).Wait(), 0);
        EXPECT_EQ(UnitsOf(set), undo ? 2 : 1);
    }
    EXPECT_EQ(qzvest::SMIPCSemPost(set, INT32_MIN), SM_STATUS_OK);
    for (const int32_t none : {0, set + 1}) {
        EXPECT_EQ(qzvest::SMIPCSemWait(none, 0, false), SM_STATUS_FAILED);
        EXPECT_EQ(qzvest::SMIPCSemPost(none, 1), SM_STATUS_FAILED);
    }
}

TEST_F(SemSet, LackOfRoomIsLogged)
{
    if (const std::string hindrance = TraceHindrance(); !hindrance.empty())
        GTEST_SKIP() << hindrance;
    const SystemLog log;
    const std::string kHead = "<30>Fleet Steward (Shared Library): Record Broker EventID: 0  ";
    constexpr std::pair<int, const char *> kCases[] = {
        {ENOMEM, "A semaphore set could not be created because the system has not enough memory for the new data "
                 "structure\n"},
        {ENOSPC, "A semaphore set has to be created but the system limit for the maximum number of semaphore sets has "
                 "been exceeded\n"},
        {EACCES, ""},
    };
    for (const auto &[error, line] : kCases) {
        const auto work = [] {
            TraceBegin();
            const int32_t set = SMIPCSemSetCreate(kFirstKey, 1, 1, 0);
            TraceEnd();
            return set == 0 ? 0 : 1;
        };
        const TraceOutcome outcome = Trace(work, {1, error, [](long call) { return call == SYS_semget; }});
        EXPECT_TRUE(outcome.reached && outcome.exitCode == 0) << error;
        std::string got = log.Next();
        if (!got.empty())
            got.erase(4, 16); // the time
        EXPECT_EQ(got, *line == '\0' ? "" : kHead + line);
    }
}

} // namespace
