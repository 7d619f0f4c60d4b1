#include <qzvest/qzvest.h>

#include <future>

#include "ipc/lock_fixture.h"

namespace {

std::atomic<int> onTheirWay; // threads for whom the end of a lock has to wait

} // namespace

// In place of the C library's: the moment that the library gives a destroyed lock's waiters is as long as they need.
extern "C" int sched_yield() noexcept
{
    while (onTheirWay > 0)
        LetOthersRun();
    return 0;
}

namespace {

using ReadWriteLock = NamedObjects;
using Lock = std::unique_ptr<SMRWL, Ends<SMRWLDestroy>>;

// The digest of the object name of "gate".
const std::string kTwiceDigested = "F9EA98B03D1271DE9E6ABB0B0C1D414F";
const std::string kSemaphoreName = "qzvessmp" + kTwiceDigested;

struct Sort {
    uint32_t (*get)(SMRWL *, uint32_t);
    void (*release)(SMRWL *);
};

constexpr Sort kRead = {SMRWLReadLockGet, SMRWLReadLockRelease};
constexpr Sort kWrite = {SMRWLWriteLockGet, SMRWLWriteLockRelease};

// By a thread that keeps what it gets.
std::future<uint32_t> GetElsewhere(const Lock &lock, const Sort &sort, uint32_t timeoutMs = SM_WAIT_FOREVER)
{
    return std::async(std::launch::async, [=, handle = lock.get()] {
        const uint32_t status = sort.get(handle, timeoutMs);
        --onTheirWay;
        return status;
    });
}

TEST_F(ReadWriteLock, AdmitsReadersTogetherAndAWriterAlone)
{
    for (const char *name : {static_cast<const char *>(nullptr), "gate"}) {
        const Lock lock(SMRWLCreate(name));
        for (const Sort &held : {kRead, kWrite})
            for (const Sort &asked : {kRead, kWrite})
                for (const uint32_t timeoutMs : {0u, 12u}) {
                    const bool both = held.get == kRead.get && asked.get == kRead.get;
                    EXPECT_EQ(held.get(lock.get(), SM_WAIT_FOREVER), SM_STATUS_OK); // nothing is left of the last
                    EXPECT_EQ(GetElsewhere(lock, asked, timeoutMs).get(), both ? SM_STATUS_OK : SM_STATUS_TIMEOUT);
                    if (both)
                        asked.release(lock.get());
                    held.release(lock.get());
                }
    }
    const Lock lock(SMRWLCreate(nullptr));
    EXPECT_EQ(SMRWLWriteLockGet(lock.get(), 0x80000000), SM_STATUS_OK);
    EXPECT_EQ(GetElsewhere(lock, kRead, 0x80000000).get(), SM_STATUS_TIMEOUT); // a time-out in the past
    EXPECT_EQ(SMRWLWriteLockGet(lock.get(), 1000), SM_STATUS_FAILED); // the system sees that it would never end
    SMRWLWriteLockRelease(lock.get());
}

TEST_F(ReadWriteLock, NamesOneSetAndOneMutexFile)
{
    Lock lock(SMRWLCreate("gate"));
    const int set = SetOf(kFirstKey);
    EXPECT_EQ(SetsInUse(), 1);
    EXPECT_EQ(ModeOfSet(set), 0600u);
    EXPECT_EQ(UnitsOf(set), 0);
    EXPECT_NE(Content(kRegistry).find(kSemaphoreName + "=300001\n"), std::string::npos);
    EXPECT_EQ(Mode(kIpcFolder + "/.qzvesmtx" + kTwiceDigested), 0600u);

    SMRWLReadLockRelease(lock.get()); // of nobody: a writer comes in beside one reader
    EXPECT_EQ(SMRWLReadLockGet(lock.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(SMRWLWriteLockGet(lock.get(), 0), SM_STATUS_OK);
    lock.reset();
    EXPECT_EQ(SetsInUse(), 0);

    EXPECT_EQ(SMRWLCreate(""), nullptr);
    std::ofstream(kRegistry) << "[Unique String Name Key Section]\n" << kSemaphoreName << "=0\n";
    EXPECT_EQ(SMRWLCreate("gate"), nullptr); // a mutex, but no semaphore
    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMRWLCreate("gate"), nullptr);
    EXPECT_EQ(SetsInUse(), 0);
}

TEST_F(ReadWriteLock, NamedPrefersWriters)
{
    const Lock lock(SMRWLCreate("gate"));
    const int set = SetOf(kFirstKey);
    EXPECT_EQ(SMRWLReadLockGet(lock.get(), 0) | SMRWLReadLockGet(lock.get(), 0), SM_STATUS_OK);
    std::future<uint32_t> writer = GetElsewhere(lock, kWrite);
    AwaitWaiters(set, 1);
    EXPECT_EQ(SMRWLReadLockGet(lock.get(), 0), SM_STATUS_TIMEOUT); // though a reader holds it
    SMRWLReadLockRelease(lock.get());                              // wakes the writer, who waits on
    AwaitWaiters(set, 1);
    SMRWLReadLockRelease(lock.get());
    EXPECT_EQ(writer.get(), SM_STATUS_OK);
    EXPECT_EQ(SMRWLReadLockGet(lock.get(), 0), SM_STATUS_TIMEOUT);
    SMRWLWriteLockRelease(lock.get());
    EXPECT_EQ(UnitsOf(set), 0); // for no reader: the timed-out ones do not count

    EXPECT_EQ(SMRWLWriteLockGet(lock.get(), 0), SM_STATUS_OK);
    std::future<uint32_t> first = GetElsewhere(lock, kRead), second = GetElsewhere(lock, kRead);
    AwaitWaiters(set, 2);
    SMRWLWriteLockRelease(lock.get());
    EXPECT_EQ(first.get() | second.get(), SM_STATUS_OK);
    EXPECT_EQ(UnitsOf(set), 2); // the two too many
    EXPECT_EQ(SMRWLWriteLockGet(lock.get(), 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(UnitsOf(set), 0);
}

TEST_F(ReadWriteLock, DestroyedSendsItsWaitersOff)
{
    for (const Sort &sort : {kRead, kWrite}) {
        Lock lock(SMRWLCreate("gate"));
        ASSERT_EQ(SMRWLWriteLockGet(lock.get(), 0), SM_STATUS_OK);
        onTheirWay = 2;
        std::future<uint32_t> first = GetElsewhere(lock, sort), second = GetElsewhere(lock, sort);
        AwaitWaiters(SetOf(kFirstKey), 2);
        lock.reset();
        EXPECT_EQ(first.get(), SM_STATUS_FAILED);
        EXPECT_EQ(second.get(), SM_STATUS_FAILED);
        EXPECT_EQ(SetsInUse(), 0);
    }
}

} // namespace
