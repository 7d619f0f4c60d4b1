// The mutex without a name, and the handle head that all locks share. Nothing here waits for a time to pass: what
// has to be true between threads is true in any order they run in.

#include <gtest/gtest.h>
#include <qzvest/mutex.h>

#include <memory>
#include <thread>
#include <vector>

#include "ipc/mutex.h"
#include "ipc/namerecord.h"
#include "os/clock.h"

namespace {

constexpr uint32_t kLong = 600000;

struct MutexEnd {
    void operator()(SMMutex *mutex) const
    {
        SMMutexDestroy(mutex);
    }
};
using Mutex = std::unique_ptr<SMMutex, MutexEnd>;

uint32_t LockInThread(SMMutex *mutex, uint32_t timeoutMs)
{
    uint32_t status = 77;
    std::thread([&] {
        status = SMMutexLock(mutex, timeoutMs);
        if (status == SM_STATUS_OK)
            status = SMMutexUnLock(mutex);
    }).join();
    return status;
}

TEST(Mutex, TimedWaitsOnAHeldAndAFreeOne)
{
    const Mutex mutex(SMMutexCreate(nullptr));
    for (const uint32_t timeoutMs : {0u, 1u, 3u, kLong, SM_WAIT_FOREVER}) {
        EXPECT_EQ(LockInThread(mutex.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
        EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
        if (timeoutMs < kLong) {
            EXPECT_EQ(LockInThread(mutex.get(), timeoutMs), SM_STATUS_TIMEOUT) << timeoutMs;
            EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_TIMEOUT) << "by its holder, " << timeoutMs;
        }
        EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK) << timeoutMs;
    }
}

TEST(Mutex, WaitersGetItAfterTheRelease)
{
    const Mutex mutex(SMMutexCreate_s(nullptr, 0));
    ASSERT_EQ(SMMutexLock(mutex.get(), SM_WAIT_FOREVER), SM_STATUS_OK);
    uint32_t statuses[] = {77, 77};
    std::thread polling([&] { statuses[0] = LockInThread(mutex.get(), kLong); });
    std::thread blocked([&] { statuses[1] = LockInThread(mutex.get(), SM_WAIT_FOREVER); });
    EXPECT_EQ(LockInThread(mutex.get(), 2), SM_STATUS_TIMEOUT); // gives the two the time to come to their waits
    EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK);
    polling.join();
    blocked.join();
    EXPECT_EQ(statuses[0], SM_STATUS_OK);
    EXPECT_EQ(statuses[1], SM_STATUS_OK);
}

TEST(Mutex, OneThreadAtATime)
{
    const Mutex mutex(SMMutexCreate(nullptr));
    constexpr int kRounds = 20000;
    int count = 0; // two increments at once lose one, and are a data race
    const auto work = [&](uint32_t timeoutMs) {
        for (int round = 0; round < kRounds; ++round) {
            if (SMMutexLock(mutex.get(), timeoutMs) != SM_STATUS_OK)
                return;
            ++count;
            (void)SMMutexUnLock(mutex.get());
        }
    };
    std::vector<std::thread> threads;
    for (const uint32_t timeoutMs : {SM_WAIT_FOREVER, SM_WAIT_FOREVER, SM_WAIT_FOREVER, kLong})
        threads.emplace_back(work, timeoutMs);
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(count, 4 * kRounds);
}

TEST(Mutex, HandlesOfOtherKindsAreRefused)
{
    EXPECT_EQ(SMMutexLock(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMMutexUnLock(nullptr), SM_STATUS_INVALID_PARAMETER);
    SMMutexDestroy(nullptr);
    for (const uint32_t kind : {0u, 2u, 3u, 4u, 5u, 6u, 7u}) {
        // The head alone: a call that looked further would read behind the block.
        auto *record = static_cast<qzvest::IPCNameRecord *>(std::malloc(sizeof(qzvest::IPCNameRecord)));
        ASSERT_NE(record, nullptr);
        *record = {kind, nullptr};
        auto *handle = reinterpret_cast<SMMutex *>(record);
        EXPECT_EQ(SMMutexLock(handle, 0), SM_STATUS_BAD_FORMAT) << kind;
        EXPECT_EQ(SMMutexUnLock(handle), SM_STATUS_BAD_FORMAT) << kind;
        SMMutexDestroy(handle);
        EXPECT_EQ(record->kind, kind);
        EXPECT_EQ(record->name, nullptr);
        std::free(record);
    }
    EXPECT_EQ(qzvest::LocalMutexLock(nullptr, 0), SM_STATUS_FAILED);
}

TEST(Clock, MillisecondsAreTruncated)
{
    constexpr struct {
        timespec start, end;
        int64_t milliseconds;
    } kCases[] = {
        {{5, 0}, {5, 999999}, 0},
        {{5, 1}, {5, 1000001}, 1},
        {{5, 100}, {5, 999999999}, 999},
        {{5, 999999999}, {6, 0}, 0},
        {{5, 999000001}, {6, 1000000}, 1},
        {{5, 500000000}, {8, 400000000}, 2900},
        {{0, 0}, {4294968, 0}, INT64_C(4294968000)}, // beyond 32 bits
    };
    for (const auto &c : kCases)
        EXPECT_EQ(qzvest::MillisecondsBetween(c.start, c.end), c.milliseconds) << c.end.tv_sec << ' ' << c.end.tv_nsec;
}

} // namespace
