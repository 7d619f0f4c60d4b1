// The record's four calls; the block transform is rfc1321_transform.cpp.

#include "digest/rfc1321.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qzvest {
namespace {

constexpr uint32_t kBlock = 64;
constexpr uint32_t kCountAt = 56; // where the bit count stands in the last block

static_assert(offsetof(SMRFC1321Ctx, bitCount) == 0);
static_assert(offsetof(SMRFC1321Ctx, state) == 8);
static_assert(offsetof(SMRFC1321Ctx, bufferCount) == 24);
static_assert(offsetof(SMRFC1321Ctx, digest) == 28);
static_assert(offsetof(SMRFC1321Ctx, buffer) == 44);
static_assert(sizeof(SMRFC1321Ctx) == 112);
static_assert(std::endian::native == std::endian::little, "words and the bit count are stored as they lie");

void AddToBuffer(SMRFC1321Ctx *ctx, const uint8_t *bytes, uint32_t size)
{
    std::memcpy(ctx->buffer + ctx->bufferCount, bytes, size);
    ctx->bufferCount += size;
    ctx->bitCount += uint64_t{size} * 8;
}

// Clears the buffer from bufferCount up to end.
void Pad(SMRFC1321Ctx *ctx, uint32_t end)
{
    std::memset(ctx->buffer + ctx->bufferCount, 0, end - ctx->bufferCount);
}

} // namespace

void SMRFC1321Load(SMRFC1321Ctx *ctx)
{
    static constexpr uint32_t kOpening[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
    ctx->bitCount = 0;
    std::memcpy(ctx->state, kOpening, sizeof kOpening);
    ctx->bufferCount = 0;
    std::memset(ctx->digest, 0, sizeof ctx->digest);
}

void SMRFC1321AddMsg(SMRFC1321Ctx *ctx, const void *bytes, uint32_t size)
{
    if (size == 0)
        return;
    const uint8_t *next = static_cast<const uint8_t *>(bytes);
    if (ctx->bufferCount > 0) {
        const uint32_t taken = std::min(size, kBlock - ctx->bufferCount);
        AddToBuffer(ctx, next, taken);
        if (ctx->bufferCount < kBlock)
            return;
        RFC1321Transform(ctx->state, ctx->buffer, 1);
        ctx->bufferCount = 0;
        next += taken;
        size -= taken;
    }
    const uint32_t blocks = size / kBlock;
    RFC1321Transform(ctx->state, next, blocks);
    ctx->bitCount += uint64_t{blocks} * kBlock * 8;
    AddToBuffer(ctx, next + size_t{blocks} * kBlock, size % kBlock);
}

// The count in the buffer stays as the padding leaves it, so that a second call pads a block of its own and
// gives another value.
void SMRFC1321ComputeMsgDigest(SMRFC1321Ctx *ctx)
{
    ctx->buffer[ctx->bufferCount++] = 0x80;
    if (ctx->bufferCount > kCountAt) { // the bit count goes into a block of its own
        Pad(ctx, kBlock);
        RFC1321Transform(ctx->state, ctx->buffer, 1);
        ctx->bufferCount = 0;
    }
    Pad(ctx, kCountAt);
    ctx->bufferCount = kCountAt;
    std::memcpy(ctx->buffer + kCountAt, &ctx->bitCount, sizeof ctx->bitCount);
    RFC1321Transform(ctx->state, ctx->buffer, 1);
    std::memcpy(ctx->digest, ctx->state, sizeof ctx->digest);
}

void SMRFC1321UnLoad(SMRFC1321Ctx *ctx)
{
    std::memset(ctx, 0, sizeof *ctx);
    asm volatile("" : : "r"(ctx) : "memory"); // the record may be at its end, and must be cleared all the same
}

} // namespace qzvest
