// Semaphores of one process and of all that know a name.

#include <qzvest/qzvest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "ipc/lock_fixture.h"

namespace {

constexpr int32_t kMost = 32767;
constexpr const char *kBothForms[] = {nullptr, "X"};

struct SemaphoreEnd {
    void operator()(SMSemaphore *semaphore) const
    {
        SMSemaphoreDestroy(semaphore);
    }
};
using Semaphore = std::unique_ptr<SMSemaphore, SemaphoreEnd>;

class Semaphores : public NamedObjects {};

TEST_F(Semaphores, CountDownAndUp)
{
    for (const char *name : kBothForms) {
        for (const uint32_t count : {32768u, 0x80000000u, 0xFFFFFFFFu})
            EXPECT_EQ(SMSemaphoreCreate(name, count), nullptr) << count;
        const Semaphore semaphore(SMSemaphoreCreate(name, 2));
        ASSERT_NE(semaphore, nullptr);
        for (const uint32_t timeoutMs : {0u, SM_WAIT_FOREVER, 3u, kLong}) {
            int32_t previous = 77;
            EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
            EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
            for (const uint32_t shortMs : {0u, 1u, 3u})
                EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), shortMs), SM_STATUS_TIMEOUT);
            for (const int32_t count : {0, -1, INT32_MIN, kMost + 1, INT32_MAX})
                EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), count, &previous), SM_STATUS_INVALID_PARAMETER) << count;
            EXPECT_EQ(previous, 77);
            EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), 1, &previous), SM_STATUS_OK);
            EXPECT_EQ(previous, 0);
            EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), 1, &previous), SM_STATUS_OK);
            EXPECT_EQ(previous, 1);
        }
    }
    const Semaphore anonymous(SMSemaphoreCreate_s(nullptr, 0, 77));
    for (const uint32_t negativeMs : {0x80000000u, 0xFFFFFFFEu})
        EXPECT_EQ(SMSemaphoreAcquireWait(anonymous.get(), negativeMs), SM_STATUS_TIMEOUT);
}

TEST_F(Semaphores, OnlyNamedOnesHaveACeiling)
{
    for (const char *name : kBothForms) {
        const Semaphore full(SMSemaphoreCreate(name, static_cast<uint32_t>(kMost) - 2));
        ASSERT_NE(full, nullptr);
        int32_t previous = 77;
        EXPECT_EQ(SMSemaphoreRelease(full.get(), kMost, &previous), name != nullptr ? SM_STATUS_FAILED : SM_STATUS_OK);
        EXPECT_EQ(previous, kMost - 2);
        (void)SMSemaphoreRelease(full.get(), 1, &previous);
        EXPECT_EQ(previous, name != nullptr ? kMost : 2 * kMost - 2);
    }
    EXPECT_NE(Semaphore(SMSemaphoreCreate("X", kMost)), nullptr);
}

TEST_F(Semaphores, HandlesOfOtherKindsAreRefused)
{
    SMMutex *mutex = SMMutexCreate(nullptr);
    SMEvent *event = SMEventCreate(nullptr, 1, 1);
    const struct {
        void *handle;
        uint32_t status;
    } cases[] = {{nullptr, SM_STATUS_INVALID_PARAMETER}, {mutex, SM_STATUS_BAD_FORMAT}, {event, SM_STATUS_BAD_FORMAT}};
    for (const auto &c : cases) {
        auto *handle = static_cast<SMSemaphore *>(c.handle);
        EXPECT_EQ(SMSemaphoreAcquireWait(handle, 0), c.status);
        EXPECT_EQ(SMSemaphoreRelease(handle, 1, nullptr), c.status);
        EXPECT_EQ(SMSemaphoreRelease(handle, 0, nullptr), SM_STATUS_INVALID_PARAMETER);
        SMSemaphoreDestroy(handle);
    }
    EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_OK);
    SMEventDestroy(event);
    SMMutexDestroy(mutex);
}

// Comes back when the thread, which is about to wait, does so.
void AwaitSleep(const std::atomic<pid_t> &thread)
{
    while (thread == 0)
        sched_yield();
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/stat";
    while (Content(path).find(") S ") == std::string::npos)
        sched_yield();
}

TEST_F(Semaphores, WaitersAreWokenInAnyForm)
{
    for (const char *name : kBothForms) {
        const Semaphore semaphore(SMSemaphoreCreate(name, 0));
        std::vector<uint32_t> statuses(4, 77);
        std::atomic<pid_t> started;
        std::vector<std::thread> threads;
        for (uint32_t &status : statuses) {
            started = 0;
            threads.emplace_back([&] {
                started = gettid();
                const uint32_t timeoutMs = &status == statuses.data() ? kLong : SM_WAIT_FOREVER;
                status = SMSemaphoreAcquireWait(semaphore.get(), timeoutMs);
            });
            AwaitSleep(started);
        }
        for (const int32_t count : {1, 3})
            EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), count, nullptr), SM_STATUS_OK);
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(statuses, std::vector<uint32_t>(4, SM_STATUS_OK));
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), 0), SM_STATUS_TIMEOUT);
    }
}

