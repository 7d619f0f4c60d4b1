// The table's attach step, and the digest's transform beside its single steps.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>

#include "digest/crc32.h"
#include "digest/rfc1321.h"
#include "support/faults.h"

namespace {

TEST(CRC32Table, AttachFailsWithoutMemory)
{
    qzvest::CRC32TableDetach(); // it has been up since the program was loaded
    const long before = LiveBlocks();
    EXPECT_EQ(Failing(1, [&] { return qzvest::CRC32TableAttach(); }), 0);
    qzvest::CRC32TableDetach(); // copes
    EXPECT_EQ(LiveBlocks(), before);
    EXPECT_EQ(qzvest::CRC32TableAttach(), 1);
    EXPECT_EQ(LiveBlocks(), before + 1);
    const uint8_t low = 1, high = 255;
    EXPECT_EQ(qzvest::CRC32UpdateBytes(0, &low, 1), 0x77073096u);
    EXPECT_EQ(qzvest::CRC32UpdateBytes(0, &high, 1), 0x2D02EF8Du);
}

// The transform as the RFC tells it, by the step routines that compute their constants.
void TransformByRoutines(uint32_t *state, const uint32_t *words)
{
    constexpr struct {
        void (*step)(uint32_t *, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t);
        uint32_t first, stride, shifts[4];
    } kRounds[] = {
        {qzvest::RFC1321StepF, 0, 1, {7, 12, 17, 22}},
        {qzvest::RFC1321StepG, 1, 5, {5, 9, 14, 20}},
        {qzvest::RFC1321StepH, 5, 3, {4, 11, 16, 23}},
        {qzvest::RFC1321StepI, 0, 7, {6, 10, 15, 21}},
    };
    uint32_t v[4] = {state[0], state[1], state[2], state[3]}, number = 1;
    for (const auto &round : kRounds) {
        for (uint32_t i = 0; i < 16; ++i, ++number) {
            const uint32_t a = (16 - i) % 4; // the roles go round
            round.step(&v[a], v[(a + 1) % 4], v[(a + 2) % 4], v[(a + 3) % 4],
                       words[(round.first + i * round.stride) % 16], round.shifts[i % 4], number);
        }
    }
    for (int i = 0; i < 4; ++i)
        state[i] += v[i];
}

TEST(RFC1321Transform, AgreesWithTheStepRoutines)
{
    std::mt19937 random(67);
    EXPECT_EQ(qzvest::RFC1321RotateLeft(0x80000001, 4), 0x00000018u);
    for (int round = 0; round < 200; ++round) {
        std::array<uint32_t, 36> words; // the state stands behind two blocks
        std::generate(words.begin(), words.end(), std::ref(random));
        auto stepped = words;
        qzvest::RFC1321Transform(&words[32], reinterpret_cast<const uint8_t *>(words.data()), 2);
        TransformByRoutines(&stepped[32], &stepped[0]);
        TransformByRoutines(&stepped[32], &stepped[16]);
        ASSERT_EQ(words, stepped);
    }
}

} // namespace
