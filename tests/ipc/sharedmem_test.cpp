#include <qzvest/qzvest.h>

#include <cstring>

#include "ipc/lock_fixture.h"

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

using SharedMem = NamedObjects;
using Memory = std::unique_ptr<SMSharedMem, Ends<SMSharedMemFree>>;

char *TextOf(SMSharedMem *memory)
{
    return static_cast<char *>(SMSharedMemGetAddressPtr(memory));
}

// What it does to the caller's process is done in another one that ends with it.
bool CanOpen()
{
    return Process([] { return SMSharedMemOpen("area") != nullptr ? 1 : 0; }).Wait() == 1;
}

TEST_F(SharedMem, HasAGuardAndGoesWithItsMaker)
{
    for (const bool plain : {true, false}) {
        Memory maker(plain ? SMSharedMemCreate("area", 5000) : SMSharedMemCreate_s("area", 5000, 0x06020100));
        ASSERT_NE(maker, nullptr);
        shmid_ds segment = {};
        EXPECT_EQ(shmctl(shmget(kFirstKey, 0, 0), IPC_STAT, &segment), 0);
        const int guard = SetOf(kFirstKey);
        EXPECT_EQ(segment.shm_perm.mode & 0777, plain ? 0664 : 0647);
        EXPECT_EQ(segment.shm_segsz, 5000u);
        EXPECT_EQ(ModeOfSet(guard), 0600u);
        EXPECT_EQ(StatusOf(guard).sem_nsems, 1u);
        EXPECT_EQ(UnitsOf(guard), 0);
        EXPECT_EQ(SMSharedMemCreate("area", 5000), nullptr);

        Memory opener(SMSharedMemOpen("area"));
        ASSERT_NE(opener, nullptr);
        std::strcpy(TextOf(maker.get()), "text");
        EXPECT_STREQ(TextOf(opener.get()), "text");
        opener.reset();
        EXPECT_EQ(UnitsOf(guard), 0);
        EXPECT_TRUE(CanOpen());
        maker.reset();
        EXPECT_EQ(SegmentsInUse() + SetsInUse(), 0);
        EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    }
}

TEST_F(SharedMem, OutlivesADeadMakerForTheNextOne)
{
    int segment = -1;
    for (const char *text : {"", "old", "older"}) { // one process after the other takes it over
        const Step found;
        Process maker([&] {
            const bool joins = *text != '\0';
            SMSharedMem *memory = SMSharedMemCreate("area", joins ? 999999 : 100);
            const bool same = memory != nullptr && std::strcmp(TextOf(memory), text) == 0;
            if (same)
                std::strcpy(TextOf(memory), joins ? "older" : "old");
            if (joins)
                SMSharedMemFree(memory); // removes nothing, and keeps the guard
            *found = same ? 1 : 2;
            return pause();
        });
        Await(found, 1);
        EXPECT_EQ(*found, 1) << text;
        EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr);
        EXPECT_TRUE(CanOpen());
        EXPECT_EQ(UnitsOf(SetOf(kFirstKey)), 0);
        EXPECT_TRUE(segment == -1 || segment == shmget(kFirstKey, 0, 0));
        segment = shmget(kFirstKey, 0, 0);
        maker.Kill();
        EXPECT_EQ(UnitsOf(SetOf(kFirstKey)), 1);
        EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
        EXPECT_EQ(UnitsOf(SetOf(kFirstKey)), 1); // the look at it was no taking
    }

    failShmat = true; // what cannot be attached is removed, but for the guard
    EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr);
    failShmat = false;
    EXPECT_EQ(SegmentsInUse() + SetsInUse(), 1);
    Memory again(SMSharedMemCreate("area", 100)); // made anew, under the guard that is left
    ASSERT_NE(again, nullptr);
    EXPECT_STREQ(TextOf(again.get()), "");
    again.reset();
    EXPECT_EQ(SegmentsInUse() + SetsInUse(), 0);
}

TEST_F(SharedMem, FailuresLeaveNothingBehind)
{
    EXPECT_EQ(SMSharedMemCreate(nullptr, 100), nullptr);
    EXPECT_EQ(SMSharedMemOpen(""), nullptr);
    EXPECT_EQ(SMSharedMemCreate("area", 0), nullptr);
    for (bool *fails : {&failShmat, &failSemget}) {
        *fails = true;
        EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr);
        *fails = false;
        EXPECT_EQ(SegmentsInUse() + SetsInUse(), 0);
    }
    ASSERT_NE(shmget(kFirstKey, 100, IPC_CREAT | 0600), -1);
    EXPECT_EQ(SMSharedMemCreate("area", 100), nullptr); // somebody is about to finish it
    Memory opener(SMSharedMemOpen("area"));
    EXPECT_NE(opener, nullptr);
    failShmat = true;
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    failShmat = false;
    opener.reset(); // the last to have it: now it goes
    EXPECT_EQ(SegmentsInUse() + SetsInUse(), 0);
}

TEST_F(SharedMem, WithoutAKeyIsPrivate)
{
    std::ofstream(kRegistry) << "[Unique String Name Key Section]\nqzvesshm467BD16FAA14C83E8639EA1A82F547AD=0\n";
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    Memory first(SMSharedMemCreate("area", 100));
    std::filesystem::remove_all(kIpcFolder); // no registry at all
    Memory second(SMSharedMemCreate("area", 100));
    EXPECT_EQ(SMSharedMemOpen("area"), nullptr);
    ASSERT_TRUE(first != nullptr && second != nullptr);
    std::strcpy(TextOf(first.get()), "first");
    EXPECT_STREQ(TextOf(second.get()), "");
    EXPECT_EQ(SegmentsInUse() + SetsInUse(), 4);
    first.reset();
    second.reset();
    EXPECT_EQ(SegmentsInUse() + SetsInUse(), 0);
}

} // namespace
