// Mutexes with a name, between processes.

#include <qzvest/qzvest.h>

#include <cerrno>
#include <memory>
#include <thread>

#include "ipc/lock_fixture.h"
#include "support/trace.h"

#if defined(__SANITIZE_THREAD__)
// To destroy a mutex that is held, and to unlock one that is not, is what some of these cases are about.
extern "C" const char *__tsan_default_options()
{
    return "report_destroy_locked=0:report_mutex_bugs=0";
}
#endif

namespace {

const std::string kFile = kIpcFolder + "/.qzvesmtx" + kDigestOfX;

struct MutexEnd {
    void operator()(SMMutex *mutex) const
    {
        SMMutexDestroy(mutex);
    }
};
using Mutex = std::unique_ptr<SMMutex, MutexEnd>;

mode_t ModeOf(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// The descriptor of the mutex file, -1 if none is open.
int DescriptorOfFile()
{
    struct stat file = {};
    struct stat open = {};
    EXPECT_EQ(stat(kFile.c_str(), &file), 0);
    for (int descriptor = 3; descriptor < 64; ++descriptor)
        if (fstat(descriptor, &open) == 0 && open.st_ino == file.st_ino && open.st_dev == file.st_dev)
            return descriptor;
    return -1;
}

// What another process gets that tries once.
int TryElsewhere()
{
    return InOtherProcess([] { return Code(SMMutexLock(SMMutexOpen("X"), 0)); });
}

class NamedMutex : public NamedObjects {};

TEST_F(NamedMutex, LivesInAFileThatStays)
{
    EXPECT_EQ(SMMutexOpen(nullptr), nullptr);
    EXPECT_EQ(SMMutexCreate(""), nullptr);
    EXPECT_EQ(SMMutexOpen(""), nullptr);
    EXPECT_EQ(SMMutexOpen("X"), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(kIpcFolder));
    Mutex mutex(SMMutexCreate("X"));
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(Content(kFile), "");
    EXPECT_EQ(fcntl(DescriptorOfFile(), F_GETFD), FD_CLOEXEC);
    mutex.reset();
    EXPECT_EQ(DescriptorOfFile(), -1);
    EXPECT_NE(Mutex(SMMutexOpen("X")), nullptr);
    std::filesystem::remove_all(kIpcFolder);
    EXPECT_EQ(SMMutexCreate("X"), nullptr);
    EXPECT_NE(Mutex(SMMutexCreate(nullptr)), nullptr);
    EXPECT_FALSE(std::filesystem::exists(kIpcFolder));
}

TEST_F(NamedMutex, AccessMasksAreModesWhateverTheUmask)
{
    for (const mode_t mask : {0, 077}) {
        for (const auto &row : kAccessModes) {
            std::filesystem::remove(kFile);
            const mode_t before = umask(mask);
            EXPECT_NE(Mutex(SMMutexCreate_s("X", row.mask)), nullptr);
            EXPECT_EQ(ModeOf(kFile), row.mode) << std::hex << row.mask;
            EXPECT_NE(Mutex(SMMutexCreate_s("X", 0x01010100)), nullptr);
            EXPECT_EQ(ModeOf(kFile), row.mode) << "of a file that is there";
            umask(before);
        }
        std::filesystem::remove(kFile);
        EXPECT_NE(Mutex(SMMutexCreate("X")), nullptr);
        EXPECT_EQ(ModeOf(kFile), 0664u);
    }
}

TEST_F(NamedMutex, ExcludesProcessesUntilReleaseOrDeath)
{
    const Mutex mutex(SMMutexCreate("X"));
    for (const bool killed : {false, true}) {
        Signal held;
        Signal release;
        Process holder([&] {
            SMMutex *own = SMMutexOpen("X");
            const uint32_t status = SMMutexLock(own, SM_WAIT_FOREVER);
            held.Give();
            release.Await();
            return Code(status | SMMutexUnLock(own)); // leaves by _exit, with the handle
        });
        held.Await();
        for (const uint32_t timeoutMs : {0u, 1u, 3u, 0x80000000u, 0xFFFFFFFEu})
            EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_TIMEOUT) << timeoutMs;
        Process polling([] { return Code(SMMutexLock(SMMutexOpen("X"), kLong)); });
        if (killed)
            holder.Kill();
        else
            release.Give();
        EXPECT_EQ(polling.Wait(), 0);
        EXPECT_EQ(SMMutexLock(mutex.get(), SM_WAIT_FOREVER), SM_STATUS_OK);
        EXPECT_EQ(TryElsewhere(), static_cast<int>(SM_STATUS_TIMEOUT));
        EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
        EXPECT_EQ(TryElsewhere(), 0);
    }
}

TEST_F(NamedMutex, OneHandleExcludesThreadsAndTwoDoNot)
{
    const Mutex mutex(SMMutexCreate("X"));
    Mutex second(SMMutexOpen("X"));
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(SMMutexLock(mutex.get(), 2), SM_STATUS_TIMEOUT) << "by its holder";
    std::thread([&] {
        EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_TIMEOUT);
        EXPECT_EQ(SMMutexLock(second.get(), 0), SM_STATUS_OK);
        EXPECT_EQ(SMMutexUnLock(second.get()), SM_STATUS_OK);
    }).join();
    EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
    EXPECT_EQ(SMMutexLock(mutex.get(), kLong), SM_STATUS_OK);
    EXPECT_EQ(TryElsewhere(), static_cast<int>(SM_STATUS_TIMEOUT));
    second.reset(); // gives up the process's lock on the file
    EXPECT_EQ(TryElsewhere(), 0);
}

