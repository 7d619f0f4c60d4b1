#include <qzvest/parameter.h>

#include "values/parameter.h"

extern "C" {

uint32_t SMIsValidParam(const char *text)
{
    return qzvest::SMIsValidParam(text);
}

char *SMNVPGetUTF8ParamName(char *text)
{
    return qzvest::SMNVPGetUTF8ParamName(text);
}

char *SMNVPGetUTF8ParamValue(char *text)
{
    return qzvest::SMNVPGetUTF8ParamValue(text);
}

int32_t SMNVPGetParamIndexByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase)
{
    return qzvest::SMNVPGetParamIndexByUTF8Name(argc, argv, name, ignoreCase);
}

char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase)
{
    return qzvest::SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, name, ignoreCase);
}

uint32_t SMNVPUTF8ToTypeValue(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase, void *value,
                              uint32_t *sizeInOut, uint32_t typeAndFormat)
{
    return qzvest::SMNVPUTF8ToTypeValue(argc, argv, name, ignoreCase, value, sizeInOut, typeAndFormat);
}

uint32_t SMNVPGetEnums32Value(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase,
                              const SMNVPEnumEntry *table, int32_t tableCount, uint16_t maskMode)
{
    return qzvest::SMNVPGetEnums32Value(argc, argv, name, ignoreCase, table, tableCount, maskMode);
}

} // extern "C"
