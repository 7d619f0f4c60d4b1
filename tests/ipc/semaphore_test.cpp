// Semaphores and events, of one process and of all that know a name, and the handles that no lock takes for its own.

#include <qzvest/qzvest.h>

#include <vector>

#include "ipc/lock_fixture.h"

namespace {

constexpr int32_t kMost = 32767;
constexpr const char *kBothForms[] = {nullptr, "X"};

using Semaphore = std::unique_ptr<SMSemaphore, Ends<SMSemaphoreDestroy>>;
using Event = std::unique_ptr<SMEvent, Ends<SMEventDestroy>>;
using Handles = NamedObjects;
using Semaphores = NamedObjects;
using Events = NamedObjects;

template <auto kCall, typename Handle, auto... kMore>
uint32_t With(void *handle)
{
    if constexpr (std::is_void_v<decltype(kCall(static_cast<Handle *>(handle), kMore...))>)
        return kCall(static_cast<Handle *>(handle), kMore...), SM_STATUS_OK;
    else
        return kCall(static_cast<Handle *>(handle), kMore...);
}

TEST_F(Handles, OfOtherKindsAreRefused)
{
    void *const own[] = {SMMutexCreate(nullptr), SMSemaphoreCreate(nullptr, 1), SMEventCreate(nullptr, 1, 1),
                         SMRWLCreate(nullptr), SMSharedMemCreate("X", 1)};
    constexpr std::pair<size_t, uint32_t (*)(void *)> kCalls[] = {
        {0, With<SMMutexLock, SMMutex, 0u>},
        {0, With<SMMutexUnLock, SMMutex>},
        {1, With<SMSemaphoreAcquireWait, SMSemaphore, 0u>},
        {1, With<SMSemaphoreRelease, SMSemaphore, 1, nullptr>},
        {2, With<SMEventWait, SMEvent, 0u>},
        {2, With<SMEventSet, SMEvent>},
        {2, With<SMEventReset, SMEvent>},
        {3, With<SMRWLReadLockGet, SMRWL, 0u>},
        {3, With<SMRWLReadLockRelease, SMRWL>}, // from here on without a status
        {0, With<SMMutexDestroy, SMMutex>},
        {1, With<SMSemaphoreDestroy, SMSemaphore>},
        {2, With<SMEventDestroy, SMEvent>},
        {3, With<SMRWLDestroy, SMRWL>},
        {4, With<SMSharedMemFree, SMSharedMem>}};
    for (size_t i = 0; i < std::size(kCalls); ++i) {
        const auto &[kind, call] = kCalls[i];
        for (void *handle : own)
            EXPECT_TRUE(handle == own[kind] || call(handle) == (i < 8 ? SM_STATUS_BAD_FORMAT : SM_STATUS_OK)) << i;
        EXPECT_EQ(call(nullptr), i < 8 ? SM_STATUS_INVALID_PARAMETER : SM_STATUS_OK) << i;
    }
    EXPECT_EQ(SMSharedMemGetAddressPtr(static_cast<SMSharedMem *>(own[0])), nullptr);
    for (const auto &[kind, call] : kCalls) // still there
        EXPECT_EQ(call(own[kind]), SM_STATUS_OK) << kind;
}

TEST_F(Semaphores, CountDownAndUpToACeilingWhenNamed)
{
    for (const char *name : kBothForms) {
        for (const uint32_t count : {32768u, 0xFFFFFFFFu})
            EXPECT_EQ(SMSemaphoreCreate(name, count), nullptr) << count;
        Semaphore semaphore(SMSemaphoreCreate(name, 2));
        int32_t previous = -1;
        for (const uint32_t timeoutMs : {0u, SM_WAIT_FOREVER, 3u, kLong}) {
            for (int i = 0; i < 2; ++i)
                EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
            for (const uint32_t shortMs : {0u, 3u})
                EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), shortMs), SM_STATUS_TIMEOUT);
            for (const int32_t count : {0, INT32_MIN, kMost + 1})
                EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), count, nullptr), SM_STATUS_INVALID_PARAMETER) << count;
            for (const int32_t before : {0, 1}) {
                EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), 1, &previous), SM_STATUS_OK);
                EXPECT_EQ(previous, before);
            }
        }
        semaphore.reset(); // before the name gets another
        semaphore.reset(SMSemaphoreCreate(name, static_cast<uint32_t>(kMost) - 2));
        EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), kMost, nullptr), name ? SM_STATUS_FAILED : SM_STATUS_OK);
        (void)SMSemaphoreRelease(semaphore.get(), 1, &previous);
        EXPECT_EQ(previous, name != nullptr ? kMost : 2 * kMost - 2);
    }
    EXPECT_NE(Semaphore(SMSemaphoreCreate("X", kMost)), nullptr);
    const Semaphore anonymous(SMSemaphoreCreate_s(nullptr, 0, 77));
    EXPECT_EQ(SMSemaphoreAcquireWait(anonymous.get(), 0xFFFFFFFE), SM_STATUS_TIMEOUT);
}

