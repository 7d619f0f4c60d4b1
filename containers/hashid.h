// The ID table: bits in the caller's memory, one for each small number that may be handed out.
#ifndef CONTAINERS_HASHID_H
#define CONTAINERS_HASHID_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

uint32_t SMHashTableBytesNeeded(int32_t maxID);
uint32_t SMClearHashTable(SMHashTable *table, uint32_t bytes);
uint32_t SMAcquireHashID(SMHashTable *table, uint32_t bytes, uint32_t mode);
uint32_t SMAcquireHashIDByID(SMHashTable *table, uint32_t bytes, uint32_t id);
uint32_t SMVerifyHashID(const SMHashTable *table, uint32_t bytes, uint32_t id);
uint32_t SMReleaseHashID(SMHashTable *table, uint32_t bytes, uint32_t id);
uint32_t SMGetMinInUseID(const SMHashTable *table, uint32_t bytes);
uint32_t SMGetMaxInUseID(const SMHashTable *table, uint32_t bytes);
uint32_t SMFindFirstHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut);
uint32_t SMFindNextHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut);

} // namespace qzvest

#endif
