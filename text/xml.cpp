// Appends report nothing: without memory a piece of the document is missing, and no more.

#include "text/xml.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "compat/load.h"
#include "frame/heap.h"
#include "text/sizedstring.h"
#include "text/transcode.h"
#include "text/xmlescape.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

static_assert(offsetof(SMXGValueOptions, escapeDepth) == 2);

constexpr uint32_t kMinimumSize = 64; // bytes of a new buffer
constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

void Cat(SMXGBuf *buffer, const char *text)
{
    (void)SMSSUTF8StrNCatUTF8Str(buffer, text, 0);
}

// A count of 0 takes the whole text.
void Cat(SMXGBuf *buffer, const char *text, uint32_t count)
{
    (void)SMSSUTF8StrNCatUTF8Str(buffer, text, count);
}

void Start(SMXGBuf *buffer, uint32_t size, int16_t header)
{
    if (SMSSUTF8StrAlloc(buffer, size) != nullptr && header == 1)
        Cat(buffer, kDeclaration);
}

uint32_t CatTag(SMXGBuf *buffer, const char *open, const char *name, const SMXGBuf *attributes, const char *close)
{
    if (buffer == nullptr || name == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    Cat(buffer, open);
    Cat(buffer, name);
    if (attributes != nullptr && attributes->length != 0) {
        Cat(buffer, " ");
        Cat(buffer, attributes->text);
    }
    Cat(buffer, close);
    return SM_STATUS_OK;
}

// ---- Values ----

struct Value {
    const void *place;
    uint32_t size;
    uint32_t typeAndFormat;
    uint32_t passes; // of the escape; 0: none
    uint32_t scratch;
};

// A terminated room for the translator. Formats can make it copy text that has no terminator of its own.
HeapPtr<char> Scratch(uint32_t size)
{
    HeapPtr<char> room = HeapRoom<char>(size_t{size} + 1);
    if (room)
        std::memset(room.get(), 0, size_t{size} + 1);
    return room;
}

// A text that was too long for the first room goes in with its terminator, and what follows in the document lies
// behind that. Base-2 numbers and dumps have always come out this way.
uint32_t CatTranslated(SMXGBuf *buffer, const Value &value)
{
    uint32_t size = value.scratch;
    HeapPtr<char> text = Scratch(size);
    if (!text)
        return SM_STATUS_NO_MEMORY;
    uint32_t status = SMXLTTypeValueToUTF8(value.place, value.size, text.get(), &size, value.typeAndFormat);
    if (status == SM_STATUS_OK)
        Cat(buffer, text.get());
    if (status != SM_STATUS_BUFFER_TOO_SMALL)
        return status;

    text.reset();
    text = Scratch(size);
    if (!text)
        return SM_STATUS_NO_MEMORY;
    status = SMXLTTypeValueToUTF8(value.place, value.size, text.get(), &size, value.typeAndFormat);
    if (status == SM_STATUS_OK)
        Cat(buffer, text.get(), size);
    return status;
}

uint32_t CatBool(SMXGBuf *buffer, const Value &value)
{
    Value sized = value;
    sized.scratch = LoadAs<int16_t>(value.place) == 1 ? sizeof "true" : sizeof "false";
    return CatTranslated(buffer, sized);
}

uint32_t CatBytes(SMXGBuf *buffer, const Value &value)
{
    Value sized = value;
    sized.scratch = value.size * 5 + 1; // "0x00," for each byte
    return CatTranslated(buffer, sized);
}

// The escape reads to the terminator, and the count is no more than its estimate. What it cannot do goes in as it is.
uint32_t CatText(SMXGBuf *buffer, const char *text, uint32_t count, uint32_t passes)
{
    uint32_t size = count;
    const HeapPtr<char> escaped(SMXGEscapeXMLUTF8Str(text, &size, passes));
    if (escaped)
        Cat(buffer, escaped.get(), size);
    else
        Cat(buffer, text, count);
    return SM_STATUS_OK;
}

uint32_t CatUTF8(SMXGBuf *buffer, const Value &value)
{
    const uint32_t count = value.size == 0 ? 0 : value.size - 1;
    return CatText(buffer, static_cast<const char *>(value.place), count, value.passes);
}

// Every failure is one and the same here.
uint32_t CatUCS2(SMXGBuf *buffer, const Value &value)
{
    const auto *units = static_cast<const uint16_t *>(value.place);
    uint32_t size = 0;
    if (SMUCS2StrToUTF8Str(nullptr, &size, units) != SM_STATUS_OK)
        return SM_STATUS_FAILED;
    const HeapPtr<char> text = HeapRoom<char>(size);
    if (!text || SMUCS2StrToUTF8Str(text.get(), &size, units) != SM_STATUS_OK)
        return SM_STATUS_FAILED;
    return CatText(buffer, text.get(), size - 1, value.passes);
}

Value Pointed(const Value &value)
{
    Value pointed = value;
    pointed.place = LoadAs<const void *>(value.place);
    return pointed;
}

uint32_t CatUTF8Pointer(SMXGBuf *buffer, const Value &value)
{
    const Value pointed = Pointed(value);
    return pointed.place == nullptr ? SM_STATUS_FAILED : CatUTF8(buffer, pointed);
}

uint32_t CatUCS2Pointer(SMXGBuf *buffer, const Value &value)
{
    return CatUCS2(buffer, Pointed(value));
}

// How the values of a type go in: append is NULL where they don't.
struct TypeWay {
    uint32_t (*append)(SMXGBuf *buffer, const Value &value);
    uint32_t scratch; // bytes first given to the translator
};

constexpr uint32_t kTypeCount = 51;

// Beyond the translator's own types some have a code 32 higher: of these it refuses the numbers, and the texts are
// given by a pointer to them.
constexpr std::array<TypeWay, kTypeCount> MakeTypeWays()
{
    constexpr struct {
        uint32_t first;
        uint32_t last;
        TypeWay way;
    } kRanges[] = {
        {SMXLT_TYPE_BOOL, SMXLT_TYPE_BOOL, {CatBool, 0}},
        {SMXLT_TYPE_INT8, SMXLT_TYPE_INT32, {CatTranslated, 17}},
        {SMXLT_TYPE_INT64, SMXLT_TYPE_INT64, {CatTranslated, 33}},
        {SMXLT_TYPE_UINT8, SMXLT_TYPE_UINT32, {CatTranslated, 16}},
        {SMXLT_TYPE_UINT64, SMXLT_TYPE_DOUBLE, {CatTranslated, 32}},
        {SMXLT_TYPE_LANGUAGE, SMXLT_TYPE_LANGUAGE, {CatTranslated, 16}},
        {SMXLT_TYPE_TIME, SMXLT_TYPE_TIME, {CatTranslated, 64}},
        {SMXLT_TYPE_BYTES, SMXLT_TYPE_BYTES, {CatBytes, 0}},
        {SMXLT_TYPE_UTF8, SMXLT_TYPE_UTF8, {CatUTF8, 0}},
        {SMXLT_TYPE_UCS2, SMXLT_TYPE_UCS2, {CatUCS2, 0}},
        {33, 34, {CatTranslated, 17}},
        {35, 35, {CatTranslated, 33}},
        {37, 38, {CatTranslated, 16}},
        {39, 40, {CatTranslated, 32}},
        {48, 48, {CatUTF8Pointer, 0}},
        {49, 49, {CatUCS2Pointer, 0}},
        {50, 50, {CatUTF8Pointer, 0}},
    };
    std::array<TypeWay, kTypeCount> ways{};
    for (const auto &range : kRanges) {
        for (uint32_t type = range.first; type <= range.last; ++type)
            ways[type] = range.way;
    }
    return ways;
}

constexpr std::array<TypeWay, kTypeCount> kTypeWays = MakeTypeWays();

} // namespace

