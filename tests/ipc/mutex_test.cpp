// The allocations of a mutex without a name, and the clock of time-outs.

#include <gtest/gtest.h>
#include <qzvest/mutex.h>

#include "os/clock.h"

namespace {

TEST(Clock, MillisecondsAreTruncated)
{
    constexpr struct {
        timespec start, end;
        int64_t milliseconds;
    } kCases[] = {{{5, 1}, {5, 1000001}, 1},
                  {{5, 100}, {5, 999999999}, 999},
                  {{5, 500000000}, {8, 400000000}, 2900},
                  {{0, 0}, {4294968, 0}, INT64_C(4294968000)}}; // beyond 32 bits
    for (const auto &c : kCases)
        EXPECT_EQ(qzvest::MillisecondsBetween(c.start, c.end), c.milliseconds) << c.end.tv_sec << ' ' << c.end.tv_nsec;
}

} // namespace
