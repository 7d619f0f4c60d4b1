// Ticks, timers, the environment and the keyboard.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>

#include <qzvest/system.h>

namespace {

TEST(Ticks, AreThoseOfTheMonotonicClock)
{
    timespec before{}, after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    const int64_t ticks = SMRefTicksGet();
    clock_gettime(CLOCK_MONOTONIC, &after);
    EXPECT_TRUE(before.tv_sec <= ticks / 1000 + 1 && ticks / 1000 <= after.tv_sec + 1) << ticks;
}

TEST(Timer, ExpiresBehindItsTimeOut)
{
    // A limit below -1 is over at once, -1 is none; a clock that went back or a span that wraps counts as 0.
    static const std::tuple<int64_t, int64_t, int64_t, int64_t, uint16_t, uint16_t> kCases[] = {
        {100, 150, 50, 50, 0, 0},
        {100, 151, 50, 51, 1, 1},
        {100, 90, -2, 0, 1, 1},
        {100, 101, -1, 1, 1, 0},
        {0, INT64_MAX, INT64_MAX - 1, INT64_MAX, 1, 1},
        {-2, INT64_MAX, 5, 0, 0, 0},
    };
    for (const auto &[start, now, timeout, givenElapsed, givenPassed, givenExpired] : kCases) {
        SCOPED_TRACE(testing::Message() << start << " to " << now << ", limit " << timeout);
        int64_t elapsed = 77;
        uint16_t passed = 77, expired = 77;
        EXPECT_EQ(SMRefTicksDiffCheckTimer(start, now, timeout, &elapsed, &passed, &expired), 1u);
        EXPECT_EQ(elapsed, givenElapsed);
        EXPECT_EQ(passed, givenPassed);
        EXPECT_EQ(expired, givenExpired);
    }
    for (const int64_t start : {-1, 100})
        EXPECT_EQ(SMRefTicksDiffCheckTimer(start, start < 0 ? 100 : -1, 5, nullptr, nullptr, nullptr), 0u);
}

TEST(Environment, IsCopied)
{
    for (const std::string &value : {std::string(), std::string(5000, 'v')}) {
        setenv("QZVEST_TEST", value.c_str(), 1);
        uint32_t size = 77;
        char *copy = SMEnvDup("QZVEST_TEST", &size);
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy, value);
        EXPECT_EQ(size, value.size() + 1);
        free(copy);
    }
    unsetenv("QZVEST_TEST");
    EXPECT_EQ(SMEnvDup("QZVEST_TEST", nullptr), nullptr);
}

TEST(Keyboard, IsAskedAndNotRead)
{
    int ends[2];
    close(0);
    EXPECT_EQ(SMkbhit(), 0u);
    ASSERT_TRUE(pipe(ends) == 0 && ends[0] == 0);
    EXPECT_EQ(SMkbhit(), 0u);
    ASSERT_EQ(write(ends[1], "k", 1), 1);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(SMkbhit(), 1u);
    close(ends[1]);
}

} // namespace
