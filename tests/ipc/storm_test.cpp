// Many processes at once on named objects: they all ask the registry for keys, and they work on while some are killed.

#include <fcntl.h>
#include <qzvest/qzvest.h>

#include <algorithm>
#include <list>
#include <map>
#include <random>
#include <vector>

#include "ipc/lock_fixture.h"
#include "support/soak.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSlow = true;
#else
constexpr bool kSlow = false;
#endif

const int kSoak = FromEnvironment("QZVEST_SOAK", 1);

// What is changed by plain loads and stores under a lock is atomic only to keep its order in front of a kill.
using Number = std::atomic<int>;

class Storm : public NamedObjects {
protected:
    void SetUp() override
    {
        NamedObjects::SetUp();
        // The set number 0 is no set to those that meet on it: what happens then is not the matter here.
        SMSemaphoreDestroy(SMSemaphoreCreate("first", 0));
        std::filesystem::remove(kRegistry);
        alarm(180 * static_cast<unsigned>(kSoak));
    }
};

// ---- All names at once ----

constexpr int kNamers = 8;
constexpr int kNames = kSlow ? 48 : 200; // of each process; half of them are common to all

// Semaphores and events with manual reset by turns.
struct Object {
    Object(int namer, int number)
    {
        const std::string name = (number % 2 == 0 ? "all" : std::to_string(namer)) + " " + std::to_string(number);
        if (number % 4 < 2)
            semaphore = SMSemaphoreCreate(name.c_str(), 0);
        else
            event = SMEventCreate(name.c_str(), 1, 0);
    }

    SMSemaphore *semaphore = nullptr;
    SMEvent *event = nullptr;
};

using Lines = std::map<std::string, std::string>;

Lines SectionOf(const std::string &section)
{
    std::ifstream file(kRegistry);
    Lines lines;
    std::string line;
    while (std::getline(file, line) && line != "[" + section + "]") {
    }
    for (size_t equals; std::getline(file, line) && (equals = line.find('=')) != std::string::npos;)
        EXPECT_TRUE(lines.emplace(line.substr(0, equals), line.substr(equals + 1)).second) << line;
    return lines;
}

// Makes all its names when all are there, and adds one to each when all have made theirs.
int Namer(int self, Number &there)
{
    const auto meet = [&there](int count) {
        for (++there; there < count;)
            sched_yield();
    };
    std::vector<Object> objects;
    meet(kNamers);
    for (int number = 0; number < kNames; ++number)
        objects.emplace_back(self, number);
    meet(2 * kNamers);
    uint32_t failures = 0;
    for (const auto &[semaphore, event] : objects)
        failures |= event != nullptr ? SMEventSet(event) : SMSemaphoreRelease(semaphore, 1, nullptr);
    return Code(failures);
}

TEST_F(Storm, EveryNameGetsOneKeyAndOneSet)
{
    const Shared<Number> there;
    std::list<Process> namers;
    for (int self = 0; self < kNamers; ++self)
        namers.emplace_back([&] { return Namer(self, *there); });
    for (Process &namer : namers)
        EXPECT_EQ(namer.Wait(), 0);

    constexpr int kCommonNames = kNames / 2;
    constexpr int kDifferent = kCommonNames + kNamers * (kNames - kCommonNames);
    const Lines keys = SectionOf("Unique String Name Key Section");
    ASSERT_EQ(keys.size(), size_t{kDifferent});
    EXPECT_EQ(SetsInUse(), kDifferent);
    Lines mirror;
    std::map<int, int> setsByCount;
    for (const auto &[name, key] : keys) {
        mirror.emplace(key, name);
        ++setsByCount[UnitsOf(SetOf(std::stoi(key)))];
    }
    EXPECT_EQ(setsByCount, (std::map<int, int>{{1, kDifferent - kCommonNames}, {kNamers, kCommonNames}}));
    EXPECT_EQ(SectionOf("Unique Numeric Value Key Section"), mirror);
    EXPECT_EQ(mirror.size(), keys.size()); // each number once, and none left out
    EXPECT_EQ(mirror.rbegin()->first, std::to_string(kFirstKey + kDifferent - 1));

    for (int self = 0; self < kNamers; ++self)
        for (int number = 0; number < kNames; ++number) {
            const auto [semaphore, event] = Object(self, number);
            SMEventDestroy(event);
            SMSemaphoreDestroy(semaphore);
        }
    EXPECT_EQ(SetsInUse(), 0);
    std::printf("COUNT storm on names: %d processes, %d names\n", kNamers, kNamers * kNames);
}

