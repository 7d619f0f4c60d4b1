// The block transform, unrolled with its constants, and beside it the single steps with theirs computed.

#include <bit>
#include <cmath>
#include <cstring>

#include "digest/rfc1321.h"

namespace qzvest {
namespace {

inline uint32_t F(uint32_t b, uint32_t c, uint32_t d)
{
    return ((c ^ d) & b) ^ d;
}

inline uint32_t G(uint32_t b, uint32_t c, uint32_t d)
{
    return ((b ^ c) & d) ^ c;
}

// G as the unrolled steps have it. The halves share no bit, so their sum is G; and as the compiler may add the
// second one early, two operations fewer wait for b, which the step before has only just made.
inline uint32_t GBySum(uint32_t b, uint32_t c, uint32_t d)
{
    return (b & d) + (c & ~d);
}

inline uint32_t H(uint32_t b, uint32_t c, uint32_t d)
{
    return b ^ c ^ d;
}

inline uint32_t I(uint32_t b, uint32_t c, uint32_t d)
{
    return (b | ~d) ^ c;
}

using RoundFunction = uint32_t (*)(uint32_t b, uint32_t c, uint32_t d);

template <RoundFunction kFunction, int kShift>
inline void Step(uint32_t &a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t constant)
{
    a += word + constant;
    a += kFunction(b, c, d);
    a = std::rotl(a, kShift) + b;
}

// The four words in registers, for the time of a transform.
struct State {
    uint32_t a, b, c, d;
};

// The sixteen words of a block, read as they lie.
inline void Block(State &state, const uint8_t *bytes)
{
    auto [a, b, c, d] = state;
    uint32_t w[16];
    std::memcpy(w, bytes, sizeof w);

    // Round 1
    Step<F, 7>(a, b, c, d, w[0], 0xD76AA478);
    Step<F, 12>(d, a, b, c, w[1], 0xE8C7B756);
    Step<F, 17>(c, d, a, b, w[2], 0x242070DB);
    Step<F, 22>(b, c, d, a, w[3], 0xC1BDCEEE);
    Step<F, 7>(a, b, c, d, w[4], 0xF57C0FAF);
    Step<F, 12>(d, a, b, c, w[5], 0x4787C62A);
    Step<F, 17>(c, d, a, b, w[6], 0xA8304613);
    Step<F, 22>(b, c, d, a, w[7], 0xFD469501);
    Step<F, 7>(a, b, c, d, w[8], 0x698098D8);
    Step<F, 12>(d, a, b, c, w[9], 0x8B44F7AF);
    Step<F, 17>(c, d, a, b, w[10], 0xFFFF5BB1);
    Step<F, 22>(b, c, d, a, w[11], 0x895CD7BE);
    Step<F, 7>(a, b, c, d, w[12], 0x6B901122);
    Step<F, 12>(d, a, b, c, w[13], 0xFD987193);
    Step<F, 17>(c, d, a, b, w[14], 0xA679438E);
    Step<F, 22>(b, c, d, a, w[15], 0x49B40821);
    // Round 2
    Step<GBySum, 5>(a, b, c, d, w[1], 0xF61E2562);
    Step<GBySum, 9>(d, a, b, c, w[6], 0xC040B340);
    Step<GBySum, 14>(c, d, a, b, w[11], 0x265E5A51);
    Step<GBySum, 20>(b, c, d, a, w[0], 0xE9B6C7AA);
    Step<GBySum, 5>(a, b, c, d, w[5], 0xD62F105D);
    Step<GBySum, 9>(d, a, b, c, w[10], 0x02441453);
    Step<GBySum, 14>(c, d, a, b, w[15], 0xD8A1E681);
    Step<GBySum, 20>(b, c, d, a, w[4], 0xE7D3FBC8);
    Step<GBySum, 5>(a, b, c, d, w[9], 0x21E1CDE6);
    Step<GBySum, 9>(d, a, b, c, w[14], 0xC33707D6);
    Step<GBySum, 14>(c, d, a, b, w[3], 0xF4D50D87);
    Step<GBySum, 20>(b, c, d, a, w[8], 0x455A14ED);
    Step<GBySum, 5>(a, b, c, d, w[13], 0xA9E3E905);
    Step<GBySum, 9>(d, a, b, c, w[2], 0xFCEFA3F8);
    Step<GBySum, 14>(c, d, a, b, w[7], 0x676F02D9);
    Step<GBySum, 20>(b, c, d, a, w[12], 0x8D2A4C8A);
    // Round 3
    Step<H, 4>(a, b, c, d, w[5], 0xFFFA3942);
    Step<H, 11>(d, a, b, c, w[8], 0x8771F681);
    Step<H, 16>(c, d, a, b, w[11], 0x6D9D6122);
    Step<H, 23>(b, c, d, a, w[14], 0xFDE5380C);
    Step<H, 4>(a, b, c, d, w[1], 0xA4BEEA44);
    Step<H, 11>(d, a, b, c, w[4], 0x4BDECFA9);
    Step<H, 16>(c, d, a, b, w[7], 0xF6BB4B60);
    Step<H, 23>(b, c, d, a, w[10], 0xBEBFBC70);
    Step<H, 4>(a, b, c, d, w[13], 0x289B7EC6);
    Step<H, 11>(d, a, b, c, w[0], 0xEAA127FA);
    Step<H, 16>(c, d, a, b, w[3], 0xD4EF3085);
    Step<H, 23>(b, c, d, a, w[6], 0x04881D05);
    Step<H, 4>(a, b, c, d, w[9], 0xD9D4D039);
    Step<H, 11>(d, a, b, c, w[12], 0xE6DB99E5);
    Step<H, 16>(c, d, a, b, w[15], 0x1FA27CF8);
    Step<H, 23>(b, c, d, a, w[2], 0xC4AC5665);
    // Round 4
    Step<I, 6>(a, b, c, d, w[0], 0xF4292244);
    Step<I, 10>(d, a, b, c, w[7], 0x432AFF97);
    Step<I, 15>(c, d, a, b, w[14], 0xAB9423A7);
    Step<I, 21>(b, c, d, a, w[5], 0xFC93A039);
    Step<I, 6>(a, b, c, d, w[12], 0x655B59C3);
    Step<I, 10>(d, a, b, c, w[3], 0x8F0CCC92);
    Step<I, 15>(c, d, a, b, w[10], 0xFFEFF47D);
    Step<I, 21>(b, c, d, a, w[1], 0x85845DD1);
    Step<I, 6>(a, b, c, d, w[8], 0x6FA87E4F);
    Step<I, 10>(d, a, b, c, w[15], 0xFE2CE6E0);
    Step<I, 15>(c, d, a, b, w[6], 0xA3014314);
    Step<I, 21>(b, c, d, a, w[13], 0x4E0811A1);
    Step<I, 6>(a, b, c, d, w[4], 0xF7537E82);
    Step<I, 10>(d, a, b, c, w[11], 0xBD3AF235);
    Step<I, 15>(c, d, a, b, w[2], 0x2AD7D2BB);
    Step<I, 21>(b, c, d, a, w[9], 0xEB86D391);
    state = {state.a + a, state.b + b, state.c + c, state.d + d};
}

uint32_t StepConstant(uint32_t step)
{
    constexpr double kFixedPoint = 4294967296.0; // 32 fraction bits
    return static_cast<uint32_t>(std::fabs(std::sin(static_cast<double>(step))) * kFixedPoint);
}

template <RoundFunction kFunction>
void StepOf(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step)
{
    *a = b + RFC1321RotateLeft(*a + kFunction(b, c, d) + word + StepConstant(step), shift);
}

} // namespace

// The state stays in registers over all blocks and goes back at the end. Nobody but the caller sees the record
// meanwhile, and he waits.
void RFC1321Transform(uint32_t *state, const uint8_t *bytes, size_t blocks)
{
    State words = {state[0], state[1], state[2], state[3]};
    for (; blocks > 0; --blocks, bytes += 64)
        Block(words, bytes);
    std::memcpy(state, &words, sizeof words);
}

// shift is 1 to 31.
uint32_t RFC1321RotateLeft(uint32_t value, uint32_t shift)
{
    return (value << shift) | (value >> (32 - shift));
}

void RFC1321StepF(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step)
{
    StepOf<F>(a, b, c, d, word, shift, step);
}

void RFC1321StepG(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step)
{
    StepOf<G>(a, b, c, d, word, shift, step);
}

void RFC1321StepH(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step)
{
    StepOf<H>(a, b, c, d, word, shift, step);
}

void RFC1321StepI(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step)
{
    StepOf<I>(a, b, c, d, word, shift, step);
}

} // namespace qzvest
