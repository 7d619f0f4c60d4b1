// The RFC 1321 message digest over a record of the caller.
#ifndef DIGEST_RFC1321_H
#define DIGEST_RFC1321_H

#include <qzvest/types.h>

#include <cstddef>
#include <cstdint>

namespace qzvest {

void SMRFC1321Load(SMRFC1321Ctx *ctx);
void SMRFC1321AddMsg(SMRFC1321Ctx *ctx, const void *bytes, uint32_t size);
void SMRFC1321ComputeMsgDigest(SMRFC1321Ctx *ctx);
void SMRFC1321UnLoad(SMRFC1321Ctx *ctx);

// The steps of the four rounds as the RFC tells them, with the constant computed: the measure of the unrolled
// transform, used by no path of the digest. a becomes b + rotate(a + f(b, c, d) + word + constant, shift);
// step counts from 1.
uint32_t RFC1321RotateLeft(uint32_t value, uint32_t shift);
void RFC1321StepF(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step);
void RFC1321StepG(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step);
void RFC1321StepH(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step);
void RFC1321StepI(uint32_t *a, uint32_t b, uint32_t c, uint32_t d, uint32_t word, uint32_t shift, uint32_t step);

// Takes blocks of 64 bytes into the four words of state.
void RFC1321Transform(uint32_t *state, const uint8_t *bytes, size_t blocks);

} // namespace qzvest

#endif
