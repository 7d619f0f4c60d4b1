#include <sys/syscall.h>

#include <cstring>
#include <iterator>

#include "ipc/sysv.h"

namespace {

bool failShmat;
bool failSemget; // for new sets

} // namespace

// In place of the C library's, for the shared object as well.
extern "C" void *shmat(int id, const void *address, int flags) noexcept
{
    return reinterpret_cast<void *>(syscall(SYS_shmat, failShmat ? -1 : id, address, flags));
}

extern "C" int semget(key_t key, int count, int flags) noexcept
{
    const bool fails = failSemget && (flags & IPC_CREAT) != 0;
    return static_cast<int>(syscall(SYS_semget, key, fails ? -1 : count, flags));
}

namespace {

using SharedMem = SysVTest;

char *TextOf(SMSharedMem *memory)
{
    return static_cast<char *>(SMSharedMemGetAddressPtr(memory));
}

// What it does to the caller's process is done in another one that ends with it.
bool CanOpen(const char *name)
{
    return Child([&] { return SMSharedMemOpen(name) != nullptr ? 1 : 0; }).Result() == 1;
}

TEST_F(SharedMem, HasAGuardAndGoesWithItsMaker)
{
    const struct {
        uint32_t mask, mode;
    } cases[] = {{SM_ACCESS_GROUP, 0664}, {SM_ACCESS_OWNER, 0600}, {0x06020100, 0647}};
    for (const auto &c : cases) {
        SMSharedMem *maker =
            c.mask == SM_ACCESS_GROUP ? SMSharedMemCreate("area", 5000) : SMSharedMemCreate_s("area", 5000, c.mask);
        ASSERT_NE(maker, nullptr);
        const SysVObject segment = Segments().at(0);
        const SysVObject guard = Sets().at(0);
        EXPECT_EQ(segment.mode & 0777, c.mode);
        EXPECT_EQ(segment.size, 5000u);
        EXPECT_EQ(guard.mode & 0777, 0600u);
        EXPECT_EQ(guard.size, 1u);
        EXPECT_EQ(guard.key, segment.key);
        EXPECT_EQ(UnitsOf(guard.id), 0);
        EXPECT_EQ(SMSharedMemCreate("area", 5000), nullptr);

        SMSharedMem *opener = SMSharedMemOpen("area");
        ASSERT_NE(opener, nullptr);
        std::strcpy(TextOf(maker), "text");
        EXPECT_STREQ(TextOf(opener), "text");
        SMSharedMemFree(opener);
        EXPECT_EQ(UnitsOf(guard.id), 0);
        EXPECT_TRUE(CanOpen("area"));
        SMSharedMemFree(maker);
        EXPECT_EQ(Segments().size() + Sets().size(), 0u);
        EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    }
}

TEST_F(SharedMem, OutlivesADeadMakerForTheNextOne)
{
    Child maker([] {
        SMSharedMem *memory = SMSharedMemCreate("area", 100);
        std::strcpy(TextOf(memory), "old");
        return 1;
    });
    ASSERT_EQ(maker.Result(), 1);
    EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr);
    EXPECT_TRUE(CanOpen("area"));
    const int guard = Sets().at(0).id;
    const int segment = Segments().at(0).id;
    maker.Kill();
    EXPECT_EQ(UnitsOf(guard), 1);
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    EXPECT_EQ(UnitsOf(guard), 1); // the look at it was no taking

    for (const char *text : {"old", "older"}) { // one process after the other takes it over
        Child joiner([&] {
            SMSharedMem *memory = SMSharedMemCreate("area", 999999);
            const bool same = memory != nullptr && std::strcmp(TextOf(memory), text) == 0;
            if (same)
                std::strcpy(TextOf(memory), "older");
            SMSharedMemFree(memory);
            return same ? 1 : 0;
        });
        EXPECT_EQ(joiner.Result(), 1);
        EXPECT_EQ(Segments().at(0).id, segment); // its free removes nothing, and keeps the guard
        EXPECT_EQ(UnitsOf(guard), 0);
        EXPECT_TRUE(CanOpen("area"));
        joiner.Kill();
        EXPECT_EQ(UnitsOf(guard), 1);
    }

    failShmat = true; // what cannot be attached is removed, but for the guard
    EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr);
    failShmat = false;
    EXPECT_TRUE(Segments().empty());
    EXPECT_EQ(UnitsOf(guard), 1);
    SMSharedMem *again = SMSharedMemCreate("area", 100); // made anew, under the guard that is left
    ASSERT_NE(again, nullptr);
    EXPECT_STREQ(TextOf(again), "");
    EXPECT_EQ(UnitsOf(guard), 0);
    SMSharedMemFree(again);
    EXPECT_EQ(Segments().size() + Sets().size(), 0u);
}

TEST_F(SharedMem, FailuresLeaveNothingBehind)
{
    for (const char *name : {static_cast<const char *>(nullptr), ""}) {
        EXPECT_EQ(SMSharedMemCreate(name, 100), nullptr);
        EXPECT_EQ(SMSharedMemOpen(name), nullptr);
    }
    EXPECT_EQ(SMSharedMemCreate("area", 0), nullptr);
    for (bool *fails : {&failShmat, &failSemget}) {
        *fails = true;
        EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr);
        *fails = false;
        EXPECT_EQ(Segments().size() + Sets().size(), 0u);
    }

    constexpr key_t kFirstKey = 300001; // what "area" has got
    ASSERT_NE(shmget(kFirstKey, 100, IPC_CREAT | 0600), -1);
    EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr); // somebody is about to finish it
    SMSharedMem *opener = SMSharedMemOpen("area");
    EXPECT_NE(opener, nullptr);
    failShmat = true;
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    failShmat = false;
    SMSharedMemFree(opener); // the last to have it: now it goes
    EXPECT_TRUE(Segments().empty());

    SMMutex *mutex = SMMutexCreate(nullptr);
    auto *stranger = reinterpret_cast<SMSharedMem *>(mutex);
    EXPECT_EQ(SMSharedMemGetAddressPtr(stranger), nullptr);
    EXPECT_EQ(SMSharedMemGetAddressPtr(nullptr), nullptr);
    SMSharedMemFree(stranger);
    SMSharedMemFree(nullptr);
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_OK);
    SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);
}

TEST_F(SharedMem, WithoutAKeyIsPrivate)
{
    const std::string registry = kIpcFolder + "/.lxvestIPCini";
    std::ofstream(registry) << "[Unique String Name Key Section]\nqzvesshm467BD16FAA14C83E8639EA1A82F547AD=0\n";
    const auto isListed = [&](int set) {
        std::ifstream file(registry);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        return text.find("[Semaphore List]\n" + std::to_string(set) + "=" + std::to_string(getpid()) + "\n") !=
               std::string::npos;
    };
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    SMSharedMem *first = SMSharedMemCreate("area", 100);
    ASSERT_NE(first, nullptr);
    ASSERT_EQ(Sets().size(), 1u);
    const int guard = Sets()[0].id;
    EXPECT_TRUE(isListed(guard));
    EXPECT_EQ(UnitsOf(guard), 0);

    std::filesystem::remove_all(kIpcFolder); // no registry at all
    SMSharedMem *second = SMSharedMemCreate("area", 100);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    std::strcpy(TextOf(first), "first");
    EXPECT_STREQ(TextOf(second), "");
    EXPECT_EQ(Sets().size(), 2u);
    SMSharedMemFree(first);
    SMSharedMemFree(second);
    EXPECT_EQ(Segments().size() + Sets().size(), 0u);
}

} // namespace