SMXGBuf *SMXGBufAlloc(uint32_t size, int16_t header)
{
    HeapPtr<SMXGBuf> buffer = HeapRoom<SMXGBuf>(1);
    if (!buffer)
        return nullptr;
    Start(buffer.get(), std::max(size, kMinimumSize), header);
    return buffer->text == nullptr ? nullptr : buffer.release();
}

char *SMXGBufReAllocContent(SMXGBuf *buffer, uint32_t size, int16_t header)
{
    if (buffer == nullptr)
        return nullptr;
    SMSSUTF8StrFree(buffer);
    Start(buffer, size, header);
    return buffer->text;
}

SMXGBuf *SMXGBufFree(SMXGBuf *buffer)
{
    std::free(SMXGBufFreeGetContent(buffer));
    return nullptr;
}

char *SMXGBufFreeGetContent(SMXGBuf *buffer)
{
    if (buffer == nullptr)
        return nullptr;
    char *text = buffer->text;
    std::free(buffer);
    return text;
}

void SMXGBufFreeContent(char *text)
{
    std::free(text);
}

uint32_t SMXGBufCatBeginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes)
{
    return CatTag(buffer, "<", name, attributes, ">");
}

uint32_t SMXGBufCatEndNode(SMXGBuf *buffer, const char *name)
{
    return CatTag(buffer, "</", name, nullptr, ">");
}

uint32_t SMXGBufCatEmptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes)
{
    return CatTag(buffer, "<", name, attributes, " />");
}

// The way goes by the type as given; bits in the low byte of a format change what the translator sees, and no more.
uint32_t SMXGBufCatNodeValue(SMXGBuf *buffer, const void *value, uint32_t valueSize, uint8_t type,
                             const SMXGValueOptions *options)
{
    if (buffer == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (value == nullptr)
        return SM_STATUS_NOT_FOUND;
    if (type >= kTypeCount || kTypeWays[type].append == nullptr)
        return SM_STATUS_FAILED;
    const SMXGValueOptions given = options == nullptr ? SMXGValueOptions{0, 0} : *options;
    const TypeWay &way = kTypeWays[type];
    const auto typeAndFormat = static_cast<uint32_t>(type | given.format);
    return way.append(buffer, {value, valueSize, typeAndFormat, given.escapeDepth, way.scratch});
}

uint32_t SMXGBufCatAttribute(SMXGBuf *attributes, const char *name, const void *value, uint32_t valueSize, uint8_t type,
                             const SMXGValueOptions *options)
{
    if (attributes == nullptr || name == nullptr || value == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (attributes->length != 0)
        Cat(attributes, " ");
    Cat(attributes, name);
    Cat(attributes, "=\"");
    const uint32_t status = SMXGBufCatNodeValue(attributes, value, valueSize, type, options);
    Cat(attributes, "\"");
    return status;
}

uint32_t SMXGBufCatNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value,
                        uint32_t valueSize, uint8_t type, const SMXGValueOptions *options)
{
    uint32_t status = SMXGBufCatBeginNode(buffer, name, attributes);
    if (status != SM_STATUS_OK)
        return status;
    status = SMXGBufCatNodeValue(buffer, value, valueSize, type, options);
    if (status != SM_STATUS_OK && status != SM_STATUS_NOT_FOUND)
        return status;
    return SMXGBufCatEndNode(buffer, name);
}

} // namespace qzvest
