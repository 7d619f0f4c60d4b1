// Parameters of the form name=value, read where they stand in the caller's vector.
#ifndef VALUES_PARAMETER_H
#define VALUES_PARAMETER_H

#include <qzvest/types.h>

#include <cstdint>

namespace qzvest {

uint32_t SMIsValidParam(const char *text);
char *SMNVPGetUTF8ParamName(char *text);
char *SMNVPGetUTF8ParamValue(char *text);
int32_t SMNVPGetParamIndexByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase);
char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase);
uint32_t SMNVPUTF8ToTypeValue(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase, void *value,
                              uint32_t *sizeInOut, uint32_t typeAndFormat);
uint32_t SMNVPGetEnums32Value(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase,
                              const SMNVPEnumEntry *table, int32_t tableCount, uint16_t maskMode);

} // namespace qzvest

#endif
