// Base64 text of bytes and back.
#ifndef DIGEST_BASE64_H
#define DIGEST_BASE64_H

#include <cstddef>
#include <cstdint>

namespace qzvest {

uint32_t SMBase64Encode(char *text, const void *bytes, int32_t size, const char *alphabet);
uint32_t SMBase64Decode(void *bytes, const char *text, int32_t length);

// The two directions with vector instructions, in base64_x86.cpp. Each does as much as its vectors take from
// the front, which may be nothing, and writes no byte beyond the result. Encoding is to the default alphabet
// and returns the bytes taken, a multiple of three. Decoding stops before a vector that holds anything but
// characters of the alphabet, and returns the groups of four taken, each of which gave three bytes.
size_t Base64EncodeVectors(char *text, const uint8_t *bytes, size_t size);
size_t Base64DecodeVectors(uint8_t *bytes, const char *text, size_t groups);

} // namespace qzvest

#endif
