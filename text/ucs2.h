// UCS-2 strings: 16-bit units in host byte order, ended by a zero unit. Everything here works on units; a surrogate
// pair is two of them.
#ifndef TEXT_UCS2_H
#define TEXT_UCS2_H

#include <qzvest/status.h>

namespace qzvest {

uint32_t SMUCS2Strlen(const uint16_t *string);
uint16_t *SMUCS2Strcpy(uint16_t *destination, const uint16_t *source);
uint16_t *SMUCS2Strcat(uint16_t *destination, const uint16_t *source);
uint16_t *SMUCS2Strncpy(uint16_t *destination, const uint16_t *source, uint32_t count);
uint16_t *SMUCS2Strncat(uint16_t *destination, const uint16_t *source, uint32_t count);
uint32_t SMUCS2Strcmp(const uint16_t *first, const uint16_t *second);
uint16_t *SMUCS2Strchr(const uint16_t *string, uint16_t unit);
uint16_t *SMUCS2Strstr(const uint16_t *haystack, const uint16_t *needle);
uint32_t SMUCS2Strspn(const uint16_t *string, const uint16_t *set);
uint32_t SMUCS2Strcspn(const uint16_t *string, const uint16_t *set);
uint16_t *SMUCS2Strtok(uint16_t *string, const uint16_t *delimiters);
uint16_t *SMUCS2Strset(uint16_t *string, uint16_t unit);
uint16_t *SMUCS2Strnset(uint16_t *string, uint16_t unit, uint32_t count);
uint16_t *SMUCS2Strrev(uint16_t *string);

// text/escape.cpp
uint32_t SMUCS2ToEscape(char *destination, uint32_t *sizeInOut, const uint16_t *source);

} // namespace qzvest

#endif
