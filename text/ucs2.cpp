#include "text/ucs2.h"

#include <cstddef>
#include <cstring>

#include "text/unitcount.h"

namespace qzvest {
namespace {

// Where SMUCS2Strtok goes on; NULL when there is nothing left. One for all threads and without a lock: callers see to
// it that no two threads split at once.
uint16_t *tokenPosition;

bool Contains(const uint16_t *set, uint16_t unit)
{
    for (; *set != 0; ++set) {
        if (*set == unit)
            return true;
    }
    return false;
}

// Units of the opening run that are all in the set, or all outside it.
uint32_t Run(const uint16_t *string, const uint16_t *set, bool inside)
{
    uint32_t length = 0;
    while (string[length] != 0 && Contains(set, string[length]) == inside)
        ++length;
    return length;
}

size_t Bytes(uint32_t units)
{
    return size_t{units} * sizeof(uint16_t);
}

} // namespace

uint32_t SMUCS2Strlen(const uint16_t *string)
{
    return static_cast<uint32_t>(UnitCount(string));
}

uint16_t *SMUCS2Strcpy(uint16_t *destination, const uint16_t *source)
{
    uint16_t *to = destination;
    while ((*to++ = *source++) != 0) {
    }
    return destination;
}

uint16_t *SMUCS2Strcat(uint16_t *destination, const uint16_t *source)
{
    (void)SMUCS2Strcpy(destination + SMUCS2Strlen(destination), source);
    return destination;
}

// Neither pads nor, after count units, terminates.
uint16_t *SMUCS2Strncpy(uint16_t *destination, const uint16_t *source, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i) {
        destination[i] = source[i];
        if (source[i] == 0)
            break;
    }
    return destination;
}

uint16_t *SMUCS2Strncat(uint16_t *destination, const uint16_t *source, uint32_t count)
{
    if (count == 0)
        return destination;
    uint16_t *to = destination + SMUCS2Strlen(destination);
    for (uint32_t i = 0; i < count; ++i) {
        to[i] = source[i];
        if (to[i] == 0)
            return destination;
    }
    to[count] = 0;
    return destination;
}

uint32_t SMUCS2Strcmp(const uint16_t *first, const uint16_t *second)
{
    while (*first == *second && *first != 0) {
        ++first;
        ++second;
    }
    // Cut to 16 bits, so a first string that sorts lower gives a large number. Callers ask for equality alone.
    return static_cast<uint16_t>(*first - *second);
}

uint16_t *SMUCS2Strchr(const uint16_t *string, uint16_t unit)
{
    while (*string != unit) {
        if (*string++ == 0)
            return nullptr;
    }
    return const_cast<uint16_t *>(string);
}

uint16_t *SMUCS2Strstr(const uint16_t *haystack, const uint16_t *needle)
{
    const uint32_t length = SMUCS2Strlen(haystack);
    const uint32_t wanted = SMUCS2Strlen(needle);
    if (wanted > length)
        return nullptr;
    for (uint32_t at = 0; at <= length - wanted; ++at) {
        if (std::memcmp(haystack + at, needle, Bytes(wanted)) == 0)
            return const_cast<uint16_t *>(haystack + at);
    }
    return nullptr;
}

uint32_t SMUCS2Strspn(const uint16_t *string, const uint16_t *set)
{
    return Run(string, set, true);
}

uint32_t SMUCS2Strcspn(const uint16_t *string, const uint16_t *set)
{
    return Run(string, set, false);
}

uint16_t *SMUCS2Strtok(uint16_t *string, const uint16_t *delimiters)
{
    if (string == nullptr)
        string = tokenPosition;
    tokenPosition = nullptr;
    if (string == nullptr)
        return nullptr;
    string += SMUCS2Strspn(string, delimiters);
    if (*string == 0)
        return nullptr;
    uint16_t *end = string + SMUCS2Strcspn(string, delimiters);
    if (*end != 0) {
        *end = 0;
        tokenPosition = end + 1;
    }
    return string;
}

uint16_t *SMUCS2Strset(uint16_t *string, uint16_t unit)
{
    for (uint16_t *to = string; *to != 0; ++to)
        *to = unit;
    return string;
}

// Looks at nothing: neither stops at the terminator nor writes one.
uint16_t *SMUCS2Strnset(uint16_t *string, uint16_t unit, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
        string[i] = unit;
    return string;
}

uint16_t *SMUCS2Strrev(uint16_t *string)
{
    uint16_t *low = string;
    uint16_t *high = string + SMUCS2Strlen(string);
    while (high - low > 1) {
        const uint16_t unit = *low;
        *low++ = *--high;
        *high = unit;
    }
    return string;
}

} // namespace qzvest