// ---- Work while processes are killed ----

constexpr int kWorkers = 6;
constexpr int kThreads = 3;
constexpr int kMostKills = 200;
const int kKills = std::min((kSlow ? 8 : 50) * kSoak, kMostKills);
const int kOperations = (kSlow ? 4000 : 60000) * kSoak; // a multiple of the kills, so that there are no more
constexpr int kSlots = kWorkers + kMostKills;
constexpr unsigned char kTimeToKill = 255; // in place of a slot
constexpr uint32_t kMemorySize = 4096;
constexpr const char *kSettings = "/run/storm.ini";

struct Slot { // of one process in its life
    Number killed, holdsMemory, begun, ended, writeBegun, writeEnded;
};

struct Board {
    Number operations, faultLine;
    Number total, holder; // under the named mutex; the holder's slot + 1
    Number postsBegun, postsEnded, waitsBegun, waitsEnded;
    Slot slots[kSlots];
};

std::string Own(int slot)
{
    return "own " + std::to_string(slot);
}

// A load and a store, with room for others in between: only under a lock it counts right.
void AddUnderLock(Number &number)
{
    const int old = number;
    sched_yield();
    number = old + 1;
}

// One process, whose threads share its handles.
struct Worker {
    using Random = std::minstd_rand;

    static void Require(bool holds, int line = __builtin_LINE())
    {
        int none = 0;
        if (!holds)
            board->faultLine.compare_exchange_strong(none, line);
    }
    // Whether it is SM_STATUS_OK; the only other one to be had is SM_STATUS_TIMEOUT.
    static bool Got(uint32_t status, int line = __builtin_LINE())
    {
        Require(status == SM_STATUS_OK || status == SM_STATUS_TIMEOUT, line);
        return status == SM_STATUS_OK;
    }
    static void Done(uint32_t status, int line = __builtin_LINE())
    {
        Require(status == SM_STATUS_OK, line);
    }

