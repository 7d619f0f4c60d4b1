#include <qzvest/typedvalue.h>

#include "values/typedvalue.h"

extern "C" {

uint32_t SMXLTUTF8ToTypeValue(char *text, void *value, uint32_t *sizeInOut, uint32_t typeAndFormat)
{
    return qzvest::SMXLTUTF8ToTypeValue(text, value, sizeInOut, typeAndFormat);
}

uint32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *sizeInOut,
                              uint32_t typeAndFormat)
{
    return qzvest::SMXLTTypeValueToUTF8(value, valueSize, text, sizeInOut, typeAndFormat);
}

} // extern "C"
