#include <qzvest/base64.h>

#include "digest/base64.h"

extern "C" {

uint32_t SMBase64Encode(char *text, const void *bytes, int32_t size, const char *alphabet)
{
    return qzvest::SMBase64Encode(text, bytes, size, alphabet);
}

uint32_t SMBase64Decode(void *bytes, const char *text, int32_t length)
{
    return qzvest::SMBase64Decode(bytes, text, length);
}

} // extern "C"