    int Run()
    {
        Random random(1);
        LocalMutexAndMemory(random); // so that most hold theirs at their death
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i)
            threads.emplace_back([this, i] { Work(Random(static_cast<unsigned>(self * kThreads + i + 1))); });
        for (std::thread &thread : threads)
            thread.join();
        Require(localTotal == localCalls && criticalTotal == criticalCalls);
        slot.holdsMemory = 0;
        SMSharedMemFree(ownMemory);
        for (SMMutex *each : {mutex, door, local, settings})
            SMMutexDestroy(each);
        SMSemaphoreDestroy(localSemaphore);
        SMEventDestroy(events[2]);
        SMRWLDestroy(localLock); // what is common has to stay for the others
        const auto done = static_cast<unsigned char>(self);
        return write(messages, &done, 1) == 1 ? 0 : 1;
    }
    void Work(Random random)
    {
        static constexpr void (Worker::*kKinds[])(Random &) = {
            &Worker::NamedMutex, &Worker::Semaphores,    &Worker::Events,          &Worker::Fleeting,
            &Worker::Settings,   &Worker::ReadWriteLock, &Worker::ContestedMemory, &Worker::LocalMutexAndMemory,
            &Worker::Critical,
        };
        for (int number; (number = ++board->operations) <= kOperations;) {
            if (number % (kOperations / kKills) == 0)
                Require(write(messages, &kTimeToKill, 1) == 1);
            (this->*kKinds[random() % std::size(kKinds)])(random);
        }
    }

    void NamedMutex(Random &random)
    {
        if (!Got(SMMutexLock(mutex, random() % 2 != 0 ? SM_WAIT_FOREVER : 5)))
            return;
        const int holder = board->holder; // who died inside
        Require(holder == 0 || (holder != self + 1 && board->slots[holder - 1].killed == 1));
        board->holder = self + 1;
        AddUnderLock(slot.begun);
        AddUnderLock(board->total);
        AddUnderLock(slot.ended);
        board->holder = 0;
        Done(SMMutexUnLock(mutex));
    }

    // Who waits has posted before, so that nobody waits in vain, whoever dies.
    void Semaphores(Random &)
    {
        Done(SMSemaphoreRelease(localSemaphore, 1, nullptr));
        Done(SMSemaphoreAcquireWait(localSemaphore, SM_WAIT_FOREVER));
        ++board->postsBegun;
        Done(SMSemaphoreRelease(semaphore, 1, nullptr));
        ++board->postsEnded;
        ++board->waitsBegun;
        Done(SMSemaphoreAcquireWait(semaphore, SM_WAIT_FOREVER));
        ++board->waitsEnded;
    }

    void Events(Random &random)
    {
        SMEvent *event = events[random() % 3];
        const auto choice = random() % 3;
        (void)Got(choice == 0 ? SMEventWait(event, 1) : choice == 1 ? SMEventSet(event) : SMEventReset(event));
    }

    // What others may destroy at any moment.
    void Fleeting(Random &)
    {
        SMSemaphore *shortSemaphore = SMSemaphoreCreate("fleeting", 1);
        (void)SMSemaphoreAcquireWait(shortSemaphore, 1);
        SMSemaphoreDestroy(shortSemaphore);
    }

    // One at a time: of two that find a stale segment the second would wait for the first one's end.
    void ContestedMemory(Random &random)
    {
        Done(SMMutexLock(door, SM_WAIT_FOREVER));
        SMSharedMem *memory =
            random() % 2 != 0 ? SMSharedMemCreate("contested", kMemorySize) : SMSharedMemOpen("contested");
        if (memory != nullptr)
            ++*static_cast<Number *>(SMSharedMemGetAddressPtr(memory));
        SMSharedMemFree(memory);
        Done(SMMutexUnLock(door));
    }
    // The race detector does not know that a segment comes where another one was before.
    __attribute__((no_sanitize_thread)) void LocalMutexAndMemory(Random &random)
    {
        if (!Got(SMMutexLock(local, random() % 2 != 0 ? SM_WAIT_FOREVER : 1)))
            return;
        ++localCalls;
        AddUnderLock(localTotal);
        slot.holdsMemory = 0;
        SMSharedMemFree(ownMemory);
        ownMemory = SMSharedMemCreate(Own(self).c_str(), kMemorySize);
        auto *content = static_cast<int *>(SMSharedMemGetAddressPtr(ownMemory));
        Require(content != nullptr && *content == 0);
        *content = self + 1;
        slot.holdsMemory = 1;
        Done(SMMutexUnLock(local));
    }

    // The counters of a named lock are its process's own, and it is that process's threads that it excludes. A wake-up
    // may go to another process: nobody waits without limit there.
    void ReadWriteLock(Random &random)
    {
        constexpr int kWriter = 100;
        const bool named = random() % 2 != 0, writes = random() % 2 != 0;
        SMRWL *const which = named ? lock : localLock;
        const uint32_t wait = named ? 1 : SM_WAIT_FOREVER;
        if (!Got((writes ? SMRWLWriteLockGet : SMRWLReadLockGet)(which, wait)))
            return;
        Number &users = inside[named ? 1 : 0];
        const int before = users.fetch_add(writes ? kWriter : 1);
        sched_yield();
        Require(writes ? before == 0 : before < kWriter);
        users -= writes ? kWriter : 1;
        (writes ? SMRWLWriteLockRelease : SMRWLReadLockRelease)(which);
    }

    // Each process has its key in the common file.
    void Settings(Random &)
    {
        Done(SMMutexLock(settings, SM_WAIT_FOREVER));
        const int value = ++slot.writeBegun;
        const std::string key = Own(self);
        Done(SMWriteINIPathFileValue("s", key.c_str(), INI_TYPE_INT32, &value, sizeof value, kSettings, 1));
        ++slot.writeEnded;
        int found = -1;
        uint32_t size = sizeof found;
        Done(SMReadINIPathFileValue("s", key.c_str(), INI_TYPE_INT32, &found, &size, nullptr, 0, kSettings, 1));
        Require(found == value);
        Done(SMMutexUnLock(settings));
    }

    void Critical(Random &)
    {
        ++criticalCalls;
        const auto count = [](uint64_t argument) -> uint64_t {
            AddUnderLock(reinterpret_cast<Worker *>(argument)->criticalTotal);
            return 0;
        };
        SMCriticalSectionExecute(count, reinterpret_cast<uint64_t>(this), SM_WAIT_FOREVER);
    }

    int self;
    int messages;
    static inline Board *board;
    Slot &slot = board->slots[self];
    SMMutex *mutex = SMMutexCreate("storm"), *door = SMMutexCreate("door");
    SMMutex *local = SMMutexCreate(nullptr), *settings = SMMutexCreate(nullptr);
    SMSemaphore *semaphore = SMSemaphoreCreate("storm", 0), *localSemaphore = SMSemaphoreCreate(nullptr, 0);
    SMEvent *events[3] = {SMEventCreate("manual", 1, 0), SMEventCreate("automatic", 0, 0),
                          SMEventCreate(nullptr, 0, 0)};
    SMRWL *lock = SMRWLCreate("storm"), *localLock = SMRWLCreate(nullptr);
    SMSharedMem *ownMemory = nullptr;
    Number localTotal{0}, localCalls{0}, criticalTotal{0}, criticalCalls{0};
    Number inside[2] = {};
};

