#include "text/utf8.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace qzvest {
namespace {

uint8_t Byte(char c)
{
    return static_cast<uint8_t>(c);
}

int32_t Folded(char c)
{
    return Byte(AsciiLower(c));
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
    for (; IsTextSpace(*string); ++string)
        *string = '\0';
    return string;
}

char *SMUTF8rtrim(char *string)
{
    if (string == nullptr)
        return nullptr;
    for (char *end = string + std::strlen(string); end != string && IsTextSpace(end[-1]);)
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
    HeapPtr<char> copy = UTF8Copy({string, size - 1});
    if (!copy)
        return nullptr;
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

HeapPtr<char> UTF8Join(std::initializer_list<std::string_view> pieces)
{
    size_t length = 0;
    for (const std::string_view piece : pieces)
        length += piece.size();
    HeapPtr<char> text = HeapRoom<char>(length + 1);
    if (!text)
        return nullptr;
    char *end = text.get();
    for (const std::string_view piece : pieces)
        end = std::copy(piece.begin(), piece.end(), end);
    *end = '\0';
    return text;
}

} // namespace qzvest
