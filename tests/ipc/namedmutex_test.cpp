// Mutexes with a name, between processes.

#include <fcntl.h>
#include <qzvest/qzvest.h>

#include <cerrno>

#include "ipc/lock_fixture.h"

#if defined(__SANITIZE_THREAD__)
// To destroy a mutex that is held, and to unlock one that is not, is what some of these cases are about.
extern "C" const char *__tsan_default_options()
{
    return "report_destroy_locked=0:report_mutex_bugs=0";
}
#endif

namespace {

const std::string kFile = kIpcFolder + "/.qzvesmtxD59C7440D368FAED532F6FB6CDDD865F"; // of "X"
using Mutex = std::unique_ptr<SMMutex, Ends<SMMutexDestroy>>;
using NamedMutex = NamedObjects;

// The descriptor of the mutex file, -1 if none is open.
int DescriptorOfFile()
{
    for (int descriptor = 3; descriptor < 64; ++descriptor) {
        std::error_code none;
        if (std::filesystem::equivalent("/proc/self/fd/" + std::to_string(descriptor), kFile, none))
            return descriptor;
    }
    return -1;
}

// What another process gets that tries once, with the rights of its user alone or with more.
int TryElsewhere(bool drop = false)
{
    return InOtherProcess([=] { return !drop || DropCapabilities() ? Code(SMMutexLock(SMMutexOpen("X"), 0)) : 99; });
}

TEST_F(NamedMutex, LivesInAFileThatStays)
{
    EXPECT_EQ(SMMutexOpen(nullptr), nullptr);
    EXPECT_EQ(SMMutexCreate(""), nullptr);
    EXPECT_EQ(SMMutexOpen("X"), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(kIpcFolder));
    umask(077);
    constexpr std::pair<uint32_t, mode_t> kModes[] = {{0, 0600}, {0x06040200, 0624}, {0xFFFFFFFF, 0664}};
    for (const auto &[mask, mode] : kModes) {
        std::filesystem::remove(kFile);
        Mutex mutex(SMMutexCreate_s("X", mask));
        EXPECT_EQ(Mode(kFile), mode);
        EXPECT_EQ(fcntl(DescriptorOfFile(), F_GETFD), FD_CLOEXEC);
        mutex.reset();
        EXPECT_EQ(DescriptorOfFile(), -1);
        EXPECT_NE(Mutex(SMMutexCreate_s("X", 0x01010100)), nullptr);
        EXPECT_EQ(Mode(kFile), mode) << "of a file that is there";
    }
    EXPECT_NE(Mutex(SMMutexOpen("X")), nullptr);
    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMMutexCreate("X"), nullptr);
    EXPECT_NE(Mutex(SMMutexCreate(nullptr)), nullptr);
    EXPECT_FALSE(Exists(kIpcFolder));
}

TEST_F(NamedMutex, ExcludesProcessesUntilReleaseOrDeath)
{
    const Mutex mutex(SMMutexCreate("X"));
    EXPECT_EQ(Mode(kFile), 0664u);
    for (const bool killed : {false, true}) {
        const Step step;
        Process holder([&] {
            SMMutex *own = SMMutexOpen("X");
            const uint32_t status = SMMutexLock(own, SM_WAIT_FOREVER);
            *step = 1;
            Await(step, 2);
            return Code(status | SMMutexUnLock(own)); // leaves by _exit, with the handle
        });
        Await(step, 1);
        for (const uint32_t timeoutMs : {0u, 3u, 0xFFFFFFFEu})
            EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_TIMEOUT) << timeoutMs;
        Process polling([] { return Code(SMMutexLock(SMMutexOpen("X"), kLong)); });
        if (killed)
            holder.Kill();
        *step = 2;
        EXPECT_EQ(polling.Wait(), 0);
        EXPECT_EQ(SMMutexLock(mutex.get(), SM_WAIT_FOREVER), SM_STATUS_OK);
        EXPECT_EQ(TryElsewhere(), static_cast<int>(SM_STATUS_TIMEOUT));
        EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
        EXPECT_EQ(TryElsewhere(), 0);
    }
}

