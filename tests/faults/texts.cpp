// Growable strings, prints, XML, typed values, words and lists.

#include <cstdarg>
#include <cstring>

#include "faults/rows.h"

namespace {

const auto kUnits = Units(u"sixteen units..."), kEscapes = Units(std::u16string(1024, u'\u00e9') + u"tail");
const SMXGValueOptions kDump{SMXLT_FORMAT_BINARY, 0}, kEscaped{0, 1};
const uint8_t kNumber = 5;
const std::string kBytes(416, 'x');
const SMNVPEnumEntry kWords[] = {{nullptr, 99}, {"read", 2}, {"write", 4}};

// What the document has more, after a call without a failure.
uint32_t Written(const Things &t, uint32_t status, const std::string &more)
{
    const std::string begin = '<' + std::string(59, 'n') + '>', text(t.document.made->text, t.document.made->length);
    return status != SM_STATUS_OK ? status : Rated(text == begin + more, text.rfind(begin, 0) == 0);
}

uint32_t Printed(const Things &t, uint32_t stored, const std::string &expected)
{
    const std::string text(t.room, stored);
    return Rated(text == expected, expected.rfind(text, 0) == 0);
}

uint32_t PrintList(char *room, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const uint32_t stored = SMvsnprintf(room, 99, format, arguments);
    va_end(arguments);
    return stored;
}

// Later pieces go missing.
uint32_t Escaped(Things &t)
{
    const uint32_t status = SMUCS2ToEscape(t.room, &(t.size = sizeof t.room), kEscapes.data());
    const bool isPart = t.size == 1023 * 6 + 5 && std::strcmp(t.room + 1022 * 6, "\\u00e9tail") == 0;
    return status != SM_STATUS_OK ? status : Rated(t.size == 1024 * 6 + 5, isPart);
}

// Without the rest of a run or a reference; the text of the first pass and of the second is needed.
uint32_t EscapedXML(Things &t)
{
    char *text = SMXGEscapeXMLUTF8Str("abcdef<ghi", &(t.size = 3), 2);
    const std::string found = text != nullptr ? text : "";
    const uint32_t result = ResultOf(text);
    return result != SM_STATUS_OK && t.size == 0 ? result : Rated(found == "abcdef&lt;ghi", t.size == found.size());
}

// The value of a text, given as it is or as a parameter.
uint32_t Typed(const char *given, uint32_t type, bool isParameter = false)
{
    char value[8], parameter[32] = "e=", *argv[] = {parameter};
    uint32_t size = sizeof value;
    std::strcpy(parameter + 2, given);
    return isParameter ? SMNVPUTF8ToTypeValue(1, argv, "e", 0, value, &size, type)
                       : SMXLTUTF8ToTypeValue(parameter + 2, value, &size, type);
}

uint32_t Words(std::string parameter)
{
    char *argv[] = {parameter.data()};
    const uint32_t value = SMNVPGetEnums32Value(1, argv, "e", 0, kWords, 3, 1);
    return value == 6 ? SM_STATUS_OK : value;
}

uint32_t Converted(const char *source, char from, const char *expected)
{
    uint32_t count = 7, size = 7;
    char *list = SMUTF8ConvertXSVToYSV(source, from, '|', &count, &size);
    return list == nullptr && count + size != 0 ? kWrong : Owned(list, expected);
}

#define GROWS(record, name, ...)                                                                                       \
    EXPR("M", name, name(&t.record, __VA_ARGS__) != t.record.text ? kWrong : Given(t.record.length > 3))
#define NODE(failures, more, name, ...)                                                                                \
    EXPR(failures, name, Written(t, name(t.document, __VA_ARGS__), more)).Shows(kChanged)
#define VALUE(failures, ...) MADE(failures, SMXLTTypeValueToUTF8, kBytes.data(), __VA_ARGS__)

} // namespace

