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

// The value of the first row behind row 0 that has this word, in any case; of row 0 if none has.
uint32_t EnumValueOf(const char *word, const SMNVPEnumEntry *table, int32_t tableCount);

// The same of each word of a multi-string, or'ed; a word that no row has adds nothing.
uint32_t EnumMaskOf(const char *words, const SMNVPEnumEntry *table, int32_t tableCount);

} // namespace qzvest

#endif
