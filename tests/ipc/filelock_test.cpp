// File locks between threads and between processes, and the records that they are held by.

#include "ipc/filelock.h"

#include <fcntl.h>

#include "frame/module.h"
#include "ipc/lock_fixture.h"
#include "ipc/names.h"
#include "support/faults.h"

namespace {

using namespace qzvest;

std::string LockFile(const std::string &protectedPath)
{
    char digest[kNameDigestSize];
    uint32_t size = sizeof digest;
    SMNameDigest(protectedPath.c_str(), digest, &size);
    return kIpcFolder + "/.qzvesflk" + digest;
}

// An open file description stands for another process. It stays open: a close would drop the locks of this process.
struct Other {
    explicit Other(const std::string &path) : descriptor(open(LockFile(path).c_str(), O_RDWR | O_CLOEXEC)) {}
    // Sets a lock, or tells the type of the one that is in the way: -1 if it is not one of the whole file.
    int Do(int command, int type) const
    {
        struct flock range = {};
        range.l_type = static_cast<short>(type);
        const bool done = fcntl(descriptor, command, &range) == 0;
        return done && (range.l_type == F_UNLCK || (range.l_start == 0 && range.l_len == 0)) ? range.l_type : -1;
    }
    int InTheWay() const
    {
        return Do(F_OFD_GETLK, F_WRLCK);
    }

    const int descriptor;
};

class FileLock : public NamedObjects {
protected:
    static uint32_t InThread(SMFileLock *lock, int32_t mode)
    {
        uint32_t status = 77;
        std::thread([&] {
            status = SMFileLockAcquire(lock, mode, 0);
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
    lock = SMFileLockOpen("/run/locked");
    SMFileLock *second = SMFileLockOpen("/run//locked");
    EXPECT_NE(lock, second);
    SMFileLockClose(lock);                  // stays
    for (int times = 0; times < 2; ++times) // the second time it was the last
        EXPECT_EQ(SMFileLockOpen("/run/locked"), lock);
    EXPECT_EQ(SMFileLockOpen("/run//locked"), second);
}

TEST_F(FileLock, FollowsTheRightsOnTheFile)
{
    umask(0);
    lock = SMFileLockOpen(path.c_str());
    EXPECT_EQ(Mode(LockFile(path)), 0644u) << "of no file yet";
    unlink(LockFile(path).c_str());
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 0), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile(path)), 0600u) << "the owner's until the file is known";
    EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile(path)), 0644u);

    std::ofstream("/run/other") << "content\n";
    chmod("/run/other", 04751);
    lock = SMFileLockOpen("/run/other");
    EXPECT_EQ(Mode(LockFile("/run/other")), 0640u);
    chmod("/run/other", 0660);
    EXPECT_EQ(InThread(lock, kFileLockReader), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile("/run/other")), 0640u) << "a reader has changed nothing";
    EXPECT_EQ(InThread(lock, kFileLockWriter), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile("/run/other")), 0660u);
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
            EXPECT_EQ(InThread(lock, wanted), SM_STATUS_TIMEOUT);
            EXPECT_EQ(SMFileLockAcquire(lock, wanted, -1), SM_STATUS_TIMEOUT) << "by its holder; only 1 waits";
            EXPECT_EQ(other.InTheWay(), type);
            EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
            EXPECT_EQ(other.InTheWay(), F_UNLCK);

            ASSERT_EQ(other.Do(F_OFD_SETLK, type), type);
            const bool both = held == kFileLockReader && wanted == kFileLockReader;
            EXPECT_EQ(InThread(lock, wanted), both ? SM_STATUS_OK : SM_STATUS_TIMEOUT);
            ASSERT_EQ(other.Do(F_OFD_SETLK, F_UNLCK), F_UNLCK);
            EXPECT_EQ(InThread(lock, wanted), SM_STATUS_OK); // over the descriptor of the attempt that failed
        }
    }
}

TEST_F(FileLock, RefusesOtherModesAndRecords)
{
    lock = SMFileLockOpen(path.c_str());
    for (const int32_t mode : {0, 3})
        EXPECT_EQ(SMFileLockAcquire(lock, mode, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(InThread(lock, kFileLockWriter), SM_STATUS_OK);
    const HeapPtr<IPCNameRecord> mutex(SMIPCNameRecordAlloc(nullptr, 256, kKindMutex));
    auto *const record = reinterpret_cast<SMFileLock *>(mutex.get());
    EXPECT_EQ(SMFileLockAcquire(record, kFileLockReader, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLockRelease(record), SM_STATUS_INVALID_PARAMETER);
}

TEST_F(FileLock, NeedsTheRightsAndTheDirectory)
{
    lock = SMFileLockOpen(path.c_str());
    chmod(LockFile(path).c_str(), 0400);
    std::jthread([this] { // without privileges, which are a thread's own
        ASSERT_TRUE(DropCapabilities());
        EXPECT_EQ(SMFileLockAcquire(lock, kFileLockWriter, 0), SM_STATUS_ACCESS_DENIED);
        EXPECT_EQ(SMFileLockAcquire(lock, kFileLockReader, 0), SM_STATUS_OK); // the record's mutex was given back
        EXPECT_EQ(SMFileLockRelease(lock), SM_STATUS_OK);
    })
        .join();
    EXPECT_EQ(Mode(LockFile(path)), 0400u);

    std::filesystem::rename(kIpcFolder, kIpcFolder + "?");
    lock = SMFileLockOpen("/run/later");
    EXPECT_EQ(SMFileLockAcquire(lock, kFileLockReader, 1), SM_STATUS_FAILED);
    std::filesystem::rename(kIpcFolder + "?", kIpcFolder);
    EXPECT_EQ(InThread(lock, kFileLockWriter), SM_STATUS_OK);
    EXPECT_EQ(Mode(LockFile("/run/later")), 0644u);
}

TEST_F(FileLock, EndsWithTheModule)
{
    SMModuleStop();
    const long before = LiveBlocks();
    for (int round = 0; round < 2; ++round) {
        SMModuleStart();
        for (const char *name : {"/run/a", "/run/b"})
            EXPECT_EQ(InThread(SMFileLockOpen(name), kFileLockWriter), SM_STATUS_OK);
#ifndef __SANITIZE_THREAD__ // which minds that a held mutex is destroyed
        EXPECT_EQ(SMFileLockAcquire(SMFileLockOpen("/run/b"), kFileLockReader, 0), SM_STATUS_OK);
        SMModuleStop();
        EXPECT_EQ(Other("/run/b").InTheWay(), F_RDLCK); // to the end of the process
#endif
        SMModuleStop();
        EXPECT_EQ(LiveBlocks(), before);
    }
    EXPECT_TRUE(Exists(LockFile("/run/a"))); // stays for ever
    SMModuleStart();
}

} // namespace
