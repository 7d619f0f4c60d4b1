/* Self-describing objects: an ordered set of entries in memory (SMSDOConfig) and its flat form, which
 * crosses process boundaries and is read in place (SMSDOBinary).
 *
 * An entry has an ID of 1 to 65533, a type byte that is not 0, and a value. The type byte: bits 0-3 the kind,
 * bit 4 the array flag, bits 5-7 carried for the caller. The kinds SM_SDO_KIND_FLAT and SM_SDO_KIND_OBJECT
 * are the library's; every other kind is opaque bytes under a number of the caller's choice.
 *
 * Flat object: numbers are in the host's byte order, nothing is padded or aligned.
 *   0  4 bytes  "BODS"
 *   4  2        count of entries
 *   6  2        size of the whole block in bytes
 *   8  8 each   descriptors in ascending ID order: id (2), type (1), storage (1), then
 *               storage bit 2 clear: a value of (storage & 3) + 1 bytes, the rest of the 4 bytes zero
 *               storage bit 2 set:   value length (2), offset of the value from this descriptor (2)
 *   then        the values of more than 4 bytes, back to back in descriptor order
 * Flat array: "BADS", count of elements (2), size (2), then flat objects back to back.
 * A nested object or array is a value of kind SM_SDO_KIND_FLAT: a whole flat block. No block exceeds 65535
 * bytes.
 *
 * Whoever reads a block trusts it: beyond the magic, neither sizes nor offsets nor the order of IDs are
 * checked against anything, so a block from a source that is not trusted must be checked before it is given
 * to any call here.
 *
 * Nesting costs up to 300 bytes of stack a level to flatten, rebuild, walk and free, and up to 64 KB of heap a level
 * to flatten and rebuild. A block can hold some 4000 levels, more than a thread with a small stack can take.
 *
 * Sizes are in bytes. A size word (sizeInOut) holds the buffer's size on entry.
 * Threads: objects and blocks have no lock. A block may be read by many threads as long as none changes it;
 * whoever shares an object guards it. */
#ifndef QZVEST_SDO_H
#define QZVEST_SDO_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Objects in memory ---- */

/* SMSDOConfigAlloc - a new, empty object. Returns NULL when memory runs out. The caller owns it and ends it
 * with SMSDOConfigFree, unless a parent object adopts it. */
SM_EXPORT SMSDOConfig *SMSDOConfigAlloc(void);

/* SMSDOConfigFree - end an object, its entries and every nested object that it owns. Nothing for NULL. */
SM_EXPORT void SMSDOConfigFree(SMSDOConfig *config);

/* SMSDOConfigGetCount - the number of entries; SM_SDO_NO_COUNT for NULL. */
SM_EXPORT uint32_t SMSDOConfigGetCount(const SMSDOConfig *config);

/* SMSDOConfigAddData - put one value into an object.
 *   id       1 to 65533; an object holds one value per ID
 *   type     type byte, not 0
 *   data     the value in host byte order. By kind:
 *            SM_SDO_KIND_OBJECT                      the nested SMSDOConfig itself
 *            SM_SDO_KIND_OBJECT | SM_SDO_ARRAY       a table of pointers to nested objects, none NULL
 *            SM_SDO_KIND_FLAT, array flag or not     a flat object or flat array, which is trusted; it is
 *                                                    rebuilt and becomes a nested object or array
 *   size     bytes at data, not 0; 8 for a single nested object, 8 each in a table; at least 4 for a flat value, which
 *            knows its own size
 *   replace  1: a value under this ID gives way to the new one; any other: the ID must be free
 * Returns SM_STATUS_OK;
 *   SM_STATUS_LIMIT_REACHED (65535 entries, or the object and the new value together would flatten to more
 *     than 65535 bytes; an old value about to be replaced still counts);
 *   SM_STATUS_ALREADY_EXISTS (ID taken, replace not 1);
 *   SM_STATUS_INVALID_PARAMETER (NULL, bad id, size or type, a flat value that is no block, a NULL or the
 *     object itself among nested objects);
 *   SM_STATUS_NO_MEMORY;
 *   for a flat value also SM_STATUS_FAILED (it, or an element of it, cannot be rebuilt, be it for lack of memory)
 *     and SM_STATUS_BAD_FORMAT (an element is no flat object).
 * On failure the object is as it was.
 * Ownership: plain data is copied. Nested objects pass to config on success, each to one place in one object, which is
 * not checked, and stay with the caller on failure; what was rebuilt from a flat value is freed on failure, but for an
 * object rebuilt for a config that has 65535 entries already. When nested objects replace nested objects and the first
 * size bytes of the two values differ, the old objects are freed, also those that the new table names again; when they
 * are the same, and when a plain value or an empty flat array, which has no bytes to differ, replaces nested objects,
 * the old ones are not freed. */
