#include <qzvest/utf8.h>

#include "text/utf8.h"

extern "C" {

char *SMUTF8ltrim(char *string)
{
    return qzvest::SMUTF8ltrim(string);
}

char *SMUTF8rtrim(char *string)
{
    return qzvest::SMUTF8rtrim(string);
}

char *SMUTF8trim(char *string)
{
    return qzvest::SMUTF8trim(string);
}

char *SMUTF8StrUpperCase(char *string)
{
    return qzvest::SMUTF8StrUpperCase(string);
}

char *SMUTF8StrLowerCase(char *string)
{
    return qzvest::SMUTF8StrLowerCase(string);
}

char *SMUTF8Strrev(char *string)
{
    return qzvest::SMUTF8Strrev(string);
}

char *SMUTF8Strdup(const char *string)
{
    return qzvest::SMUTF8Strdup(string);
}

int32_t SMUTF8Strnicmp(const char *first, const char *second, uint32_t maximum)
{
    return qzvest::SMUTF8Strnicmp(first, second, maximum);
}

char *SMUTF8Strstri(const char *haystack, const char *needle)
{
    return qzvest::SMUTF8Strstri(haystack, needle);
}

} // extern "C"
