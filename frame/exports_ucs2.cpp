#include <qzvest/ucs2.h>

#include "text/ucs2.h"

extern "C" {

uint32_t SMUCS2Strlen(const uint16_t *string)
{
    return qzvest::SMUCS2Strlen(string);
}

uint16_t *SMUCS2Strcpy(uint16_t *destination, const uint16_t *source)
{
    return qzvest::SMUCS2Strcpy(destination, source);
}

uint16_t *SMUCS2Strcpy_s(uint16_t *destination, uint32_t, const uint16_t *source)
{
    return qzvest::SMUCS2Strcpy(destination, source);
}

uint16_t *SMUCS2Strcat(uint16_t *destination, const uint16_t *source)
{
    return qzvest::SMUCS2Strcat(destination, source);
}

uint16_t *SMUCS2Strcat_s(uint16_t *destination, uint32_t, const uint16_t *source)
{
    return qzvest::SMUCS2Strcat(destination, source);
}

uint16_t *SMUCS2Strncpy(uint16_t *destination, const uint16_t *source, uint32_t count)
{
    return qzvest::SMUCS2Strncpy(destination, source, count);
}

uint16_t *SMUCS2Strncpy_s(uint16_t *destination, uint32_t, const uint16_t *source, uint32_t count)
{
    return qzvest::SMUCS2Strncpy(destination, source, count);
}

uint16_t *SMUCS2Strncat(uint16_t *destination, const uint16_t *source, uint32_t count)
{
    return qzvest::SMUCS2Strncat(destination, source, count);
}

uint16_t *SMUCS2Strncat_s(uint16_t *destination, uint32_t, const uint16_t *source, uint32_t count)
{
    return qzvest::SMUCS2Strncat(destination, source, count);
}

uint32_t SMUCS2Strcmp(const uint16_t *first, const uint16_t *second)
{
    return qzvest::SMUCS2Strcmp(first, second);
}

uint16_t *SMUCS2Strchr(const uint16_t *string, uint16_t unit)
{
    return qzvest::SMUCS2Strchr(string, unit);
}

uint16_t *SMUCS2Strstr(const uint16_t *haystack, const uint16_t *needle)
{
    return qzvest::SMUCS2Strstr(haystack, needle);
}

uint32_t SMUCS2Strspn(const uint16_t *string, const uint16_t *set)
{
    return qzvest::SMUCS2Strspn(string, set);
}

uint32_t SMUCS2Strcspn(const uint16_t *string, const uint16_t *set)
{
    return qzvest::SMUCS2Strcspn(string, set);
}

uint16_t *SMUCS2Strtok(uint16_t *string, const uint16_t *delimiters)
{
    return qzvest::SMUCS2Strtok(string, delimiters);
}

uint16_t *SMUCS2Strtok_s(uint16_t *string, const uint16_t *delimiters, uint16_t **)
{
    return qzvest::SMUCS2Strtok(string, delimiters);
}

uint16_t *SMUCS2Strset(uint16_t *string, uint16_t unit)
{
    return qzvest::SMUCS2Strset(string, unit);
}

uint16_t *SMUCS2Strset_s(uint16_t *string, uint32_t, uint16_t unit)
{
    return qzvest::SMUCS2Strset(string, unit);
}

uint16_t *SMUCS2Strnset(uint16_t *string, uint16_t unit, uint32_t count)
{
    return qzvest::SMUCS2Strnset(string, unit, count);
}

uint16_t *SMUCS2Strnset_s(uint16_t *string, uint32_t, uint16_t unit, uint32_t count)
{
    return qzvest::SMUCS2Strnset(string, unit, count);
}

uint16_t *SMUCS2Strrev(uint16_t *string)
{
    return qzvest::SMUCS2Strrev(string);
}

uint32_t SMUCS2ToEscape(char *destination, uint32_t *sizeInOut, const uint16_t *source)
{
    return qzvest::SMUCS2ToEscape(destination, sizeInOut, source);
}

} // extern "C"
