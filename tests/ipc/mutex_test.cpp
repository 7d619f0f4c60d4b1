// The mutex without a name. Nothing here waits for a time to pass: what has to be true between threads is true in any
// order they run in.

#include <gtest/gtest.h>
#include <qzvest/mutex.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "os/clock.h"
#include "support/faults.h"

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

TEST(Mutex, ExcludesUntilItsRelease)
{
    const Mutex mutex(SMMutexCreate_s(nullptr, 0));
    for (const uint32_t timeoutMs : {0u, 3u, kLong, SM_WAIT_FOREVER}) {
        EXPECT_EQ(LockInThread(mutex.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
        EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_OK) << timeoutMs;
        if (timeoutMs < kLong) {
            EXPECT_EQ(LockInThread(mutex.get(), timeoutMs), SM_STATUS_TIMEOUT) << timeoutMs;
            EXPECT_EQ(SMMutexLock(mutex.get(), timeoutMs), SM_STATUS_TIMEOUT) << "by its holder, " << timeoutMs;
        }
        std::thread waiter([&] { EXPECT_EQ(LockInThread(mutex.get(), std::max(timeoutMs, kLong)), SM_STATUS_OK); });
        EXPECT_EQ(LockInThread(mutex.get(), 2), SM_STATUS_TIMEOUT); // gives it the time to come to its wait
        EXPECT_EQ(SMMutexUnLock(mutex.get()), SM_STATUS_OK) << timeoutMs;
        waiter.join();
    }
}

TEST(Mutex, FailedAllocationsLeaveNothing)
{
    const long blocks = LiveBlocks();
    int nth = 1;
    for (;; ++nth) {
        FailAllocation(nth);
        const Mutex mutex(SMMutexCreate(nullptr));
        if (!StopFault()) {
            EXPECT_NE(mutex, nullptr);
            break;
        }
        EXPECT_EQ(mutex, nullptr) << nth;
        EXPECT_EQ(LiveBlocks(), blocks) << nth;
    }
    EXPECT_EQ(nth, 3) << "the record and the lock itself";
    EXPECT_EQ(LiveBlocks(), blocks);
}

TEST(Clock, MillisecondsAreTruncated)
{
    constexpr struct {
        timespec start, end;
        int64_t milliseconds;
    } kCases[] = {{{5, 1}, {5, 1000001}, 1},
                  {{5, 100}, {5, 999999999}, 999},
                  {{5, 999000001}, {6, 1000000}, 1},
                  {{5, 500000000}, {8, 400000000}, 2900},
                  {{0, 0}, {4294968, 0}, INT64_C(4294968000)}}; // beyond 32 bits
    for (const auto &c : kCases)
        EXPECT_EQ(qzvest::MillisecondsBetween(c.start, c.end), c.milliseconds) << c.end.tv_sec << ' ' << c.end.tv_nsec;
}

} // namespace
