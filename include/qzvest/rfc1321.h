/* The message digest of RFC 1321 (MD5), over a message given in pieces.
 *
 * The order is SMRFC1321Load, SMRFC1321AddMsg any number of times, SMRFC1321ComputeMsgDigest, reading the
 * record's digest, SMRFC1321UnLoad. Nothing checks it. The record is the caller's and holds all there is: no
 * call allocates or fails; pointers are not tested.
 * Threads: a record has no lock; distinct records are independent. */
#ifndef QZVEST_RFC1321_H
#define QZVEST_RFC1321_H

#include <qzvest/export.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMRFC1321Load - begin a message; a used record starts over. */
SM_EXPORT void SMRFC1321Load(SMRFC1321Ctx *ctx);

/* SMRFC1321AddMsg - go on with the message.
 *   size  bytes at bytes, which may lie at any address; 0 does nothing */
SM_EXPORT void SMRFC1321AddMsg(SMRFC1321Ctx *ctx, const void *bytes, uint32_t size);

/* SMRFC1321ComputeMsgDigest - end the message; its digest stands in ctx->digest until SMRFC1321UnLoad or the
 * next SMRFC1321Load. The message cannot be continued, and a second call takes in further padding and so gives another
 * value. */
SM_EXPORT void SMRFC1321ComputeMsgDigest(SMRFC1321Ctx *ctx);

/* SMRFC1321UnLoad - overwrite the whole record with zeros, the digest included. */
SM_EXPORT void SMRFC1321UnLoad(SMRFC1321Ctx *ctx);

#ifdef __cplusplus
}
#endif

#endif
