/* A table that hands out small numbers (IDs), and takes them back.
 *
 * There is no hash in it: one bit for each ID, in an area of the caller's. Each call takes the area and its
 * length in bytes; nothing else is kept. The area holds words of 32 bits in host order and may lie at any
 * address; bytes behind the last whole word are not used by the calls that look for an ID. ID 0 stands for no
 * ID: it is never handed out nor found. Clear an area before its first use.
 * No pointer is tested for NULL. Nothing is allocated.
 * Threads: a table has no lock; whoever shares one guards it. */
#ifndef QZVEST_HASHID_H
#define QZVEST_HASHID_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMHashTableBytesNeeded - bytes of a table for the IDs 1 to maxID: 0 for 0, else a multiple of 4.
 *   maxID  0 or more */
SM_EXPORT uint32_t SMHashTableBytesNeeded(int32_t maxID);

/* SMClearHashTable - make all IDs free. Returns SM_STATUS_OK. */
SM_EXPORT uint32_t SMClearHashTable(SMHashTable *table, uint32_t bytes);

/* SMAcquireHashID - take an ID.
 *   mode  0: the lowest free one.
 *         1: the one above those in use in the last word that is partly used; in exact words, the lowest of that
 *            word's highest run of free IDs. Where no word is partly used, the lowest free one. Other words are
 *            not tried: after SMAcquireHashIDByID has taken ID 0 beside a full rest of word 0, and no later word
 *            is partly used, there is none to be had.
 * Returns the ID; 0 when there is none, bytes is below 4 or mode is another. */
SM_EXPORT uint32_t SMAcquireHashID(SMHashTable *table, uint32_t bytes, uint32_t mode);

/* The three calls below take IDs up to bytes * 8 - 1, reckoned in 32 bits: bytes must not be 0, for then every
 * ID would pass and memory outside the area be touched. */

/* SMAcquireHashIDByID - take the ID id; 0 is not refused.
 * Returns SM_STATUS_OK, SM_STATUS_ALREADY_EXISTS (in use), SM_STATUS_BAD_FORMAT (beyond the table). */
SM_EXPORT uint32_t SMAcquireHashIDByID(SMHashTable *table, uint32_t bytes, uint32_t id);

/* SMVerifyHashID - SM_STATUS_OK for an ID in use, SM_STATUS_NOT_IN_USE, or SM_STATUS_BAD_FORMAT (beyond the
 * table). */
SM_EXPORT uint32_t SMVerifyHashID(const SMHashTable *table, uint32_t bytes, uint32_t id);

/* SMReleaseHashID - give the ID id back.
 * Returns SM_STATUS_OK, SM_STATUS_NOT_IN_USE, SM_STATUS_BAD_FORMAT (beyond the table). */
SM_EXPORT uint32_t SMReleaseHashID(SMHashTable *table, uint32_t bytes, uint32_t id);

/* SMGetMinInUseID - the lowest ID in use, or 0. While ID 0 alone is in use of the IDs 0 to 31 it gives 0 too,
 * whatever follows. */
SM_EXPORT uint32_t SMGetMinInUseID(const SMHashTable *table, uint32_t bytes);

/* SMGetMaxInUseID - the highest ID in use, or 0. */
SM_EXPORT uint32_t SMGetMaxInUseID(const SMHashTable *table, uint32_t bytes);

/* SMFindFirstHashID, SMFindNextHashID - the IDs in use in ascending order, one a call.
 *   wordInOut, bitInOut  the place of the last ID found, its word and its bit in that; FindFirst starts them.
 *                        A bit above 31 means the end of that word.
 * Returns the ID, with its place stored; or 0 when there is none, with the place as it was (after
 * SMFindFirstHashID: 0 and 0). */
SM_EXPORT uint32_t SMFindFirstHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut);
SM_EXPORT uint32_t SMFindNextHashID(const SMHashTable *table, uint32_t bytes, uint32_t *wordInOut, uint32_t *bitInOut);

#ifdef __cplusplus
}
#endif

#endif