SM_EXPORT uint32_t SMSDOConfigAddData(SMSDOConfig *config, uint16_t id, uint8_t type, const void *data, uint32_t size,
                                      int16_t replace);

/* SMSDOConfigGetDataByID - read the value under an ID.
 *   typeOut    takes the type byte, or NULL
 *   buffer     takes the value, or NULL to ask for type and size
 *   sizeInOut  in: size of buffer; out: size of the value
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL (buffer NULL or short; typeOut and sizeInOut are set all
 *   the same), SM_STATUS_NOT_FOUND, SM_STATUS_INVALID_PARAMETER (config or sizeInOut NULL, bad id).
 * Ownership: for nested objects the value is the pointers; the objects stay the parent's. Their size must not
 * change there: the parent keeps the flat size that they had when they were added, cannot be flattened when
 * theirs is another, and subtracts the new one when they are removed or replaced. */
SM_EXPORT uint32_t SMSDOConfigGetDataByID(const SMSDOConfig *config, uint16_t id, uint8_t *typeOut, void *buffer,
                                          uint32_t *sizeInOut);

/* SMSDOConfigGetDataByIndex - read the value at a place in ID order. Costs a walk from the first entry.
 *   index      from 0
 *   idOut      takes the ID, not NULL
 * The rest, and the results, as in SMSDOConfigGetDataByID, but SM_STATUS_NOT_IN_USE for an index at or beyond
 * the count; idOut is set along with typeOut. */
SM_EXPORT uint32_t SMSDOConfigGetDataByIndex(const SMSDOConfig *config, uint32_t index, uint16_t *idOut,
                                             uint8_t *typeOut, void *buffer, uint32_t *sizeInOut);

/* SMSDOConfigRemoveData - remove one entry or all, and free the nested objects that go with them.
 *   id         the entry's ID; 0, 65534 or 65535: index selects the entry
 *   index      place in ID order, from 0; looked at only without a valid id
 *   removeAll  not 0: all entries; id and index are not looked at
 * Returns SM_STATUS_OK, SM_STATUS_NOT_FOUND (no such ID), SM_STATUS_NOT_IN_USE (index at or beyond the count),
 *   SM_STATUS_INVALID_PARAMETER (config NULL), SM_STATUS_FAILED (the object is inconsistent). */
SM_EXPORT uint32_t SMSDOConfigRemoveData(SMSDOConfig *config, uint16_t id, uint32_t index, uint16_t removeAll);

/* SMSDOConfigGetBinarySize - bytes of the flat form; 0 for NULL. Kept with every change, so this is cheap. */
SM_EXPORT uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig *config);

/* SMSDOConfigReCalcBinarySize - recompute and store the size. The sum is not the one that the other calls
 * keep: values of up to 4 bytes add their length to their descriptor's 8, and a nested array's header is left
 * out. An object to which that makes a difference can no longer be flattened, cloned or compared as equal. Nested
 * objects count with the size that they have now.
 * Returns the new size; 0 for NULL. */
SM_EXPORT uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig *config);

/* SMSDOConfigClone - a deep copy, by way of the flat form. Returns NULL for NULL, for an object that cannot be
 * flattened, and when memory runs out. The caller owns the copy. */
SM_EXPORT SMSDOConfig *SMSDOConfigClone(const SMSDOConfig *config);

/* SMSDOConfigCompareByValue - 1 when both flatten to the same bytes or both are NULL, else 0; 0 also when one
 * cannot be flattened or memory runs out. The order of adding plays no part; type bytes and exact lengths do. */
SM_EXPORT uint32_t SMSDOConfigCompareByValue(const SMSDOConfig *a, const SMSDOConfig *b);

/* SMSDOConfigToBinary - write the flat form.
 *   buffer     at any alignment
 *   sizeInOut  in: size of buffer, at least SMSDOConfigGetBinarySize; out: bytes written
 * Returns SM_STATUS_OK;
 *   SM_STATUS_BUFFER_TOO_SMALL (sizeInOut stays as it is: ask SMSDOConfigGetBinarySize);
 *   SM_STATUS_INVALID_PARAMETER (a NULL);
 *   SM_STATUS_FAILED (the bytes to write are not the size that the object keeps, because a nested object was
 *     changed or the size recalculated; or they are more than 65535; or memory ran out over a nested object. The
 *     buffer's content is undefined, sizeInOut holds the bytes it came to). Nothing is written beyond the buffer
 *     in any case. */
SM_EXPORT uint32_t SMSDOConfigToBinary(const SMSDOConfig *config, void *buffer, uint32_t *sizeInOut);