TEST_F(Semaphores, WaitingThreadsAreWoken)
{
    for (const char *name : kBothForms) {
        const Semaphore semaphore(SMSemaphoreCreate(name, 0));
        std::vector<std::jthread> threads;
        for (const uint32_t timeoutMs : {kLong, SM_WAIT_FOREVER, SM_WAIT_FOREVER, SM_WAIT_FOREVER}) {
            std::atomic<pid_t> started = 0;
            threads.emplace_back([&semaphore, &started, timeoutMs] {
                started = gettid();
                EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), timeoutMs), SM_STATUS_OK);
            });
            while (started == 0 ||
                   Content("/proc/self/task/" + std::to_string(started) + "/stat").find(") S ") == std::string::npos)
                LetOthersRun();
        }
        for (const int32_t count : {1, 3})
            EXPECT_EQ(SMSemaphoreRelease(semaphore.get(), count, nullptr), SM_STATUS_OK);
        threads.clear();
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore.get(), 0), SM_STATUS_TIMEOUT);
    }
}

TEST_F(Semaphores, WaitsOfProcessesEndWithTheObjectButNotBySignals)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the race detector holds signals back while a call waits";
#endif
    static const Step handlerRuns;
    for (const uint32_t timeoutMs : {SM_WAIT_FOREVER, kLong}) {
        Event event(SMEventCreate("X", 0, 0));
        const int set = SetOf(kFirstKey);
        const auto wait = [=] {
            signal(SIGUSR1, [](int) { ++*handlerRuns; });
            return Code(SMEventWait(SMEventOpen("X"), timeoutMs));
        };
        Process passes(wait);
        AwaitWaiters(set, 1);
        const int before = *handlerRuns;
        kill(passes.id, SIGUSR1);
        Await(handlerRuns, before + 1);
        AwaitWaiters(set, 1); // again
        EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_OK);
        EXPECT_EQ(passes.Wait(), 0) << timeoutMs;
        Process fails(wait);
        AwaitWaiters(set, 1);
        event.reset();
        EXPECT_EQ(fails.Wait(), kFailedCode) << timeoutMs;
    }
}

