// The clock of time-outs: monotonic, so that setting the wall clock has no say.
#ifndef OS_CLOCK_H
#define OS_CLOCK_H

#include <unistd.h>

#include <cstdint>
#include <ctime>

namespace qzvest {

// What a wait for a lock that others hold sleeps between two tries.
constexpr useconds_t kLockPollMicroseconds = 1000;

inline timespec MonotonicNow()
{
    timespec now;
    (void)clock_gettime(CLOCK_MONOTONIC, &now); // fails for an unknown clock alone
    return now;
}

// Whole milliseconds, truncated.
constexpr int64_t MillisecondsBetween(const timespec &start, const timespec &end)
{
    return ((end.tv_sec - start.tv_sec) * INT64_C(1000000000) + (end.tv_nsec - start.tv_nsec)) / 1000000;
}

inline int64_t MillisecondsSince(const timespec &start)
{
    return MillisecondsBetween(start, MonotonicNow());
}

// The moment so many milliseconds later. None but positive rests below a second count.
constexpr timespec DeadlineAfter(timespec now, int32_t milliseconds)
{
    now.tv_sec += milliseconds / 1000;
    if (milliseconds % 1000 > 0)
        now.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (now.tv_nsec > 999999999) {
        now.tv_nsec -= 1000000000;
        ++now.tv_sec;
    }
    return now;
}

} // namespace qzvest

#endif
