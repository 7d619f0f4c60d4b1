#include "values/parameter.h"

#include <qzvest/status.h>

#include <strings.h>

#include <cctype>
#include <cstring>

#include "config/delimited.h"
#include "frame/heap.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

// The "=" that ends the name; NULL when the text is no parameter.
char *FindAssignment(char *text)
{
    if (text == nullptr || *text == '=')
        return nullptr;
    return std::strchr(text, '=');
}

// The "=" itself is looked for as a byte.
int FoldedByLocale(char c, bool ignoreCase)
{
    const auto byte = static_cast<uint8_t>(c);
    return ignoreCase ? std::tolower(byte) : byte;
}

// A name given with its "=" matches as well, and what stands behind that "=" is not looked at.
bool IsParameterOfName(const char *text, const char *name, bool ignoreCase)
{
    if (*text == '=')
        return false;
    for (;; ++text, ++name) {
        if (FoldedByLocale(*text, ignoreCase) != FoldedByLocale(*name, ignoreCase))
            return *name == '\0' && *text == '=';
        if (*text == '=' || *text == '\0')
            return *text == '=';
    }
}

// The rows behind row 0, which is never matched by its word.
const SMNVPEnumEntry *FindRow(const SMNVPEnumEntry *table, int32_t tableCount, const char *word)
{
    for (int32_t i = 1; i < tableCount; ++i) {
        if (strcasecmp(word, table[i].name) == 0)
            return &table[i];
    }
    return nullptr;
}

// "|" goes before ",". Whether it split is told by the text alone: blanks trimmed off an end count as a split too, and
// a text that only the second try could copy, and did not change, as a failure.
HeapPtr<char> SplitWords(const char *text)
{
    HeapPtr<char> words(SMUTF8ConvertXSVToYSV(text, '|', '\0', nullptr, nullptr));
    if (words && (std::strcmp(words.get(), text) != 0 || std::strchr(text, ',') == nullptr))
        return words;
    words.reset(SMUTF8ConvertXSVToYSV(text, ',', '\0', nullptr, nullptr));
    if (words && std::strcmp(words.get(), text) == 0)
        words.reset();
    return words;
}

uint32_t ReadMask(const char *text, const SMNVPEnumEntry *table, int32_t tableCount)
{
    const HeapPtr<char> words = SplitWords(text);
    return words ? EnumMaskOf(words.get(), table, tableCount) : SM_ENUM_UNREADABLE;
}

} // namespace

uint32_t EnumValueOf(const char *word, const SMNVPEnumEntry *table, int32_t tableCount)
{
    const SMNVPEnumEntry *row = FindRow(table, tableCount, word);
    return row != nullptr ? row->value : table[0].value;
}

uint32_t EnumMaskOf(const char *words, const SMNVPEnumEntry *table, int32_t tableCount)
{
    uint32_t mask = 0;
    for (const char *word = words; *word != '\0'; word += std::strlen(word) + 1) {
        if (const SMNVPEnumEntry *row = FindRow(table, tableCount, word); row != nullptr)
            mask |= row->value;
    }
    return mask;
}

uint32_t SMIsValidParam(const char *text)
{
    return FindAssignment(const_cast<char *>(text)) != nullptr ? 1 : 0;
}

char *SMNVPGetUTF8ParamName(char *text)
{
    char *const assignment = FindAssignment(text);
    if (assignment == nullptr)
        return nullptr;
    *assignment = '\0';
    return text;
}

char *SMNVPGetUTF8ParamValue(char *text)
{
    char *const assignment = FindAssignment(text);
    return assignment != nullptr ? assignment + 1 : nullptr;
}

int32_t SMNVPGetParamIndexByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase)
{
    if (argv == nullptr || name == nullptr)
        return -1;
    for (int32_t i = 0; i < argc; ++i) {
        if (IsParameterOfName(argv[i], name, ignoreCase == 1))
            return i;
    }
    return -1;
}

char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase)
{
    const int32_t index = SMNVPGetParamIndexByUTF8Name(argc, argv, name, ignoreCase);
    return index >= 0 ? SMNVPGetUTF8ParamValue(argv[index]) : nullptr;
}

uint32_t SMNVPUTF8ToTypeValue(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase, void *value,
                              uint32_t *sizeInOut, uint32_t typeAndFormat)
{
    if (argv == nullptr || value == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    char *const text = SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, name, ignoreCase);
    if (text == nullptr)
        return SM_STATUS_NOT_FOUND;
    return SMXLTUTF8ToTypeValue(text, value, sizeInOut, typeAndFormat);
}

uint32_t SMNVPGetEnums32Value(int32_t argc, char *const *argv, const char *name, int16_t ignoreCase,
                              const SMNVPEnumEntry *table, int32_t tableCount, uint16_t maskMode)
{
    if (argv == nullptr || name == nullptr || table == nullptr || tableCount < 2)
        return SM_ENUM_UNREADABLE;
    const char *const text = SMNVPGetUTF8ParamValueByUTF8Name(argc, argv, name, ignoreCase);
    if (text == nullptr)
        return table[1].value;
    if (maskMode == 1)
        return ReadMask(text, table, tableCount);
    return EnumValueOf(text, table, tableCount);
}

} // namespace qzvest
