#include <sched.h>
#include <sys/syscall.h>

#include <atomic>
#include <future>
#include <iterator>
#include <thread>

#include "ipc/sysv.h"

namespace {

std::atomic<int> onTheirWay; // threads for whom the end of a lock has to wait

void LetOthersRun()
{
    (void)syscall(SYS_sched_yield);
}

} // namespace

// In place of the C library's: the moment that the library gives a destroyed lock's waiters is as long as they need.
extern "C" int sched_yield() noexcept
{
    while (onTheirWay > 0)
        LetOthersRun();
    return 0;
}

namespace {

using ReadWriteLock = SysVTest;

// The digest of the object name of "gate".
const std::string kTwiceDigested = "F9EA98B03D1271DE9E6ABB0B0C1D414F";
const std::string kSemaphoreName = "qzvessmp" + kTwiceDigested;

struct Sort {
    uint32_t (*get)(SMRWL *, uint32_t);
    void (*release)(SMRWL *);
};

constexpr Sort kRead = {SMRWLReadLockGet, SMRWLReadLockRelease};
constexpr Sort kWrite = {SMRWLWriteLockGet, SMRWLWriteLockRelease};

// The kernel tells who is waiting.
void AwaitWaiters(int set, int count)
{
    while (semctl(set, 0, GETNCNT) != count || UnitsOf(set) != 0)
        LetOthersRun();
}

// By a thread that keeps what it gets.
std::future<uint32_t> GetElsewhere(SMRWL *lock, const Sort &sort, uint32_t timeoutMs = SM_WAIT_FOREVER)
{
    return std::async(std::launch::async, [=] {
        const uint32_t status = sort.get(lock, timeoutMs);
        --onTheirWay;
        return status;
    });
}

TEST_F(ReadWriteLock, AdmitsReadersTogetherAndAWriterAlone)
{
    const struct {
        Sort held, asked;
        uint32_t timeoutMs, status;
    } cases[] = {{kRead, kRead, 0, SM_STATUS_OK},        {kRead, kRead, SM_WAIT_FOREVER, SM_STATUS_OK},
                 {kRead, kRead, 1500, SM_STATUS_OK},     {kRead, kWrite, 0, SM_STATUS_TIMEOUT},
                 {kRead, kWrite, 12, SM_STATUS_TIMEOUT}, {kWrite, kRead, 0, SM_STATUS_TIMEOUT},
                 {kWrite, kRead, 12, SM_STATUS_TIMEOUT}, {kWrite, kWrite, 0, SM_STATUS_TIMEOUT},
                 {kWrite, kWrite, 12, SM_STATUS_TIMEOUT}};
    for (const char *name : {static_cast<const char *>(nullptr), "gate"}) {
        SMRWL *lock = SMRWLCreate(name);
        ASSERT_NE(lock, nullptr);
        for (const auto &c : cases) {
            ASSERT_EQ(c.held.get(lock, SM_WAIT_FOREVER), SM_STATUS_OK);
            std::thread([&] {
                EXPECT_EQ(c.asked.get(lock, c.timeoutMs), c.status) << &c - cases;
                if (c.status == SM_STATUS_OK)
                    c.asked.release(lock);
            }).join();
            c.held.release(lock);
            for (const Sort &sort : {kWrite, kRead}) { // nothing is left of it
                EXPECT_EQ(sort.get(lock, 0), SM_STATUS_OK);
                sort.release(lock);
            }
        }
        if (name == nullptr) {
            EXPECT_EQ(SMRWLWriteLockGet(lock, 0x80000000), SM_STATUS_OK);
            EXPECT_EQ(GetElsewhere(lock, kRead, 0x80000000).get(), SM_STATUS_TIMEOUT); // a time-out in the past
            EXPECT_EQ(SMRWLWriteLockGet(lock, 1000), SM_STATUS_FAILED); // the system sees that it would never end
            SMRWLWriteLockRelease(lock);
        }
        SMRWLDestroy(lock);
    }
}

TEST_F(ReadWriteLock, RefusesWhatIsNoLock)
{
    SMMutex *mutex = SMMutexCreate(nullptr);
    auto *stranger = reinterpret_cast<SMRWL *>(mutex);
    for (const Sort &sort : {kRead, kWrite}) {
        EXPECT_EQ(sort.get(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(sort.get(stranger, 0), SM_STATUS_BAD_FORMAT);
        sort.release(nullptr);
        sort.release(stranger);
    }
    SMRWLDestroy(nullptr);
    SMRWLDestroy(stranger);
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_OK);
    SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);

    EXPECT_EQ(SMRWLCreate(""), nullptr);
    std::ofstream(kIpcFolder + "/.lxvestIPCini") << "[Unique String Name Key Section]\n" << kSemaphoreName << "=0\n";
    EXPECT_EQ(SMRWLCreate("gate"), nullptr); // a mutex, but no semaphore
    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMRWLCreate("gate"), nullptr);
    EXPECT_TRUE(Sets().empty());
}

