/* CRC-32 of the IEEE 802.3 polynomial, and a second sum of its own kind.
 *
 * No call has a failure; pointers are not tested.
 * Threads: any number may compute at the same time. */
#ifndef QZVEST_CRC32_H
#define QZVEST_CRC32_H

#include <qzvest/export.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMCRC32Compute_vn - the CRC-32 of a buffer, the same as that of zlib.
 *   size  bytes at bytes
 * Returns the sum; 0 for no bytes. */
SM_EXPORT uint32_t SMCRC32Compute_vn(const void *bytes, uint32_t size);

/* SMCRC32Compute_str - the CRC-32 of a text without its terminator.
 * Returns the sum; 0 for the empty text. */
SM_EXPORT uint32_t SMCRC32Compute_str(const char *text);

/* SMCRC32Compute_strncase - the CRC-32 of a text folded to lower case, byte by byte, as tolower does in the
 * current locale. In spite of the name there is no length.
 * Returns the sum; 0 for the empty text. */
SM_EXPORT uint32_t SMCRC32Compute_strncase(const char *text);

/* SMGenerateCRC32 - a sum over a fixed number of bytes. It is another sum than that of the calls above, with
 * other values, and neither replaces the other.
 *   size       bytes at bytes; those beyond processed are not read
 *   processed  bytes that go into the sum: zeros follow the data up to this number
 * Returns the sum; 0xFFFFFFFF when processed is 0. */
SM_EXPORT uint32_t SMGenerateCRC32(const void *bytes, uint32_t size, uint32_t processed);

#ifdef __cplusplus
}
#endif

#endif