TEST_F(NamedMutex, OneHandleExcludesThreadsAndTwoDoNot)
{
    for (const char *name : {static_cast<const char *>(nullptr), "X"})
        for (const uint32_t timeoutMs : {0u, 3u, kLong, SM_WAIT_FOREVER}) {
            const Mutex mutex(SMMutexCreate(name));
            EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
            std::thread waiter([&] {
                const bool gets = timeoutMs >= kLong;
                EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), gets ? SM_STATUS_OK : SM_STATUS_TIMEOUT) << timeoutMs;
                EXPECT_EQ(gets ? SMMutexUnLock(mutex.get()) : SM_STATUS_OK, SM_STATUS_OK);
            });
            EXPECT_EQ(SMMutexLock(mutex.get(), 5), SM_STATUS_TIMEOUT); // by its holder; gives the waiter time
            if (timeoutMs < kLong)
                waiter.join();
            EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
            if (timeoutMs >= kLong)
                waiter.join();
        }
    const Mutex mutex(SMMutexCreate("X"));
    Mutex second(SMMutexOpen("X"));
    EXPECT_EQ(SMMutexLock(mutex.get(), kLong), SM_STATUS_OK);
    EXPECT_EQ(SMMutexLock(second.get(), kLong), SM_STATUS_OK);
    EXPECT_EQ(TryElsewhere(), static_cast<int>(SM_STATUS_TIMEOUT));
    second.reset(); // gives up the process's lock on the file
    EXPECT_EQ(TryElsewhere(), 0);
}

TEST_F(NamedMutex, ReadersOfTheFileShareIt)
{
    const Mutex mutex(SMMutexCreate_s("X", 0x02000000)); // opened for writing before the mode was set
    ASSERT_EQ(Mode(kFile), 0400u);
    {
        const Step held;
        const Process first([&] {
            SMMutex *own = DropCapabilities() ? SMMutexCreate("X") : nullptr;
            *held = SMMutexLock(own, 0) == SM_STATUS_OK ? 1 : 2;
            return pause();
        });
        Await(held, 1);
        EXPECT_EQ(*held, 1);
        EXPECT_EQ(TryElsewhere(true), 0);
        EXPECT_EQ(SMMutexLock(mutex.get(), 1), SM_STATUS_TIMEOUT);
    }
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(TryElsewhere(true), static_cast<int>(SM_STATUS_TIMEOUT));
    EXPECT_EQ(chmod(kFile.c_str(), 0), 0);
    EXPECT_EQ(InOtherProcess([] { return DropCapabilities() && SMMutexCreate("X") == nullptr ? 0 : 1; }), 0);
}

TEST_F(NamedMutex, AClosedDescriptorIsOpenedAgain)
{
    const Mutex mutex(SMMutexCreate("X"));
    const int descriptor = DescriptorOfFile();
    close(descriptor);
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(TryElsewhere(), static_cast<int>(SM_STATUS_TIMEOUT));
    EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
    close(descriptor);
    std::filesystem::remove(kFile);
    for (int i = 0; i < 2; ++i) // the threads of this process are not kept out
        EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_FAILED);
    EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
    EXPECT_FALSE(Exists(kFile));
}

TEST_F(NamedMutex, RefusalsOfTheSystem)
{
    if (const std::string hindrance = TraceHindrance(); !hindrance.empty())
        GTEST_SKIP() << hindrance;
    const Mutex mutex(SMMutexCreate("X"));
    // The nth call, 1 the lock and 2 the unlock; what another process gets then.
    constexpr std::tuple<int, int, uint32_t, uint32_t, uint32_t> kCases[] = {
        {1, EINTR, 0, SM_STATUS_OK, 0},
        {1, EDEADLK, SM_WAIT_FOREVER, SM_STATUS_OK, 0},
        {1, EACCES, kLong, SM_STATUS_OK, 0},
        {1, EAGAIN, 1u << 31, SM_STATUS_TIMEOUT, 0},
        {1, ENOLCK, SM_WAIT_FOREVER, SM_STATUS_FAILED, 0},
        {2, EINTR, 0, SM_STATUS_OK, 0},
        {2, ENOLCK, 0, SM_STATUS_OK, SM_STATUS_TIMEOUT},
    };
    for (const auto &[nth, error, timeoutMs, given, after] : kCases) {
        const auto work = [&, timeoutMs, after] {
            TraceBegin();
            const uint32_t status = SMMutexLock(mutex.get(), timeoutMs);
            const bool unlocked = status != SM_STATUS_OK || SMMutexUnLock(mutex.get()) == SM_STATUS_OK;
            TraceEnd();
            return unlocked && TryElsewhere() == Code(after) ? Code(status) : 99;
        };
        const TracePlan plan = {nth, error, [](long call) { return call == SYS_fcntl; }};
        EXPECT_EQ(Trace(work, plan).exitCode, Code(given)) << nth << ' ' << error;
    }
}

} // namespace
