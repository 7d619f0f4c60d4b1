// Text between the two encodings of the library. Sizes are bytes and include the terminator.
#ifndef TEXT_TRANSCODE_H
#define TEXT_TRANSCODE_H

#include <qzvest/status.h>

namespace qzvest {

uint32_t SMUCS2StrToUTF8Str(char *destination, uint32_t *sizeInOut, const uint16_t *source);
uint32_t SMUTF8StrToUCS2Str(uint16_t *destination, uint32_t *sizeInOut, const char *source);

// The same without the test of source and sizeInOut for NULL.
uint32_t UCS2ToUTF8Convert(char *destination, uint32_t *sizeInOut, const uint16_t *source);
uint32_t UTF8ToUCS2Convert(uint16_t *destination, uint32_t *sizeInOut, const char *source);

// What the two do on a machine without vector instructions of ours; the tests hold both forms against each other.
uint32_t UCS2ToUTF8Portable(char *destination, uint32_t *sizeInOut, const uint16_t *source);
uint32_t UTF8ToUCS2Portable(uint16_t *destination, uint32_t *sizeInOut, const char *source);

} // namespace qzvest

#endif
