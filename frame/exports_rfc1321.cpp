#include <qzvest/rfc1321.h>

#include "digest/rfc1321.h"

extern "C" {

void SMRFC1321Load(SMRFC1321Ctx *ctx)
{
    qzvest::SMRFC1321Load(ctx);
}

void SMRFC1321AddMsg(SMRFC1321Ctx *ctx, const void *bytes, uint32_t size)
{
    qzvest::SMRFC1321AddMsg(ctx, bytes, size);
}

void SMRFC1321ComputeMsgDigest(SMRFC1321Ctx *ctx)
{
    qzvest::SMRFC1321ComputeMsgDigest(ctx);
}

void SMRFC1321UnLoad(SMRFC1321Ctx *ctx)
{
    qzvest::SMRFC1321UnLoad(ctx);
}

} // extern "C"