TEST_F(Semaphores, ANameLivesUntilACreatorEndsIt)
{
    for (const char *name : {static_cast<const char *>(nullptr), "", "X"})
        EXPECT_EQ(SMSemaphoreOpen(name), nullptr);
    EXPECT_EQ(SMSemaphoreCreate("", 0), nullptr);
    const std::string registry = Content(kRegistry);
    umask(077);
    EXPECT_EQ(Process([] { return SMSemaphoreCreate("X", 3) != nullptr ? 0 : 1; }).Wait(), 0); // dies with it
    const int set = SetOf(kFirstKey);
    EXPECT_EQ(UnitsOf(set), 3);
    EXPECT_EQ(StatusOf(set).sem_nsems, 1u);
    Semaphore creator(SMSemaphoreCreate_s("X", 10, 0)); // joins
    EXPECT_EQ(ModeOfSet(set), 0664u);
    Semaphore opener(SMSemaphoreOpen("X"));
    EXPECT_EQ(SMSemaphoreAcquireWait(opener.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(UnitsOf(set), 2);
    opener.reset(SMSemaphoreOpen("X"));
    EXPECT_EQ(SMSemaphoreAcquireWait(creator.get(), 0), SM_STATUS_OK);
    creator.reset();
    EXPECT_EQ(SMSemaphoreOpen("X"), nullptr);
    int32_t previous = 77;
    EXPECT_EQ(SMSemaphoreAcquireWait(opener.get(), 0), SM_STATUS_FAILED);
    EXPECT_EQ(SMSemaphoreRelease(opener.get(), 1, &previous), SM_STATUS_FAILED);
    EXPECT_EQ(previous, -1);
    EXPECT_EQ(Content(kRegistry), registry) << "the name keeps its key";

    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMSemaphoreCreate("X", 1), nullptr);
    EXPECT_EQ(SMEventOpen("X"), nullptr);
    EXPECT_EQ(SetsInUse(), 0);
}

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
    constexpr std::tuple<uint16_t, uint16_t, int, int> kCases[] = {
        {0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 3, 1}, {1, 0, 0, 0}, {1, 1, 0, 4}, {1, 0, 3, 4}, {2, 2, 0, 0}};
    for (const char *name : kBothForms)
        for (const auto &[manualReset, initiallySet, sets, passes] : kCases) {
            const Event event(SMEventCreate(name, manualReset, initiallySet));
            for (int i = 0; i < sets; ++i)
                EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_OK);
            EXPECT_EQ(Passes(event.get()), passes) << manualReset << ' ' << initiallySet << ' ' << sets;
            EXPECT_EQ(SMEventReset(event.get()), SM_STATUS_OK);
            EXPECT_EQ(SMEventWait(event.get(), 2), SM_STATUS_TIMEOUT);
            EXPECT_EQ(SMEventSet(event.get()), SM_STATUS_OK);
            EXPECT_EQ(SMEventWait(event.get(), SM_WAIT_FOREVER), SM_STATUS_OK);
        }
    const Event full(SMEventCreate("X", 0, 1));
    EXPECT_EQ(semctl(SetOf(kFirstKey), 0, SETVAL, kMost), 0);
    EXPECT_EQ(SMEventSet(full.get()), SM_STATUS_FAILED);
    EXPECT_EQ(Passes(full.get()), 1);
}

TEST_F(Events, TheSetTellsItsKindToOpeners)
{
    for (const char *name : {static_cast<const char *>(nullptr), "X"})
        EXPECT_EQ(SMEventOpen(name), nullptr);
    for (const uint16_t manualReset : {uint16_t{1}, uint16_t{0}, uint16_t{2}}) {
        const bool manual = manualReset == 1;
        Event creator(SMEventCreate_s("X", manualReset, 1, 0x04000000));
        const int set = SetOf(kFirstKey);
        EXPECT_EQ(ModeOfSet(set), 0200u);
        EXPECT_EQ(StatusOf(set).sem_nsems, manual ? 2u : 1u);
        EXPECT_EQ(Process([] { return Passes(SMEventOpen("X")); }).Wait(), manual ? 4 : 1);
        EXPECT_EQ(UnitsOf(set), manual ? 1 : 0);

        // One that joins goes by its own word, and drops how it should begin.
        EXPECT_EQ(SMEventSet(creator.get()), SM_STATUS_OK);
        const auto join = [&] { return Passes(SMEventCreate("X", manual ? 0 : 1, 0)); };
        EXPECT_EQ(Process(join).Wait(), manual ? 1 : 4);
        const Event opener(SMEventOpen("X"));
        creator.reset();
        EXPECT_EQ(SetsInUse(), 0);
        EXPECT_EQ(SMEventWait(opener.get(), 0), SM_STATUS_FAILED);
        EXPECT_EQ(SMEventReset(opener.get()), SM_STATUS_OK);
    }
}

} // namespace
