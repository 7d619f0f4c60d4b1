// What creators and openers leave when memory runs out at any of their allocations: nothing.

#include "frame/module.h"
#include "ipc/critical.h"
#include "ipc/event.h"
#include "ipc/lock_fixture.h"
#include "ipc/mutex.h"
#include "ipc/rwlock.h"
#include "ipc/semaphore.h"
#include "ipc/sharedmem.h"
#include "support/faults.h"

namespace {

using namespace qzvest;

int runs; // of the critical section

// What is made while memory runs out, beside what stood before, and how both end.
struct Case {
    const char *what;
    void *(*before)();
    void *(*make)();
    void (*end)(void *);
};

template <auto kFunction, typename Handle>
void End(void *handle)
{
    kFunction(static_cast<Handle *>(handle));
}
constexpr auto kEndMutex = End<qzvest::SMMutexDestroy, SMMutex>;
constexpr auto kEndSemaphore = End<qzvest::SMSemaphoreDestroy, SMSemaphore>;
constexpr auto kEndEvent = End<qzvest::SMEventDestroy, SMEvent>;
constexpr auto kEndMemory = End<qzvest::SMSharedMemFree, SMSharedMem>;
constexpr auto kEndLock = End<qzvest::SMRWLDestroy, SMRWL>;

constexpr auto kMutex = [] { return static_cast<void *>(SMMutexCreate("X")); };
constexpr auto kSemaphore = [] { return static_cast<void *>(SMSemaphoreCreate("X", 1)); };
constexpr auto kEvent = [] { return static_cast<void *>(SMEventCreate("X", 1, 1)); };
constexpr auto kMemory = [] { return static_cast<void *>(SMSharedMemCreate("X", 100)); };

// The function runs or does not run.
void *RunCritical()
{
    runs = 0;
    const auto count = [](uint64_t step) {
        runs += static_cast<int>(step);
        return step;
    };
    SMCriticalSectionExecute(count, 1, SM_WAIT_FOREVER);
    return runs == 1 ? &runs : nullptr;
}

const Case kCases[] = {
    {"mutex", nullptr, kMutex, kEndMutex},
    {"mutex opened", kMutex, [] { return static_cast<void *>(SMMutexOpen("X")); }, kEndMutex},
    {"anonymous semaphore", nullptr, [] { return static_cast<void *>(SMSemaphoreCreate(nullptr, 1)); }, kEndSemaphore},
    {"semaphore", nullptr, kSemaphore, kEndSemaphore},
    {"semaphore joined", kSemaphore, kSemaphore, kEndSemaphore},
    {"semaphore opened", kSemaphore, [] { return static_cast<void *>(SMSemaphoreOpen("X")); }, kEndSemaphore},
    {"anonymous event", nullptr, [] { return static_cast<void *>(SMEventCreate(nullptr, 1, 1)); }, kEndEvent},
    {"event", nullptr, kEvent, kEndEvent},
    {"event opened", kEvent, [] { return static_cast<void *>(SMEventOpen("X")); }, kEndEvent},
    {"shared memory", nullptr, kMemory, kEndMemory},
    {"shared memory opened", kMemory, [] { return static_cast<void *>(SMSharedMemOpen("X")); }, kEndMemory},
    {"anonymous read-write lock", nullptr, [] { return static_cast<void *>(SMRWLCreate(nullptr)); }, kEndLock},
    {"read-write lock", nullptr, [] { return static_cast<void *>(SMRWLCreate("X")); }, kEndLock},
    {"critical section", nullptr, RunCritical, [](void *) {}},
};

int SegmentsInUse()
{
    shm_info info = {};
    return shmctl(0, SHM_INFO, reinterpret_cast<shmid_ds *>(&info)) < 0 ? -1 : info.used_ids;
}

class IpcFaults : public NamedObjects {
protected:
    void TearDown() override
    {
        (void)SMModuleStart();
    }
};

TEST_F(IpcFaults, LeaveNothing)
{
    (void)SMModuleStop();
    const long blocks = LiveBlocks();
    for (const Case &c : kCases) {
        int refusals = 0;
        bool failed = true;
        for (int nth = 1; failed; ++nth) {
            std::filesystem::remove_all(kIpcFolder); // what a failure stores there stays, as it would anywhere
            std::filesystem::create_directory(kIpcFolder);
            (void)SMModuleStart();
            void *before = c.before != nullptr ? c.before() : nullptr;
            FailAllocation(nth);
            void *handle = c.make();
            failed = StopFault();
            refusals += handle == nullptr ? 1 : 0;
            EXPECT_TRUE(failed || handle != nullptr) << c.what;
            if (handle != nullptr)
                c.end(handle);
            if (before != nullptr)
                c.end(before);
            (void)SMModuleStop();
            EXPECT_EQ(LiveBlocks(), blocks) << c.what << ' ' << nth;
            EXPECT_EQ(SetsInUse(), 0) << c.what << ' ' << nth;
            EXPECT_EQ(SegmentsInUse(), 0) << c.what << ' ' << nth;
        }
        EXPECT_GT(refusals, 0) << c.what;
    }
}

TEST_F(IpcFaults, ANameThatWasRefusedMayHaveKeyZero)
{
    SMSemaphoreDestroy(SMSemaphoreCreate("other", 0)); // so that there is something to read
    int poisoned = 0;
    for (int nth = 1;; ++nth) {
        const std::string name = "name" + std::to_string(nth);
        FailAllocation(nth);
        SMSemaphore *semaphore = SMSemaphoreCreate(name.c_str(), 0);
        if (!StopFault()) {
            SMSemaphoreDestroy(semaphore);
            break;
        }
        SMSemaphoreDestroy(semaphore);
        if (Content(kRegistry).find("=0\n") == std::string::npos)
            continue;
        ++poisoned;
        EXPECT_EQ(semaphore, nullptr);
        EXPECT_EQ(SMSemaphoreCreate(name.c_str(), 0), nullptr);
        std::filesystem::remove(kRegistry);
        SMSemaphoreDestroy(SMSemaphoreCreate("other", 0));
    }
    EXPECT_GT(poisoned, 0);
    EXPECT_EQ(SetsInUse(), 0);
}

} // namespace
