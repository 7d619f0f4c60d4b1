// The table, the sum over a buffer or a string, and a second sum that is none of these.
//
// A register is reflected: bit 31 is the coefficient of x^0. The table is written at attach and only read
// from then on.
//
// Byte by byte, each look-up waits for the one before it, and the wait is most of the time. So a longer
// buffer is cut into lanes whose registers advance side by side. A register is linear in what went into it:
// that of the whole is the sum of the lanes' registers, each multiplied by x^(bits behind the lane) modulo the
// polynomial. There is still one look-up per byte, in the one table; joining the lanes adds four.

#include "digest/crc32.h"

#include <array>
#include <bit>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "compat/load.h"
#include "frame/heap.h"

namespace qzvest {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;
constexpr uint32_t kAllOnes = 0xFFFFFFFF;
constexpr uint32_t kOne = 0x80000000; // the polynomial x^0
constexpr size_t kTableEntries = 256;
constexpr size_t kLanes = 8;

uint32_t *table; // kTableEntries words on the heap

static_assert(std::endian::native == std::endian::little, "a word's low byte comes first");

constexpr uint32_t TimesX(uint32_t value)
{
    return (value >> 1) ^ ((value & 1) != 0 ? kPolynomial : 0);
}

constexpr uint32_t MultiplySlowly(uint32_t a, uint32_t b)
{
    uint32_t product = 0;
    for (int bit = 0; bit < 32; ++bit) {
        product = TimesX(product) ^ (((a >> bit) & 1) != 0 ? b : 0);
    }
    return product;
}

// factors[k] moves a register over the bytes of the lanes behind lane k.
template <size_t kLaneBytes>
constexpr std::array<uint32_t, kLanes> LaneFactors()
{
    uint32_t oneLane = kOne;
    for (size_t bit = 0; bit < kLaneBytes * 8; ++bit)
        oneLane = TimesX(oneLane);
    std::array<uint32_t, kLanes> factors{};
    factors[kLanes - 1] = kOne;
    for (size_t lane = kLanes - 1; lane > 0; --lane)
        factors[lane - 1] = MultiplySlowly(factors[lane], oneLane);
    return factors;
}

inline uint32_t Step(const uint32_t *entries, uint32_t value)
{
    return entries[value & 0xFF] ^ (value >> 8);
}

// The product of two polynomials over GF(2), not reduced. Integer multiplication serves when only each fourth
// bit is set: the at most eight bits that meet in one place carry into the three cleared places above it.
inline uint64_t CarrylessProduct(uint32_t a, uint32_t b)
{
    constexpr uint64_t kEachFourth = 0x1111111111111111;
    uint64_t product = 0;
#pragma GCC unroll 4
    for (int place = 0; place < 4; ++place) {
        uint64_t sum = 0;
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i)
            sum ^= (a & (kEachFourth << i)) * (b & (kEachFourth << ((place - i) & 3)));
        product |= sum & (kEachFourth << place);
    }
    return product;
}

// Of the lanes' registers that of the whole.
template <size_t kLaneBytes>
inline uint32_t Join(const uint32_t *entries, const uint32_t *lanes)
{
    constexpr std::array<uint32_t, kLanes> kFactors = LaneFactors<kLaneBytes>();
    uint64_t sum = 0;
#pragma GCC unroll 16
    for (size_t lane = 0; lane < kLanes - 1; ++lane)
        sum ^= CarrylessProduct(lanes[lane], kFactors[lane]);
    sum <<= 1; // the top bit is x^0 again, which the product had put one place below
    for (int byte = 0; byte < 4; ++byte)
        sum = entries[sum & 0xFF] ^ (sum >> 8);
    return static_cast<uint32_t>(sum) ^ lanes[kLanes - 1];
}

