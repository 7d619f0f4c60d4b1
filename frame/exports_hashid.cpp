#include <qzvest/hashid.h>

#include "containers/hashid.h"

extern "C" {

uint32_t SMHashTableBytesNeeded(int32_t maxID)
{
    return qzvest::SMHashTableBytesNeeded(maxID);
}

uint32_t SMClearHashTable(SMHashTable *table, uint32_t bytes)
{
    return qzvest::SMClearHashTable(table, bytes);
}

uint32_t SMAcquireHashID(SMHashTable *table, uint32_t bytes, uint32_t mode)
{
    return qzvest::SMAcquireHashID(table, bytes, mode);
}

uint32_t SMAcquireHashIDByID(SMHashTable *table, uint32_t bytes, uint32_t id)
{
    return qzvest::SMAcquireHashIDByID(table, bytes, id);
}

uint32_t SMVerifyHashID(const SMHashTable *table, uint32_t bytes, uint32_t id)
{
    return qzvest::SMVerifyHashID(table, bytes, id);
}

uint32_t SMReleaseHashID(SMHashTable *table, uint32_t bytes, uint32_t id)
{
    return qzvest::SMReleaseHashID(table, bytes, id);
}

uint32_t SMGetMinInUseID(const SMHashTable *table, uint32_t bytes)
{
    return qzvest::SMGetMinInUseID(table, bytes);
}

uint32_t SMGetMaxInUseID(const SMHashTable *table, uint32_t bytes)
{
    return qzvest::SMGetMaxInUseID(table, bytes);
}

uint32_t SMFindFirstHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut)
{
    return qzvest::SMFindFirstHashID(table, bytes, wordInOut, bitInOut);
}

uint32_t SMFindNextHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut)
{
    return qzvest::SMFindNextHashID(table, bytes, wordInOut, bitInOut);
}

} // extern "C"
