// Events of one process and of all that know a name.

#include <qzvest/qzvest.h>

#include <memory>
#include <thread>

#include "ipc/lock_fixture.h"

namespace {

constexpr const char *kBothForms[] = {nullptr, "X"};

struct EventEnd {
    void operator()(SMEvent *event) const
    {
        SMEventDestroy(event);
    }
};
using Event = std::unique_ptr<SMEvent, EventEnd>;

class Events : public NamedObjects {};

// How many waits pass, of at most this many.
int Passes(SMEvent *event, int most = 4)
{
    int passes = 0;
    while (passes < most && SMEventWait(event, 0) == SM_STATUS_OK)
        ++passes;
    return passes;
}

TEST_F(Events, StaySetByTheirKind)
{
    constexpr struct {
        uint16_t manualReset;
        uint16_t initiallySet;
        int sets;
        int passes;
    } kCases[] = {
        {0, 0, 0, 0}, {0, 1, 0, 1}, {0, 0, 1, 1}, {0, 1, 3, 1}, {1, 0, 0, 0},           {1, 1, 0, 4},
        {1, 0, 1, 4}, {1, 1, 3, 4}, {2, 2, 0, 0}, {2, 1, 1, 1}, {0xFFFF, 0xFFFF, 1, 1},
    };
    for (const char *name : kBothForms)
        for (const auto &c : kCases) {
            const Event event(SMEventCreate(name, c.manualReset, c.initiallySet));
            ASSERT_NE(event, nullptr);
            for (int i = 0; i < c.sets; ++i)
                EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_OK);
            EXPECT_EQ(Passes(event.get()), c.passes) << c.manualReset << ' ' << c.initiallySet << ' ' << c.sets;
            EXPECT_EQ(SMEventReset(event.get()), SM_STATUS_OK);
            for (const uint32_t timeoutMs : {0u, 2u})
                EXPECT_EQ(SMEventWait(event.get(), timeoutMs), SM_STATUS_TIMEOUT);
            for (const uint32_t timeoutMs : {SM_WAIT_FOREVER, kLong}) {
                EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_OK);
                EXPECT_EQ(SMEventWait(event.get(), timeoutMs), SM_STATUS_OK);
            }
        }
}

TEST_F(Events, TheSetTellsItsKindToOpeners)
{
    for (const char *name : {static_cast<const char *>(nullptr), "", "X"})
        EXPECT_EQ(SMEventOpen(name), nullptr);
    EXPECT_EQ(SMEventCreate("", 1, 1), nullptr);
    for (const uint16_t manualReset : {uint16_t{1}, uint16_t{0}, uint16_t{2}}) {
        const bool manual = manualReset == 1;
        Event creator(SMEventCreate("X", manualReset, 1));
        const int set = SetOf(kFirstKey);
        EXPECT_EQ(StatusOf(set).sem_nsems, manual ? 2u : 1u);
        EXPECT_EQ(Process([] { return Passes(SMEventOpen("X")); }).Wait(), manual ? 4 : 1);
        EXPECT_EQ(semctl(set, 0, GETVAL), manual ? 1 : 0);

        // One that joins goes by its own word, and drops how it should begin.
        const auto join = [&] { return Passes(SMEventCreate("X", manual ? 0 : 1, 0)); };
        EXPECT_EQ(SMEventSet(creator.get()), SM_STATUS_OK);
        EXPECT_EQ(Process(join).Wait(), manual ? 1 : 4);
        Event opener(SMEventOpen("X"));
        opener.reset();
        EXPECT_EQ(SetsInUse(), 1);
        opener.reset(SMEventOpen("X"));
        creator.reset();
        EXPECT_EQ(SetsInUse(), 0);
        EXPECT_EQ(SMEventOpen("X"), nullptr);
        EXPECT_EQ(SMEventWait(opener.get(), 0), SM_STATUS_FAILED);
        EXPECT_EQ(SMEventSet(opener.get()), SM_STATUS_FAILED);
        EXPECT_EQ(SMEventReset(opener.get()), SM_STATUS_OK);
    }
}

TEST_F(Events, WakeOrFailTheirWaiters)
{
    for (const uint32_t timeoutMs : {SM_WAIT_FOREVER, kLong}) {
        Event event(SMEventCreate("X", 0, 0));
        const auto wait = [&] { return Code(SMEventWait(SMEventOpen("X"), timeoutMs)); };
        Process passes(wait);
        AwaitWaiter(SetOf(kFirstKey));
        EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_OK);
        EXPECT_EQ(passes.Wait(), 0);
        Process fails(wait);
        AwaitWaiter(SetOf(kFirstKey));
        event.reset();
        EXPECT_EQ(fails.Wait(), kFailedCode);
    }
    const Event manual(SMEventCreate(nullptr, 1, 0));
    uint32_t statuses[2] = {77, 77};
    std::thread first([&] { statuses[0] = SMEventWait(manual.get(), SM_WAIT_FOREVER); });
    std::thread second([&] { statuses[1] = SMEventWait(manual.get(), kLong); });
    EXPECT_EQ(SMEventSet(manual.get()), SM_STATUS_OK);
    first.join();
    second.join();
    EXPECT_EQ(statuses[0] | statuses[1], SM_STATUS_OK);
}

TEST_F(Events, ShareNoKeyWithSemaphores)
{
    SMSemaphore *semaphore = SMSemaphoreCreate("X", 5);
    const Event event(SMEventCreate_s("X", 1, 1, 0x04000000));
    EXPECT_EQ(semctl(SetOf(kFirstKey), 0, GETVAL), 5);
    const semid_ds status = StatusOf(SetOf(kFirstKey + 1));
    EXPECT_EQ(status.sem_nsems, 2u);
    EXPECT_EQ(status.sem_perm.mode & 0777, 0200);
    SMSemaphoreDestroy(semaphore);
    EXPECT_EQ(Passes(event.get()), 4);
}

TEST_F(Events, AtTheLargestCountAreSet)
{
    const Event event(SMEventCreate("X", 0, 1));
    constexpr int kMost = 32767;
    EXPECT_EQ(semctl(SetOf(kFirstKey), 0, SETVAL, kMost), 0);
    EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_FAILED);
    EXPECT_EQ(Passes(event.get()), 1);
}

TEST_F(Events, HandlesOfOtherKindsAreRefused)
{
    SMSemaphore *semaphore = SMSemaphoreCreate(nullptr, 1);
    const struct {
        SMSemaphore *handle;
        uint32_t status;
    } cases[] = {{nullptr, SM_STATUS_INVALID_PARAMETER}, {semaphore, SM_STATUS_BAD_FORMAT}};
    for (const auto &c : cases) {
        auto *handle = reinterpret_cast<SMEvent *>(c.handle);
        EXPECT_EQ(SMEventWait(handle, 0), c.status);
        EXPECT_EQ(SMEventSet(handle), c.status);
        EXPECT_EQ(SMEventReset(handle), c.status);
        SMEventDestroy(handle);
    }
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_OK);
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
    SMSemaphoreDestroy(semaphore);
}

} // namespace