class Soak : public Storm {
protected:
    void Start()
    {
        const int slot = started++;
        living.try_emplace(slot, [&] {
            Worker::board = static_cast<Board *>(SMSharedMemGetAddressPtr(SMSharedMemOpen("storm")));
            return Worker{slot, messages[1]}.Run();
        });
    }

    // Ends with the last of the processes; the kills come when the work of all has reached their number.
    void RunAll()
    {
        std::minstd_rand random(1);
        while (started < kWorkers)
            Start();
        for (unsigned char slot; !living.empty() && read(messages[0], &slot, 1) == 1;) {
            const bool kills = slot == kTimeToKill;
            const auto one =
                kills ? std::next(living.begin(), static_cast<int>(random() % living.size())) : living.find(slot);
            if (one == living.end())
                continue;
            Number &mark = board->slots[one->first].killed;
            mark = kills ? 1 : 0;
            if (kills)
                kill(one->second.id, SIGKILL);
            const int code = one->second.Wait();
            living.erase(one);
            mark = kills && code == -1 ? 1 : 0;
            EXPECT_TRUE(code == 0 || mark == 1) << code; // 0 maybe just in front of its kill
            killed += mark;
            if (mark == 1)
                Start();
        }
    }

    // What was made anew goes with its handle. What was joined stays with its guard, and what died half made stays
    // as it was: without a guard, or with one that nobody gives back.
    void CheckMemory(const std::string &name, bool isStale, const int *expected)
    {
        EXPECT_TRUE(!isStale || SMSharedMemOpen(name.c_str()) == nullptr) << name;
        SMSharedMem *memory = SMSharedMemCreate(name.c_str(), kMemorySize);
        const auto *content = static_cast<const int *>(SMSharedMemGetAddressPtr(memory));
        EXPECT_TRUE(expected == nullptr || (content != nullptr && *content == *expected)) << name;
        SMSharedMemFree(memory);
        SMSharedMem *left = SMSharedMemOpen(name.c_str());
        leastSets += left != nullptr && memory != nullptr ? 1 : 0;
        mostSets += left != nullptr || memory == nullptr ? 1 : 0;
        segments += left != nullptr ? 1 : 0;
        SMSharedMemFree(left);
    }