TEST_F(NamedMutex, ReadersOfTheFileShareIt)
{
    const Mutex mutex(SMMutexCreate_s("X", 0x02000000)); // opened for writing before the mode was set
    ASSERT_EQ(ModeOf(kFile), 0400u);
    Signal held;
    const auto hold = [&] {
        SMMutex *own = DropCapabilities() ? SMMutexCreate("X") : nullptr;
        const uint32_t status = SMMutexLock(own, 0);
        held.Give();
        return status == SM_STATUS_OK ? pause() : Code(status);
    };
    {
        const Process first(hold);
        held.Await();
        EXPECT_EQ(InOtherProcess([] { return DropCapabilities() ? Code(SMMutexLock(SMMutexOpen("X"), 0)) : 99; }), 0);
        EXPECT_EQ(SMMutexLock(mutex.get(), 1), SM_STATUS_TIMEOUT);
    }
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(InOtherProcess([] { return DropCapabilities() ? Code(SMMutexLock(SMMutexOpen("X"), 0)) : 99; }),
              static_cast<int>(SM_STATUS_TIMEOUT));
    EXPECT_EQ(chmod(kFile.c_str(), 0), 0);
    EXPECT_EQ(InOtherProcess([] { return DropCapabilities() && SMMutexCreate("X") == nullptr ? 0 : 1; }), 0);
}

TEST_F(NamedMutex, AClosedDescriptorIsOpenedAgain)
{
    const Mutex mutex(SMMutexCreate("X"));
    const int hole = open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(hole, 0);
    const int descriptor = DescriptorOfFile();
    ASSERT_LT(descriptor, hole);
    close(descriptor);
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_OK);
    EXPECT_EQ(TryElsewhere(), static_cast<int>(SM_STATUS_TIMEOUT));
    EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
    close(descriptor);
    std::filesystem::rename(kFile, kFile + "x");
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_FAILED);
    EXPECT_EQ(SMMutexLock(mutex.get(), 0), SM_STATUS_FAILED) << "the threads of this process are not kept out";
    EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
    EXPECT_FALSE(std::filesystem::exists(kFile));
    close(hole);
}

TEST_F(NamedMutex, RefusalsOfTheSystem)
{
    if (const std::string hindrance = TraceHindrance(); !hindrance.empty())
        GTEST_SKIP() << hindrance;
    const Mutex mutex(SMMutexCreate("X"));
    constexpr struct {
        int error;
        uint32_t timeoutMs;
        uint32_t status;
    } kCases[] = {
        {EINTR, 0, SM_STATUS_OK},
        {EINTR, SM_WAIT_FOREVER, SM_STATUS_OK},
        {EDEADLK, 0, SM_STATUS_OK},
        {EDEADLK, SM_WAIT_FOREVER, SM_STATUS_OK},
        {EAGAIN, 0, SM_STATUS_TIMEOUT},
        {EACCES, 0, SM_STATUS_TIMEOUT},
        {EAGAIN, kLong, SM_STATUS_OK},
        {EACCES, kLong, SM_STATUS_OK},
        {EAGAIN, 1u << 31, SM_STATUS_TIMEOUT},
        {EBADF, 0, SM_STATUS_OK},
        {ENOLCK, 0, SM_STATUS_FAILED},
        {ENOLCK, SM_WAIT_FOREVER, SM_STATUS_FAILED},
    };
    const auto isLock = [](long call) { return call == SYS_fcntl; };
    for (const auto &c : kCases) {
        const auto work = [&] {
            TraceBegin();
            const uint32_t status = SMMutexLock(mutex.get(), c.timeoutMs);
            TraceEnd();
            return Code(status);
        };
        EXPECT_EQ(Trace(work, {1, c.error, isLock}).exitCode, Code(c.status)) << c.error;
    }
    constexpr struct {
        int error;
        uint32_t after; // what another process gets then
    } kUnlocks[] = {{EINTR, SM_STATUS_OK}, {ENOLCK, SM_STATUS_TIMEOUT}};
    for (const auto &c : kUnlocks) {
        const auto work = [&] {
            TraceBegin();
            const uint32_t status = SMMutexLock(mutex.get(), 0) | SMMutexUnLock(mutex.get());
            TraceEnd();
            return status == SM_STATUS_OK ? TryElsewhere() : kFailedCode;
        };
        EXPECT_EQ(Trace(work, {2, c.error, isLock}).exitCode, Code(c.after)) << c.error;
    }
}

} // namespace
