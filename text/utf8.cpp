#include "text/utf8.h"

#include <strings.h>

#include <cctype>
#include <cstring>

#include "compat/string.h"
#include "frame/heap.h"

namespace qzvest {
namespace {

uint8_t Byte(char c)
{
    return static_cast<uint8_t>(c);
}

// Tab, line feed, carriage return and blank. Not isspace: vertical tab and form feed are text here.
bool IsTrimmed(char c)
{
    constexpr uint64_t kSet = UINT64_C(1) << 0x09 | UINT64_C(1) << 0x0A | UINT64_C(1) << 0x0D | UINT64_C(1) << 0x20;
    return Byte(c) <= 0x20 && (kSet >> Byte(c) & 1) != 0;
}

// Folds ASCII letters alone, whatever the locale.
int32_t Folded(char c)
{
    return Byte(c) + (Byte(c) >= 0x41 && Byte(c) <= 0x5A ? 0x20 : 0);
}

// Through the locale's table, as toupper and tolower use it.
char *MapBytes(char *string, int (*map)(int))
{
    for (char *at = string; *at != '\0'; ++at)
        *at = static_cast<char>(map(Byte(*at)));
    return string;
}

} // namespace

// Leading whitespace is zeroed where it stands and not moved away, so the caller's old pointer then leads to an
// empty string. Callers that keep both pointers count on it.
char *SMUTF8ltrim(char *string)
{
    if (string == nullptr)
        return nullptr;
    for (; IsTrimmed(*string); ++string)
        *string = '\0';
    return string;
}

char *SMUTF8rtrim(char *string)
{
    if (string == nullptr)
        return nullptr;
    for (char *end = string + std::strlen(string); end != string && IsTrimmed(end[-1]);)
        *--end = '\0';
    return string;
}

char *SMUTF8trim(char *string)
{
    return SMUTF8rtrim(SMUTF8ltrim(string));
}

char *SMUTF8StrUpperCase(char *string)
{
    return MapBytes(string, std::toupper);
}

char *SMUTF8StrLowerCase(char *string)
{
    return MapBytes(string, std::tolower);
}

char *SMUTF8Strrev(char *string)
{
    const size_t length = std::strlen(string);
    for (size_t i = 0; i < length / 2; ++i) {
        const char c = string[i];
        string[i] = string[length - 1 - i];
        string[length - 1 - i] = c;
    }
    return string;
}

char *SMUTF8Strdup(const char *string)
{
    return UTF8StrdupSized(string, nullptr);
}

char *UTF8StrdupSized(const char *string, uint32_t *sizeOut)
{
    if (sizeOut != nullptr)
        *sizeOut = 0;
    if (string == nullptr)
        return nullptr;
    const size_t size = std::strlen(string) + 1;
    HeapPtr<char> copy(HeapRoom<char>(size));
    if (!copy)
        return nullptr;
    (void)strcpy_s(copy.get(), size, string); // cannot fail: the room was measured for it
    if (sizeOut != nullptr)
        *sizeOut = static_cast<uint32_t>(size);
    return copy.release();
}

int32_t SMUTF8Strnicmp(const char *first, const char *second, uint32_t maximum)
{
    if (maximum == 0)
        return 0;
    uint32_t at = 0;
    while (at != maximum - 1 && first[at] != '\0' && Folded(first[at]) == Folded(second[at]))
        ++at;
    return Folded(first[at]) - Folded(second[at]);
}

// Unlike SMUTF8Strnicmp this follows the locale.
char *SMUTF8Strstri(const char *haystack, const char *needle)
{
    if (haystack == nullptr || needle == nullptr)
        return nullptr;
    const size_t needleLength = std::strlen(needle);
    const size_t haystackLength = std::strlen(haystack);
    if (needleLength > haystackLength)
        return nullptr;
    const char *last = haystack + (haystackLength - needleLength);
    const int first = std::tolower(Byte(*needle)); // saves most calls of strncasecmp
    for (const char *at = haystack; at <= last; ++at) {
        if (needleLength == 0 || (std::tolower(Byte(*at)) == first && strncasecmp(at, needle, needleLength) == 0))
            return const_cast<char *>(at);
    }
    return nullptr;
}

char *UTF8Joined(const char *first, const char *second, const char *third)
{
    const size_t sizes[] = {std::strlen(first), std::strlen(second), std::strlen(third) + 1};
    char *const text = static_cast<char *>(std::malloc(sizes[0] + sizes[1] + sizes[2]));
    if (text == nullptr)
        return nullptr;
    std::memcpy(text, first, sizes[0]);
    std::memcpy(text + sizes[0], second, sizes[1]);
    std::memcpy(text + sizes[0] + sizes[1], third, sizes[2]);
    return text;
}

} // namespace qzvest
