// File locks between threads and between processes, and the records that they are held by.

#include "ipc/filelock.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "frame/module.h"
#include "ipc/names.h"
#include "support/faults.h"

namespace {

using namespace qzvest;

const std::string kDirectory = "/var/run/qz/.ipc";

std::string LockFile(const std::string &protectedPath)
{
    char digest[kNameDigestSize];
    uint32_t size = sizeof digest;
    SMNameDigest(protectedPath.c_str(), digest, &size);
    return kDirectory + "/.qzvesflk" + digest;
}

// An open file description stands for another process. It stays open: a close would drop the locks of this process.
class Other {
public:
    explicit Other(const std::string &path) : descriptor_(open(LockFile(path).c_str(), O_RDWR | O_CLOEXEC)) {}
    int Hold(int type) const
    {
        struct flock whole = {};
        whole.l_type = static_cast<short>(type);
        return fcntl(descriptor_, F_OFD_SETLK, &whole);
    }
    // The type of the lock that is in the way of a writer at this place; -1 if it is not one of the whole file.
    int InTheWay(off_t place) const
    {
        struct flock range = {};
        range.l_type = F_WRLCK;
        range.l_start = place;
        range.l_len = 1;
        const bool told = fcntl(descriptor_, F_OFD_GETLK, &range) == 0;
        return told && (range.l_type == F_UNLCK || (range.l_start == 0 && range.l_len == 0)) ? range.l_type : -1;
    }

private:
    int descriptor_;
};

class FileLock : public testing::Test {
protected:
    FileLock()
    {
        std::filesystem::create_directories(kDirectory);
    }

    static mode_t Mode(const std::string &file)
    {
        struct stat status = {};
        return stat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }
    static uint32_t InThread(SMFileLock *lock, int32_t mode, int32_t wait)
    {
        uint32_t status = 77;
        std::thread([&] {
            status = SMFileLockAcquire(lock, mode, wait);
            if (status == SM_STATUS_OK)
                status = SMFileLockRelease(lock);
        }).join();
        return status;
    }

    const std::string path = "/run/locked";
    SMFileLock *lock = nullptr;
};

TEST_F(FileLock, HasOneRecordForEachSpelling)
{
    EXPECT_EQ(SMFileLockOpen(nullptr), nullptr);
    lock = SMFileLockOpen("/run/locked");
    SMFileLock *second = SMFileLockOpen("/run//locked");
    EXPECT_NE(lock, second);
    for (int round = 0; round < 2; ++round) {
        SMFileLockClose(lock); // stays
        EXPECT_EQ(SMFileLockOpen("/run/locked"), lock);
        EXPECT_EQ(SMFileLockOpen("/run/locked"), lock); // this time it was the last
        EXPECT_EQ(SMFileLockOpen("/run//locked"), second);
    }
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 0), SM_STATUS_OK);
    EXPECT_EQ(SMFileLockAcquire(second, kFileLockWriter, 0), SM_STATUS_OK);
    EXPECT_EQ(SMFileLockRelease(second), SM_STATUS_OK);
    EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
}

TEST_F(FileLock, FollowsTheRightsOnTheFile)
{
    std::ofstream(path) << "content\n";
    chmod(path.c_str(), 04751);
    lock = SMFileLockOpen(path.c_str());
    EXPECT_EQ(Mode(LockFile(path)), 0640u);
    chmod(path.c_str(), 0660);
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockReader, 0), SM_STATUS_OK);
    EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile(path)), 0640u) << "a reader has changed nothing";
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 0), SM_STATUS_OK);
    chmod(path.c_str(), 0600);
    EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile(path)), 0600u);
}

TEST_F(FileLock, IsTheOwnersUntilTheFileIsKnown)
{
    umask(0);
    lock = SMFileLockOpen(path.c_str());
    EXPECT_EQ(Mode(LockFile(path)), 0644u);
    unlink(LockFile(path).c_str());
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 0), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile(path)), 0600u);
    EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile(path)), 0644u);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(FileLock, ExcludesByProcessAndByThread)
{
    lock = SMFileLockOpen(path.c_str());
    const Other other(path);
    for (const int32_t held : {kFileLockReader, kFileLockWriter}) {
        const int type = held == kFileLockReader ? F_RDLCK : F_WRLCK;
        for (const int32_t wanted : {kFileLockReader, kFileLockWriter}) {
            SCOPED_TRACE(std::to_string(held) + " held, wanted " + std::to_string(wanted));
            ASSERT_EQ(SMFileLockAcquire(lock, held, 0), SM_STATUS_OK);
            EXPECT_EQ(InThread(lock, wanted, 0), SM_STATUS_TIMEOUT);
            EXPECT_EQ(InThread(lock, wanted, -1), SM_STATUS_TIMEOUT) << "only 1 waits";
            EXPECT_EQ(SMFileLockAcquire(lock, wanted, 0), SM_STATUS_TIMEOUT) << "by its holder";
            EXPECT_EQ(other.InTheWay(0), type);
            EXPECT_EQ(other.InTheWay(INT32_MAX), type);
            EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
            EXPECT_EQ(other.InTheWay(0), F_UNLCK);

            ASSERT_EQ(other.Hold(type), 0);
            const bool both = held == kFileLockReader && wanted == kFileLockReader;
            EXPECT_EQ(InThread(lock, wanted, 0), both ? SM_STATUS_OK : SM_STATUS_TIMEOUT);
            ASSERT_EQ(other.Hold(F_UNLCK), 0);
            EXPECT_EQ(InThread(lock, wanted, 0), SM_STATUS_OK); // over the descriptor of the attempt that failed
        }
    }
}