    Board *board = nullptr;
    int messages[2];
    std::map<int, Process> living; // by slot
    int started = 0, killed = 0;
    int leastSets = 0, mostSets = 0, segments = 0;
};

TEST_F(Soak, WhatTheKilledLeaveHindersNobody)
{
    SMSharedMem *boardMemory = SMSharedMemCreate("storm", sizeof(Board));
    board = static_cast<Board *>(SMSharedMemGetAddressPtr(boardMemory));
    ASSERT_TRUE(board != nullptr && pipe2(messages, O_CLOEXEC) == 0);
    for (int slot = 0, zero = 0; slot < kSlots; ++slot)
        SMWriteINIPathFileValue("s", Own(slot).c_str(), INI_TYPE_INT32, &zero, sizeof zero, kSettings, 1);
    RunAll();
    std::printf("COUNT storm on objects: %d processes, %d threads, %d operations, %d kills\n", started,
                started * kThreads, kOperations, killed);
    EXPECT_EQ(board->faultLine, 0) << "a worker's check in this line failed";
    EXPECT_GE(board->operations, kOperations);
    EXPECT_GT(killed, kKills / 2);

    SMMutex *mutex = SMMutexCreate("storm");
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_OK);
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_OK);
    SMMutexDestroy(mutex);
    int begun = 0, ended = 0, held = 0;
    for (int slot = 0; slot < started; ++slot) {
        const Slot &one = board->slots[slot];
        begun += one.begun;
        ended += one.ended;
        EXPECT_LE(one.begun - one.ended, one.killed) << slot;
        int value = -1;
        uint32_t size = sizeof value;
        SMReadINIPathFileValue("s", Own(slot).c_str(), INI_TYPE_INT32, &value, &size, nullptr, 0, kSettings, 1);
        EXPECT_TRUE(value == one.writeEnded || (one.killed == 1 && value == one.writeBegun)) << slot;

        const int content = one.killed == 1 ? slot + 1 : 0;
        const bool isStale = one.killed == 1 && one.holdsMemory == 1;
        CheckMemory(Own(slot), isStale, isStale || one.killed == 0 ? &content : nullptr);
        held += isStale ? 1 : 0;
    }
    EXPECT_TRUE(ended <= board->total && board->total <= begun) << ended << ' ' << board->total << ' ' << begun;
    EXPECT_GT(held, 0);
    CheckMemory("contested", false, nullptr);

    int32_t units = -1;
    SMSemaphore *semaphore = SMSemaphoreCreate("storm", 0);
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &units), SM_STATUS_OK);
    SMSemaphoreDestroy(semaphore);
    EXPECT_GE(units, board->postsEnded - board->waitsBegun);
    EXPECT_LE(units, board->postsBegun - board->waitsEnded);

    SMSemaphoreDestroy(SMSemaphoreCreate("fleeting", 0));
    for (const char *name : {"manual", "automatic"})
        SMEventDestroy(SMEventCreate(name, 0, 0));
    SMRWLDestroy(SMRWLCreate("storm"));
    SMSharedMemFree(boardMemory);
    EXPECT_EQ(SegmentsInUse(), segments);
    EXPECT_TRUE(leastSets <= SetsInUse() && SetsInUse() <= mostSets)
        << leastSets << ' ' << SetsInUse() << ' ' << mostSets;
    std::filesystem::remove(kSettings);
}

} // namespace
