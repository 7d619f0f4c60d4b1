// CRC-32 of the IEEE 802.3 polynomial, by a table that lives from attach to detach.
#ifndef DIGEST_CRC32_H
#define DIGEST_CRC32_H

#include <cstddef>
#include <cstdint>

namespace qzvest {

// The attach step of the table: 1 when it is up, 0 when memory ran out.
int CRC32TableAttach();
void CRC32TableDetach();

uint32_t SMCRC32Compute_vn(const void *bytes, uint32_t size);
uint32_t SMCRC32Compute_str(const char *text);
uint32_t SMCRC32Compute_strncase(const char *text);
uint32_t SMGenerateCRC32(const void *bytes, uint32_t size, uint32_t processed);

// The register after size more bytes, without inversion at either end: byte by byte, and by lanes. Both give
// the same; the calls above take the second.
uint32_t CRC32UpdateBytes(uint32_t value, const uint8_t *bytes, size_t size);
uint32_t CRC32UpdateLanes(uint32_t value, const uint8_t *bytes, size_t size);

} // namespace qzvest

#endif
