#include <qzvest/crc32.h>

#include "digest/crc32.h"

extern "C" {

uint32_t SMCRC32Compute_vn(const void *bytes, uint32_t size)
{
    return qzvest::SMCRC32Compute_vn(bytes, size);
}

uint32_t SMCRC32Compute_str(const char *text)
{
    return qzvest::SMCRC32Compute_str(text);
}

uint32_t SMCRC32Compute_strncase(const char *text)
{
    return qzvest::SMCRC32Compute_strncase(text);
}

uint32_t SMGenerateCRC32(const void *bytes, uint32_t size, uint32_t processed)
{
    return qzvest::SMGenerateCRC32(bytes, size, processed);
}

} // extern "C"