/* SMSDOConfigArrayToBinaryArray - flatten objects into a flat array.
 *   configs      configCount pointers; NULL ones are left out. The objects stay the caller's.
 *   configCount  0 or less: an empty array
 *   array        takes the array, or NULL for sizing
 *   sizeInOut    in: size of array; out: the array's size, or without array the sum of the objects alone,
 *                to which the caller adds SM_SDO_HEADER_SIZE
 * Returns SM_STATUS_OK, also when the array was too small: elements from the first that did not fit are left
 *     out then, and sizeInOut says how much all would take;
 *   SM_STATUS_BUFFER_TOO_SMALL (array below 8 bytes; or it has room for more than the 65535 bytes that an array
 *     can have, and the objects come to more);
 *   SM_STATUS_INVALID_PARAMETER (configs or sizeInOut NULL);
 *   SM_STATUS_NO_MEMORY, SM_STATUS_FAILED (an object cannot be flattened). On these failures sizeInOut stays, and
 *     array holds the objects before the one that failed. */
SM_EXPORT uint32_t SMSDOConfigArrayToBinaryArray(SMSDOConfig *const *configs, int32_t configCount,
                                                 SMSDOBinaryArray *array, uint32_t *sizeInOut);

/* ---- Flat objects ---- */

/* SMSDOBinaryToConfig - rebuild an object from a flat one.
 *   binary  trusted, see above
 * Returns the object, which is the caller's, or NULL: not a flat object; an ID that is bad or there twice; an
 * entry of type 0, of kind SM_SDO_KIND_OBJECT or of length 0; a nested value that is no block or cannot be
 * rebuilt; more than 65535 bytes in all; no memory. */
SM_EXPORT SMSDOConfig *SMSDOBinaryToConfig(const SMSDOBinary *binary);

/* SMSDOBinaryGetCount - entries of a flat object, or elements of a flat array; SM_SDO_NO_COUNT for anything
 * else.
 * SMSDOBinaryGetSize - bytes of the whole block; 0 for anything else.
 *   isArrayOut  takes 1 for a flat array, else 0; or NULL */
SM_EXPORT uint32_t SMSDOBinaryGetCount(const SMSDOBinary *binary, uint16_t *isArrayOut);
SM_EXPORT uint32_t SMSDOBinaryGetSize(const SMSDOBinary *binary, uint16_t *isArrayOut);

/* SMSDOBinaryGetDataByID - read the value under an ID in place.
 *   typeOut    takes the type byte, or NULL
 *   buffer     takes the value, or NULL to ask for the size
 *   sizeInOut  in: size of buffer; out: size of the value. A value of up to 4 bytes counts as 4 here and is
 *              copied with what stands behind it, zeros unless SMSDOBinarySetData made it shorter;
 *              SMSDOBinaryGetDataByIndex tells its true length.
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL (buffer NULL or short; sizeInOut is set, typeOut is not),
 *   SM_STATUS_NOT_FOUND, SM_STATUS_BAD_FORMAT (not a flat object), SM_STATUS_INVALID_PARAMETER (binary or
 *   sizeInOut NULL, bad id). */
SM_EXPORT uint32_t SMSDOBinaryGetDataByID(const SMSDOBinary *binary, uint16_t id, uint8_t *typeOut, void *buffer,
                                          uint32_t *sizeInOut);

/* SMSDOBinaryGetDataByIndex - read the value of the index-th descriptor in place, with its true length.
 *   index      from 0
 *   idOut      takes the ID, not NULL
 * The rest as in SMSDOBinaryGetDataByID, but SM_STATUS_NOT_IN_USE for an index at or beyond the count, which is
 * tested before the magic. With SM_STATUS_BUFFER_TOO_SMALL neither idOut nor typeOut is set. */
SM_EXPORT uint32_t SMSDOBinaryGetDataByIndex(const SMSDOBinary *binary, uint32_t index, uint16_t *idOut,
                                             uint8_t *typeOut, void *buffer, uint32_t *sizeInOut);

/* SMSDOBinarySetData - give an existing entry a new value: in place where it fits the old one's room, else by
 * rebuilding the block where it lies.
 *   binary     the block; the memory there must be as large as sizeInOut says
 *   sizeInOut  in: bytes of memory at binary, at least 16; out: the block's size
 *   id, type   as in the block
 *   data       the new value, not NULL; for nested entries a flat block
 *   size       bytes at data. A short value written over a short one leaves the old bytes behind it; size 0 there
 *              leaves all four bytes and makes the length 4, elsewhere it is SM_STATUS_INVALID_PARAMETER. A
 *              value as long as the old one is copied as it is, a nested block too.
 * Returns SM_STATUS_OK;
 *   SM_STATUS_BUFFER_TOO_SMALL (sizeInOut below 16; or too small for the new block: the needed size is stored;
 *     or the block cannot be rebuilt or memory ran out doing so);
 *   SM_STATUS_NOT_FOUND (no such ID, or its type is another);
 *   SM_STATUS_INVALID_PARAMETER (a NULL, bad id, type 0, not a flat object; a nested value that is no block);
 *   SM_STATUS_LIMIT_REACHED (the block as it is and the new value together would exceed 65535 bytes),
 *   SM_STATUS_NO_MEMORY, SM_STATUS_FAILED, SM_STATUS_BAD_FORMAT, as SMSDOConfigAddData gives them.
 * On failure the block is as it was, and sizeInOut too where nothing else is said. */