template <size_t kLaneBytes>
uint32_t UpdateBlock(const uint32_t *entries, uint32_t value, const uint8_t *bytes)
{
    uint32_t lanes[kLanes] = {value};
    for (size_t at = 0; at < kLaneBytes; at += sizeof(uint32_t)) {
#pragma GCC unroll 16
        for (size_t lane = 0; lane < kLanes; ++lane)
            lanes[lane] ^= LoadAs<uint32_t>(bytes + lane * kLaneBytes + at);
#pragma GCC unroll 4
        for (size_t byte = 0; byte < sizeof(uint32_t); ++byte) {
#pragma GCC unroll 16
            for (size_t lane = 0; lane < kLanes; ++lane)
                lanes[lane] = Step(entries, lanes[lane]);
        }
    }
    return Join<kLaneBytes>(entries, lanes);
}

struct Span {
    const uint8_t *bytes;
    size_t size;
};

// All blocks of kLanes * kLaneBytes bytes at the front of rest.
template <size_t kLaneBytes>
inline uint32_t UpdateBlocks(uint32_t value, Span &rest)
{
    constexpr size_t kBlock = kLanes * kLaneBytes;
    for (; rest.size >= kBlock; rest.bytes += kBlock, rest.size -= kBlock)
        value = UpdateBlock<kLaneBytes>(table, value, rest.bytes);
    return value;
}

} // namespace

int CRC32TableAttach()
{
    table = HeapRoom<uint32_t>(kTableEntries).release();
    if (table == nullptr)
        return 0;
    table[0] = 0;
    uint32_t value = 1;
    for (size_t stride = kTableEntries / 2; stride > 0; stride /= 2) {
        value = TimesX(value);
        for (size_t i = 0; i < kTableEntries; i += 2 * stride)
            table[i + stride] = table[i] ^ value;
    }
    return 1;
}

void CRC32TableDetach()
{
    std::free(table);
    table = nullptr;
}

uint32_t CRC32UpdateBytes(uint32_t value, const uint8_t *bytes, size_t size)
{
    const uint32_t *entries = table;
    for (const uint8_t *end = bytes + size; bytes != end; ++bytes)
        value = Step(entries, value ^ *bytes);
    return value;
}

uint32_t CRC32UpdateLanes(uint32_t value, const uint8_t *bytes, size_t size)
{
    Span rest = {bytes, size};
    value = UpdateBlocks<512>(value, rest);
    value = UpdateBlocks<64>(value, rest);
    value = UpdateBlocks<8>(value, rest); // 64 bytes: joining weighs as much as the lanes and is still worth it
    return CRC32UpdateBytes(value, rest.bytes, rest.size);
}

uint32_t SMCRC32Compute_vn(const void *bytes, uint32_t size)
{
    return ~CRC32UpdateLanes(kAllOnes, static_cast<const uint8_t *>(bytes), size);
}

uint32_t SMCRC32Compute_str(const char *text)
{
    return ~CRC32UpdateLanes(kAllOnes, reinterpret_cast<const uint8_t *>(text), std::strlen(text));
}

// In spite of the name no length is passed.
uint32_t SMCRC32Compute_strncase(const char *text)
{
    uint32_t value = kAllOnes;
    std::array<uint8_t, 512> folded; // a piece at a time, so that the lanes serve here too
    for (size_t used = folded.size(); used == folded.size();) {
        for (used = 0; used < folded.size() && *text != '\0'; ++used, ++text)
            folded[used] = static_cast<uint8_t>(std::tolower(static_cast<uint8_t>(*text)));
        value = CRC32UpdateLanes(value, folded.data(), used);
    }
    return ~value;
}

// Not the sum above: no inversion at the end, zero bytes up to processed, and all that is left of the byte is
// compared with one bit of the register, not the byte's low bit. Stored values depend on each of these.
uint32_t SMGenerateCRC32(const void *bytes, uint32_t size, uint32_t processed)
{
    const uint8_t *data = static_cast<const uint8_t *>(bytes);
    uint32_t value = kAllOnes;
    for (uint32_t i = 0; i < processed; ++i) {
        uint32_t left = i < size ? data[i] : 0;
        for (int bit = 0; bit < 8; ++bit) {
            const uint32_t low = value & 1;
            value >>= 1;
            if (left != low)
                value ^= kPolynomial;
            left = (left ^ low) >> 1;
        }
    }
    return value;
}

} // namespace qzvest