TEST_F(Semaphores, ANameLivesUntilACreatorEndsIt)
{
    for (const char *name : {static_cast<const char *>(nullptr), "", "X"})
        EXPECT_EQ(SMSemaphoreOpen(name), nullptr);
    EXPECT_EQ(SMSemaphoreCreate("", 0), nullptr);
    const std::string registry = Content(kRegistry);
    EXPECT_EQ(Process([] { return SMSemaphoreCreate("X", 3) != nullptr ? 0 : 1; }).Wait(), 0); // dies with it
    const int set = SetOf(kFirstKey);
    EXPECT_EQ(semctl(set, 0, GETVAL), 3);
    EXPECT_EQ(StatusOf(set).sem_nsems, 1u);

    Semaphore creator(SMSemaphoreCreate("X", 10)); // joins
    Semaphore opener(SMSemaphoreOpen("X"));
    EXPECT_EQ(SMSemaphoreAcquireWait(opener.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(semctl(set, 0, GETVAL), 2);
    opener.reset();
    EXPECT_EQ(SMSemaphoreAcquireWait(creator.get(), 0), SM_STATUS_OK);
    opener.reset(SMSemaphoreOpen("X"));
    creator.reset();
    EXPECT_EQ(SetsInUse(), 0);
    EXPECT_EQ(SMSemaphoreOpen("X"), nullptr);
    int32_t previous = 77;
    EXPECT_EQ(SMSemaphoreAcquireWait(opener.get(), 0), SM_STATUS_FAILED);
    EXPECT_EQ(SMSemaphoreRelease(opener.get(), 1, &previous), SM_STATUS_FAILED);
    EXPECT_EQ(previous, -1);
    EXPECT_EQ(Content(kRegistry), registry) << "the name keeps its key";
}

TEST_F(Semaphores, EndUnderAWaiter)
{
    for (const uint32_t timeoutMs : {SM_WAIT_FOREVER, kLong, 0xFFFFFFFEu}) {
        Semaphore semaphore(SMSemaphoreCreate("X", 0));
        Process waiter([&] { return Code(SMSemaphoreAcquireWait(SMSemaphoreOpen("X"), timeoutMs)); });
        AwaitWaiter(SetOf(kFirstKey));
        semaphore.reset();
        EXPECT_EQ(waiter.Wait(), kFailedCode) << timeoutMs;
    }
}

const Signal *handlerRuns;

TEST_F(Semaphores, SignalsDoNotEndAWait)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the race detector holds signals back while a call waits";
#endif
    const Semaphore semaphore(SMSemaphoreCreate("X", 0));
    for (const uint32_t timeoutMs : {SM_WAIT_FOREVER, kLong}) {
        const Signal interrupted;
        handlerRuns = &interrupted;
        Process waiter([&] {
            struct sigaction action = {};
            action.sa_handler = [](int) { handlerRuns->Give(); };
            sigaction(SIGUSR1, &action, nullptr);
            return Code(SMSemaphoreAcquireWait(semaphore.get(), timeoutMs));
        });
        AwaitWaiter(SetOf(kFirstKey));
        waiter.Interrupt();
        interrupted.Await();
        AwaitWaiter(SetOf(kFirstKey)); // again
        EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), 1, nullptr), SM_STATUS_OK);
        EXPECT_EQ(waiter.Wait(), 0) << timeoutMs;
    }
}

TEST_F(Semaphores, AccessMasksAreModes)
{
    for (const mode_t mask : {0, 077}) {
        const mode_t before = umask(mask);
        for (const auto &row : kAccessModes) {
            const Semaphore semaphore(SMSemaphoreCreate_s("X", 1, row.mask));
            const int set = SetOf(kFirstKey);
            EXPECT_EQ(StatusOf(set).sem_perm.mode & 0777, row.mode) << std::hex << row.mask;
            EXPECT_EQ(semctl(set, 0, GETVAL), 1);
            const Semaphore joined(SMSemaphoreCreate("X", 1));
            EXPECT_EQ(StatusOf(set).sem_perm.mode & 0777, row.mode) << "of a set that is there";
        }
        const Semaphore plain(SMSemaphoreCreate("X", 1));
        EXPECT_EQ(StatusOf(SetOf(kFirstKey)).sem_perm.mode & 0777, 0664);
        umask(before);
    }
    const auto withoutRights = [] {
        SMSemaphore *made = DropCapabilities() ? SMSemaphoreCreate_s("X", 1, 1) : nullptr;
        const bool refused = SMSemaphoreAcquireWait(made, 0) == SM_STATUS_FAILED &&
                             SMSemaphoreRelease(made, 1, nullptr) == SM_STATUS_FAILED;
        return refused && SMSemaphoreCreate("X", 1) == nullptr && SMSemaphoreOpen("X") == nullptr ? 0 : 1;
    };
    EXPECT_EQ(Process(withoutRights).Wait(), 0);
}

TEST_F(Semaphores, NamesNeedTheIpcDirectory)
{
    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMSemaphoreCreate("X", 1), nullptr);
    EXPECT_EQ(SMSemaphoreOpen("X"), nullptr);
    EXPECT_EQ(SMEventCreate("X", 0, 0), nullptr);
    EXPECT_EQ(SMEventOpen("X"), nullptr);
    EXPECT_NE(Semaphore(SMSemaphoreCreate(nullptr, 1)), nullptr);
    EXPECT_EQ(SetsInUse(), 0);
    EXPECT_FALSE(std::filesystem::exists(kIpcFolder));
}

} // namespace
