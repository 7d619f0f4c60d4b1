// Numbers from text. The format is one of SMXLT_FORMAT_...; each parser stores its status and gives 0 after a failure.
#ifndef VALUES_PARSE_H
#define VALUES_PARSE_H

#include <cstdint>

namespace qzvest {

// The low half of what the C library's long parsers give: what fits into 64 bits wraps and is taken.
int32_t SMXLTParseSigned32(const char *text, uint32_t format, uint32_t *statusOut);
uint32_t SMXLTParseUnsigned32(const char *text, uint32_t format, uint32_t *statusOut);

// Decimal ones wrap without a limit. Octal does not exist, hexadecimal only without a sign.
int64_t SMXLTParseSigned64(const char *text, uint32_t format, uint32_t *statusOut);
uint64_t SMXLTParseUnsigned64(const char *text, uint32_t format, uint32_t *statusOut);

// Never fails: no number is 0.0, and what follows a number is not looked at. The text is not NULL here.
double SMXLTParseDouble(const char *text, uint32_t format, uint32_t *statusOut);

} // namespace qzvest

#endif
