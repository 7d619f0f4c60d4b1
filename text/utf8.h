// Small tools on NUL-terminated byte strings. In spite of the name none decodes UTF-8: all work on bytes.
#ifndef TEXT_UTF8_H
#define TEXT_UTF8_H

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "frame/heap.h"

namespace qzvest {

char *SMUTF8ltrim(char *string);
char *SMUTF8rtrim(char *string);
char *SMUTF8trim(char *string);
char *SMUTF8StrUpperCase(char *string);
char *SMUTF8StrLowerCase(char *string);
char *SMUTF8Strrev(char *string);
char *SMUTF8Strdup(const char *string);
int32_t SMUTF8Strnicmp(const char *first, const char *second, uint32_t maximum);
char *SMUTF8Strstri(const char *haystack, const char *needle);

// Of the letters of ASCII, whatever the locale says.
constexpr char AsciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char AsciiUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// White space of files and trimmed texts. Not isspace: vertical tab and form feed are text here.
constexpr bool IsTextSpace(char c)
{
    return c == '\t' || c == '\n' || c == '\r' || c == ' ';
}

// The pieces as one text with a terminator; empty when memory runs out.
HeapPtr<char> UTF8Join(std::initializer_list<std::string_view> pieces);

inline HeapPtr<char> UTF8Copy(std::string_view text)
{
    return UTF8Join({text});
}

// SMUTF8Strdup that tells the bytes of the copy, terminator included; 0 when there is none. sizeOut may be NULL.
char *UTF8StrdupSized(const char *string, uint32_t *sizeOut);

} // namespace qzvest

#endif