SM_EXPORT uint32_t SMSDOBinarySetData(SMSDOBinary *binary, uint32_t *sizeInOut, uint16_t id, uint8_t type,
                                      const void *data, uint32_t size);

/* SMSDOBinaryWalk - read a whole block in document order, by callbacks (types.h).
 *   binary       flat object or flat array
 *   context      handed to the callbacks
 *   objectBegin, entry     must not be NULL
 *   entryEnd, objectEnd    may be NULL
 *   recurse      1: nested blocks and elements of arrays are walked too; else they are only shown
 * A non-zero status of a callback ends the walk, but for entryEnd, whose last status counts only where there is
 * no objectEnd: it is then the result of its block, and so ends the walk when the block is nested or an element.
 * A block without entries makes no callback at all.
 * Returns what ended the walk, what the last callback gave, SM_STATUS_OK, or SM_STATUS_INVALID_PARAMETER (no
 *   block, also for a nested one). */
SM_EXPORT uint32_t SMSDOBinaryWalk(const SMSDOBinary *binary, void *context, SMSDOObjectBeginCallback objectBegin,
                                   SMSDOEntryCallback entry, SMSDOEntryEndCallback entryEnd,
                                   SMSDOObjectEndCallback objectEnd, int16_t recurse);

/* ---- Flat arrays ---- */

/* SMSDOBinaryArrayInitHeader - write an empty flat array.
 *   bufferSize  bytes at array, at least 8
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_INVALID_PARAMETER (NULL). */
SM_EXPORT uint32_t SMSDOBinaryArrayInitHeader(SMSDOBinaryArray *array, uint32_t bufferSize);

/* SMSDOBinaryArrayAddData - append a flat object to a flat array. Steps over all elements to find the end.
 *   sizeInOut   in: bytes of memory at array; stays as it is on success
 *   binary      copied, not checked; it must be a flat object, or the elements behind it are lost
 *   binarySize  its bytes
 * Returns SM_STATUS_OK;
 *   SM_STATUS_BUFFER_TOO_SMALL (below 16 bytes: sizeInOut stays; or too small: the needed size is stored there; or
 *     the array would reach 65536 bytes: sizeInOut stays);
 *   SM_STATUS_INVALID_PARAMETER (a NULL, not a flat array). On failure the array is as it was. */
SM_EXPORT uint32_t SMSDOBinaryArrayAddData(SMSDOBinaryArray *array, uint32_t *sizeInOut, const SMSDOBinary *binary,
                                           uint32_t binarySize);

/* SMSDOBinaryArrayGetByIndex - copy one element out. Steps over the elements before it.
 *   arraySize  not looked at
 *   index      from 0
 *   buffer     takes the flat object, or NULL to ask for its size
 *   sizeInOut  in: size of buffer; out: the element's size
 * Returns SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL (buffer NULL or short), SM_STATUS_NOT_FOUND (index at or beyond
 *   the count), SM_STATUS_BAD_FORMAT (not a flat array, or the element is no flat object),
 *   SM_STATUS_INVALID_PARAMETER (array or sizeInOut NULL). */
SM_EXPORT uint32_t SMSDOBinaryArrayGetByIndex(const SMSDOBinaryArray *array, uint32_t arraySize, uint32_t index,
                                              void *buffer, uint32_t *sizeInOut);

/* SMSDOBinaryArrayToConfigArray - rebuild every element.
 *   configs     table that takes the objects, which are the caller's; it must be cleared beforehand
 *   countInOut  in: slots of the table, read as a signed number; out: objects in it
 * Returns SM_STATUS_OK;
 *   SM_STATUS_BUFFER_TOO_SMALL (too few slots: the count needed is stored);
 *   SM_STATUS_BAD_FORMAT (not a flat array, or an element is no flat object);
 *   SM_STATUS_INVALID_PARAMETER (a NULL; configs may be NULL for an empty array);
 *   SM_STATUS_NO_MEMORY, SM_STATUS_FAILED (an element cannot be rebuilt, be it for lack of memory).
 * After the last two, and after a bad element, every object in the whole table is freed and its slot
 * cleared. countInOut stays as it was on every failure but SM_STATUS_BUFFER_TOO_SMALL. */
SM_EXPORT uint32_t SMSDOBinaryArrayToConfigArray(const SMSDOBinaryArray *array, SMSDOConfig **configs,
                                                 uint32_t *countInOut);

#ifdef __cplusplus
}
#endif

#endif