TEST_F(ReadWriteLock, NamesOneSetAndOneMutexFile)
{
    SMRWL *lock = SMRWLCreate("gate");
    ASSERT_NE(lock, nullptr);
    ASSERT_EQ(Sets().size(), 1u);
    EXPECT_EQ(Sets()[0].size, 1u);
    EXPECT_EQ(Sets()[0].mode & 0777, 0600u);
    EXPECT_EQ(UnitsOf(Sets()[0].id), 0);
    std::ifstream registry(kIpcFolder + "/.lxvestIPCini");
    const std::string text{std::istreambuf_iterator<char>(registry), {}};
    EXPECT_NE(text.find(kSemaphoreName + "=300001\n"), std::string::npos);

    SMRWLReadLockRelease(lock); // of nobody: a writer comes in beside one reader
    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_OK);
    EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_OK);
    SMRWLDestroy(lock);
    EXPECT_TRUE(Sets().empty());
    EXPECT_EQ(std::filesystem::status(kIpcFolder + "/.qzvesmtx" + kTwiceDigested).permissions(),
              std::filesystem::perms(0600));
}

TEST_F(ReadWriteLock, NamedPrefersWriters)
{
    SMRWL *lock = SMRWLCreate("gate");
    ASSERT_NE(lock, nullptr);
    const int set = Sets().at(0).id;
    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_OK);
    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_OK);
    std::future<uint32_t> writer = GetElsewhere(lock, kWrite);
    AwaitWaiters(set, 1);
    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_TIMEOUT); // though a reader holds it
    SMRWLReadLockRelease(lock);                              // wakes the writer, who waits on
    AwaitWaiters(set, 1);
    EXPECT_EQ(writer.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    SMRWLReadLockRelease(lock);
    EXPECT_EQ(writer.get(), SM_STATUS_OK);
    EXPECT_EQ(UnitsOf(set), 0);

    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_TIMEOUT);
    SMRWLWriteLockRelease(lock);
    EXPECT_EQ(UnitsOf(set), 0); // for no reader: the timed-out ones do not count
    EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_OK);
    std::future<uint32_t> first = GetElsewhere(lock, kRead);
    std::future<uint32_t> second = GetElsewhere(lock, kRead);
    AwaitWaiters(set, 2);
    SMRWLWriteLockRelease(lock);
    EXPECT_EQ(first.get(), SM_STATUS_OK);
    EXPECT_EQ(second.get(), SM_STATUS_OK);
    EXPECT_EQ(UnitsOf(set), 2); // the two too many
    EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(UnitsOf(set), 0);
    SMRWLDestroy(lock);
}

TEST_F(ReadWriteLock, DestroyedSendsItsWaitersOff)
{
    for (const Sort &sort : {kRead, kWrite}) {
        SMRWL *lock = SMRWLCreate("gate");
        ASSERT_NE(lock, nullptr);
        ASSERT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_OK);
        onTheirWay = 2;
        std::future<uint32_t> first = GetElsewhere(lock, sort);
        std::future<uint32_t> second = GetElsewhere(lock, sort);
        AwaitWaiters(Sets().at(0).id, 2);
        SMRWLDestroy(lock);
        EXPECT_EQ(first.get(), SM_STATUS_FAILED);
        EXPECT_EQ(second.get(), SM_STATUS_FAILED);
        EXPECT_TRUE(Sets().empty());
    }
}

TEST_F(ReadWriteLock, ProcessesShareWakeUpsAlone)
{
    Child other([] {
        SMRWL *lock = SMRWLCreate("gate");
        const uint32_t status = SMRWLWriteLockGet(lock, 0);
        return status == SM_STATUS_OK ? static_cast<int>(SMRWLReadLockGet(lock, SM_WAIT_FOREVER)) : 1;
    });
    SMRWL *lock = SMRWLCreate("gate");
    ASSERT_NE(lock, nullptr);
    const int set = Sets().at(0).id;
    AwaitWaiters(set, 1);
    EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_OK); // beside the other process's writer
    std::future<uint32_t> reader = GetElsewhere(lock, kRead);
    AwaitWaiters(set, 2);
    SMRWLWriteLockRelease(lock);
    EXPECT_EQ(reader.get(), SM_STATUS_OK);
    AwaitWaiters(set, 1); // the other one has used up the rest, and waits on

    SMRWLDestroy(lock); // the set goes from under the other process
    EXPECT_EQ(other.Result(), static_cast<int>(SM_STATUS_FAILED));
}

} // namespace