Rows RowsOfTexts()
{
    return Table(
        EXPR("M", SMSSUTF8StrAlloc, ResultOf(SMSSUTF8StrAlloc(std::make_unique<SMSSUTF8Str>().get(), 8))),
        EXPR("M", SMSSUCS2StrAlloc,
             ResultOf(static_cast<void *>(SMSSUCS2StrAlloc(std::make_unique<SMSSUCS2Str>().get(), 8)))),
        GROWS(narrow, SMSSUTF8StrCatUTF8Str, " news").Shows("old news"),
        GROWS(narrow, SMSSUTF8StrNCatUTF8Str, " news", 5).Shows("old news"),
        GROWS(narrow, SMSSUTF8StrCatUCS2Str, kUnits.data()).Shows("oldsix"),
        GROWS(narrow, SMSSUTF8StrNCatUCS2Str, kUnits.data(), 0).Shows("oldsix"),
        GROWS(wide, SMSSUCS2StrCatUCS2Str, kUnits.data()).Shows("oldsix"),
        GROWS(wide, SMSSUCS2StrNCatUCS2Str, kUnits.data(), 7).Shows("oldsix"),
        GROWS(wide, SMSSUCS2StrCatUTF8Str, " news").Shows("old news"),
        GROWS(wide, SMSSUCS2StrNCatUTF8Str, " news", 0).Shows("old news"),
        EXPR("M", SMUTF8Strdup, Owned(SMUTF8Strdup("text"), "text")), EXPR("Fp", SMUCS2ToEscape, Escaped(t)),
        EXPR("p", SMsnprintf,
             Printed(t, SMsnprintf(t.room, 99, "a%S|%3S|%d", kUnits.data(), kUnits.data(), 7),
                     "asixteen units...|sixteen units...|7")),
        EXPR("p", SMvsnprintf, Printed(t, PrintList(t.room, "a%S", kUnits.data()), "asixteen units...")),
        EXPR("M", SMXGBufAlloc, Given(Held<SMXGBufFree>{SMXGBufAlloc(0, 1)}.made != nullptr)),
        EXPR("m", SMXGBufReAllocContent,
             Given(SMXGBufReAllocContent(t.document, 8, 0) != nullptr && t.document.made->text != nullptr))
            .Shows(kChanged),
        NODE("p", "<name>", SMXGBufCatBeginNode, "name", nullptr), NODE("p", "</name>", SMXGBufCatEndNode, "name"),
        NODE("p", "<name />", SMXGBufCatEmptyNode, "name", nullptr),
        NODE("mp", "<n>5</n>", SMXGBufCatNode, "n", nullptr, &kNumber, 1, SMXLT_TYPE_UINT8, nullptr),
        NODE("mp", " n=\"5\"", SMXGBufCatAttribute, "n", &kNumber, 1, SMXLT_TYPE_UINT8, nullptr),
        NODE("Mp", std::string("101\0", 4), SMXGBufCatNodeValue, &kNumber, 1, SMXLT_TYPE_UINT8, &kDump),
        NODE("p", "&lt;&lt;", SMXGBufCatNodeValue, "<<", 3, SMXLT_TYPE_UTF8, &kEscaped),
        NODE("FOp", "sixteen units...", SMXGBufCatNodeValue, kUnits.data(), 2, SMXLT_TYPE_UCS2, &kEscaped),
        EXPR("MOp", SMXGEscapeXMLUTF8Str, EscapedXML(t)),
        EXPR("F", SMXLTUTF8ToTypeValue, Typed("0A0B", SMXLT_TYPE_BYTES)),
        EXPR("F", SMXLTUTF8ToTypeValue, Typed("0x0A,0x0B", SMXLT_TYPE_BYTES | SMXLT_FORMAT_HEX)),
        EXPR("F", SMXLTUTF8ToTypeValue, Typed("0A0B", SMXLT_TYPE_HEX)),
        EXPR("M", SMXLTUTF8ToTypeValue, Typed("1.2.3.4", SMXLT_TYPE_IPV4)),
        EXPR("F", SMNVPUTF8ToTypeValue, Typed("0A0B", SMXLT_TYPE_BYTES, true)),
        VALUE("F", 2, t.room, &t.size, SMXLT_TYPE_BYTES | SMXLT_FORMAT_HEX),
        VALUE("M", 2, t.room, &t.size, SMXLT_TYPE_HEX),
        VALUE("F", 416, t.room, &(t.size = sizeof t.room), SMXLT_TYPE_BYTES | SMXLT_FORMAT_BINARY),
        EXPR("U", SMNVPGetEnums32Value, Words("e=read|write")),
        EXPR("OU", SMNVPGetEnums32Value, Words("e=read,write")), // for want of one list the "," is tried
        EXPR("M", SMUTF8ConvertXSVToYSV, Converted("a,b", ',', "a|b|")),
        EXPR("M", SMUTF8ConvertXSVToYSV, Converted("a\0b\0", '\0', "a|b")),
        CALL(SMsnprintf, t.room, 1200, kDoubles, 5e-324, 1e300, 0.1, 0.1), CALL(SMSSUCS2StrFree, &t.wide),
        CALL(SMSSUTF8StrFree, &t.narrow), CALL(SMXGBufFree, t.document.Out()),
        CALL(SMXGBufFreeContent, t.content.Out()),
        EXPR("", SMXGBufFreeGetContent, ResultOf(SMXGBufFreeGetContent(t.document.Out()))),
        WELL(SMUCS2StrToUTF8Str, t.room, &t.size, t.units.data()),
        WELL(SMUTF8StrToUCS2Str, t.units.data(), &(t.size = 180), t.room),
        CALL(SMUCS2Strcat, t.units.data(), t.more.data()), CALL(SMUCS2Strcat_s, t.units.data(), 40, t.more.data()),
        CALL(SMUCS2Strchr, t.units.data(), 'b'), CALL(SMUCS2Strcmp, t.units.data(), t.more.data()),
        CALL(SMUCS2Strcpy, t.units.data(), t.more.data()), CALL(SMUCS2Strcpy_s, t.units.data(), 40, t.more.data()),
        CALL(SMUCS2Strcspn, t.units.data(), t.more.data()), CALL(SMUCS2Strspn, t.units.data(), t.more.data()),
        CALL(SMUCS2Strlen, t.units.data()), CALL(SMUCS2Strncat, t.units.data(), t.more.data(), 1),
        CALL(SMUCS2Strncat_s, t.units.data(), 40, t.more.data(), 1),
        CALL(SMUCS2Strncpy, t.units.data(), t.more.data(), 1),
        CALL(SMUCS2Strncpy_s, t.units.data(), 40, t.more.data(), 1), CALL(SMUCS2Strnset, t.units.data(), 'c', 5),
        CALL(SMUCS2Strnset_s, t.units.data(), 40, 'c', 5), CALL(SMUCS2Strset, t.units.data(), 'c'),
        CALL(SMUCS2Strset_s, t.units.data(), 40, 'c'), CALL(SMUCS2Strrev, t.units.data()),
        CALL(SMUCS2Strstr, t.units.data(), t.more.data()), CALL(SMUCS2Strtok, t.units.data(), t.more.data()),
        CALL(SMUCS2Strtok_s, t.units.data(), t.more.data(), &t.token), CALL(SMUTF8StrLowerCase, t.room),
        CALL(SMUTF8StrUpperCase, t.room), CALL(SMUTF8Strrev, t.room), CALL(SMUTF8Strnicmp, t.room, "NAME", 4),
        CALL(SMUTF8Strstri, t.room, "NAME"), CALL(SMUTF8ltrim, t.room), CALL(SMUTF8rtrim, t.room),
        CALL(SMUTF8trim, t.room), CALL(SMIsValidParam, t.source), CALL(SMNVPGetUTF8ParamName, t.source),
        CALL(SMNVPGetUTF8ParamValue, t.source), CALL(SMNVPGetParamIndexByUTF8Name, 1, t.argv, "N", 1),
        CALL(SMNVPGetUTF8ParamValueByUTF8Name, 1, t.argv, "N", 1));
}
