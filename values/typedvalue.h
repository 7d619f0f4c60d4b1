// Typed values from text and back.
#ifndef VALUES_TYPEDVALUE_H
#define VALUES_TYPEDVALUE_H

#include <cstdint>

namespace qzvest {

// What the word of type and format is made of.
constexpr uint32_t kTypeMask = 0xFF;
constexpr uint32_t kFormatMask = 0xFF00;

uint32_t SMXLTUTF8ToTypeValue(char *text, void *value, uint32_t *sizeInOut, uint32_t typeAndFormat);
uint32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *sizeInOut,
                              uint32_t typeAndFormat);

} // namespace qzvest

#endif