TEST_F(FileLock, WaitsForAnotherProcess)
{
    for (const int32_t mode : {kFileLockReader, kFileLockWriter}) {
        int held[2];
        ASSERT_EQ(pipe(held), 0);
        const pid_t child = fork(); // before the lock is held here: its record is its own
        if (child == 0) {
            char byte;
            const bool go = read(held[0], &byte, 1) == 1;
            _exit(go ? static_cast<int>(SMFileLockAcquire(SMFileLockOpen(path.c_str()), mode, 1)) : 77);
        }
        lock = SMFileLockOpen(path.c_str());
        ASSERT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 1), SM_STATUS_OK);
        EXPECT_EQ(write(held[1], "", 1), 1);
        int status = -1;
        for (bool isInLine = false; !isInLine && waitpid(child, &status, WNOHANG) == 0;) {
            std::ifstream file("/proc/locks");
            const std::string locks{std::istreambuf_iterator<char>(file), {}};
            const size_t waiter = locks.find("-> POSIX");
            isInLine = locks.empty() || // the kernel does not tell
                       (waiter != std::string::npos &&
                        locks.find(' ' + std::to_string(child) + ' ', waiter) != std::string::npos);
        }
        EXPECT_EQ(status, -1) << "has not waited";
        EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        close(held[0]);
        close(held[1]);
    }
}

TEST_F(FileLock, WaitsForAnotherThread)
{
    lock = SMFileLockOpen(path.c_str());
    constexpr int kRounds = 300;
    int count = 0; // two increments at once lose one, and are a data race
    const auto work = [&](int32_t mode) {
        for (int round = 0; round < kRounds; ++round) {
            if (SMFileLockAcquire(lock, mode, 1) != SM_STATUS_OK)
                return;
            ++count;
            (void)SMFileLockRelease(lock);
        }
    };
    std::thread reader(work, kFileLockReader), writer(work, kFileLockWriter);
    reader.join();
    writer.join();
    EXPECT_EQ(count, 2 * kRounds);
}

TEST_F(FileLock, RefusesOtherModesAndRecords)
{
    lock = SMFileLockOpen(path.c_str());
    for (const int32_t mode : {0, 3, -1}) {
        EXPECT_EQ(SMFileLockAcquire(lock, mode, 0), SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(InThread(lock, kFileLockWriter, 0), SM_STATUS_OK) << mode;
    }
    const HeapPtr<IPCNameRecord> mutex(SMIPCNameRecordAlloc(nullptr, 256, kKindMutex));
    for (SMFileLock *record : {static_cast<SMFileLock *>(nullptr), reinterpret_cast<SMFileLock *>(mutex.get())}) {
        EXPECT_EQ(SMFileLockAcquire(record, kFileLockReader, 0), SM_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(SMFileLockRelease(record), SM_STATUS_INVALID_PARAMETER);
        SMFileLockClose(record);
    }
}

TEST_F(FileLock, NeedsTheRightsAndTheDirectory)
{
    lock = SMFileLockOpen(path.c_str());
    chmod(LockFile(path).c_str(), 0400);
    std::thread([this] { // without privileges, which are a thread's own
        __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
        const __user_cap_data_struct none[2] = {};
        ASSERT_EQ(syscall(SYS_capset, &header, none), 0);
        EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 0), SM_STATUS_ACCESS_DENIED);
        EXPECT_EQ(SMFileLockAcquire(lock, kFileLockReader, 0), SM_STATUS_OK); // the record's mutex was given back
        EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
    })
        .join();
    EXPECT_EQ(Mode(LockFile(path)), 0400u);

    std::filesystem::rename(kDirectory, kDirectory + "?");
    lock = SMFileLockOpen("/run/later");
    ASSERT_NE(lock, nullptr);
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockReader, 1), SM_STATUS_FAILED);
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 1), SM_STATUS_FAILED);
    std::filesystem::rename(kDirectory + "?", kDirectory);
    EXPECT_EQ(InThread(lock, kFileLockWriter, 0), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile("/run/later")), 0644u);
}

TEST_F(FileLock, EndsWithTheModule)
{
    SMModuleStop();
    const long before = LiveBlocks();
    for (int round = 0; round < 2; ++round) {
        SMModuleStart();
        for (const char *name : {"/run/a", "/run/b"})
            EXPECT_EQ(InThread(SMFileLockOpen(name), kFileLockWriter, 0), SM_STATUS_OK);
#ifndef __SANITIZE_THREAD__ // which minds that a held mutex is destroyed
        EXPECT_EQ(SMFileLockAcquire(SMFileLockOpen("/run/b"), kFileLockReader, 0), SM_STATUS_OK);
#endif
        SMModuleStop();
        EXPECT_EQ(LiveBlocks(), before);
        EXPECT_EQ(Other("/run/b").InTheWay(0), F_UNLCK);
    }
    EXPECT_TRUE(std::filesystem::exists(LockFile("/run/a"))); // stays for ever
    SMModuleStart();
}

} // namespace
