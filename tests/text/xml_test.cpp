#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <qzvest/xml.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

#include "text/units.h"

namespace {

using namespace std::string_literals;
using Buf = std::unique_ptr<SMXGBuf, decltype([](SMXGBuf *buffer) { SMXGBufFree(buffer); })>;

constexpr SMXGValueOptions kEscaped{0, 1};

Buf NewBuf(int16_t header = 0)
{
    return Buf(SMXGBufAlloc(0, header));
}

// All that was written, zero bytes included.
std::string Written(const Buf &buffer)
{
    EXPECT_EQ(buffer->text[buffer->length], '\0');
    return {buffer->text, buffer->length};
}

std::string Status(uint32_t status)
{
    return "status " + std::to_string(status);
}

// What a value writes into an empty buffer; a failed one writes nothing.
std::string ValueText(const void *value, uint32_t size, int type, SMXGValueOptions options = {0, 0})
{
    const Buf buffer = NewBuf();
    const uint32_t status = SMXGBufCatNodeValue(buffer.get(), value, size, static_cast<uint8_t>(type), &options);
    EXPECT_TRUE(status == SM_STATUS_OK || buffer->length == 0) << type;
    return status == SM_STATUS_OK ? Written(buffer) : Status(status);
}

TEST(XMLBuf, BeginsWithTheHeaderForOneAlone)
{
    for (const int16_t header : {int16_t{0}, int16_t{1}, int16_t{2}}) {
        const Buf buffer = NewBuf(header);
        const std::string expected = header == 1 ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" : "";
        EXPECT_EQ(Written(buffer), expected);
        EXPECT_EQ(buffer->capacity, 64u);
        SMXGBufCatEndNode(buffer.get(), "old");
        EXPECT_EQ(SMXGBufReAllocContent(buffer.get(), 10, header), buffer->text);
        EXPECT_EQ(Written(buffer), expected);
        EXPECT_EQ(buffer->capacity, header == 1 ? 39u : 10u);
    }
}

TEST(XMLBuf, TextOutlivesTheBuffer)
{
    SMXGBuf *buffer = SMXGBufAlloc(0, 0);
    SMXGBufCatBeginNode(buffer, "a", nullptr);
    char *text = SMXGBufFreeGetContent(buffer);
    EXPECT_STREQ(text, "<a>");
    SMXGBufFreeContent(text);

    buffer = SMXGBufAlloc(0, 1);
    EXPECT_EQ(SMXGBufReAllocContent(buffer, 0, 1), nullptr);
    EXPECT_EQ(SMXGBufCatEmptyNode(buffer, "a", nullptr), SM_STATUS_OK); // to a buffer without a text
    EXPECT_EQ(buffer->length, 0u);
    EXPECT_EQ(SMXGBufFreeGetContent(buffer), nullptr);
}

TEST(XMLDocument, ParsesToWhatWasWritten)
{
    const Buf doc = NewBuf(1);
    const Buf list = NewBuf();
    const uint8_t slot = 255;
    const auto name = Units(u"P\u00e9riph\u00e9rique <\u20ac>");
    const char note[] = "5 < 6 & \"six\" &lt; it's";

    SMXGBufCatBeginNode(doc.get(), "system", list.get()); // a list with nothing in it
    SMXGBufCatAttribute(list.get(), "slot", &slot, sizeof slot, SMXLT_TYPE_UINT8, nullptr);
    SMXGBufCatAttribute(list.get(), "note", note, sizeof note, SMXLT_TYPE_UTF8, &kEscaped);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "card", list.get(), name.data(), 0, SMXLT_TYPE_UCS2, &kEscaped), SM_STATUS_OK);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "none", nullptr, nullptr, 0, SMXLT_TYPE_UCS2, nullptr), SM_STATUS_OK);
    SMXGBufCatEmptyNode(doc.get(), "a", list.get());
    SMXGBufCatEndNode(doc.get(), "system");
    const std::string attributes = " slot=\"255\" note=\"5 &lt; 6 &amp; &quot;six&quot; &lt; it&apos;s\"";
    EXPECT_EQ(Written(doc), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><system><card" + attributes +
                                ">P\u00e9riph\u00e9rique &lt;\u20ac&gt;</card><none></none><a" + attributes +
                                " /></system>");

    xmlDoc *parsed = xmlReadMemory(doc->text, static_cast<int>(doc->length), "", nullptr, XML_PARSE_NONET);
    ASSERT_NE(parsed, nullptr);
    xmlFreeDoc(parsed);
}

TEST(XMLValue, ByTypeSizeAndOptions)
{
    constexpr SMXGValueOptions hex{SMXLT_FORMAT_HEX, 0}, octal{SMXLT_FORMAT_OCTAL, 0}, binary{SMXLT_FORMAT_BINARY, 0};
    constexpr SMXGValueOptions asLanguage{SMXLT_TYPE_LANGUAGE, 0}, asText{SMXLT_TYPE_UTF8, 0};
    const double real = -2.0625;
    const uint8_t number = 5;
    const uint32_t german = 1031;
    const time_t noon = 43200;
    const auto text = Units(u"\u20ac<");
    const uint16_t *place = text.data();
    const void *none = nullptr;
    const std::pair<std::string, std::string> cases[] = {
        {ValueText(&real, 3, SMXLT_TYPE_DOUBLE), "-2.062"},
        {ValueText("\0\n\xFF", 3, SMXLT_TYPE_BYTES, hex), "0x00,0x0A,0xFF"},
        {ValueText("\0\n\xFF", 3, SMXLT_TYPE_BYTES, octal), Status(SM_STATUS_BAD_ARGUMENT)},
        {ValueText("", 0, SMXLT_TYPE_BYTES), Status(SM_STATUS_FAILED)},
        {ValueText(&noon, 0, SMXLT_TYPE_TIME) + '\n', ctime(&noon)},
        // What is too long for the first room goes in with its terminator.
        {ValueText(&number, 1, SMXLT_TYPE_UINT8, binary), "101\0"s},
        {ValueText("AB", 2, SMXLT_TYPE_BYTES, binary).substr(80), "\n\0"s},
        // A format with a type in it: the room is that of a boolean, the text a language's.
        {ValueText(&german, 4, SMXLT_TYPE_BOOL, asLanguage), "de\0"s},
        // Text that the translator copies without a terminator.
        {ValueText("\0\0abcdefgh", 2, SMXLT_TYPE_BOOL, asText), ""},
        {ValueText("abcdefgh", 6, SMXLT_TYPE_BOOL, asText), "abcdef"},
        // UCS-2 is written whole whatever the size.
        {ValueText(place, 2, SMXLT_TYPE_UCS2), "\u20ac<"},
        {ValueText(&place, 0, 49, kEscaped), "\u20ac&lt;"},
        {ValueText(Units(u"").data(), 2, SMXLT_TYPE_UCS2, kEscaped), ""},
        {ValueText(Units(u"\xD800").data(), 4, SMXLT_TYPE_UCS2), Status(SM_STATUS_FAILED)},
        {ValueText(&none, 0, 48) + ValueText(&none, 0, 49), Status(SM_STATUS_FAILED) + Status(SM_STATUS_FAILED)},
    };
    for (const auto &[written, expected] : cases)
        EXPECT_EQ(written, expected);
    const uint64_t value[8] = {};
    const std::string refused = "\x21\x22\x23\x25\x26\x27\x28";    // 33 to 35, 37 to 40
    for (int type = 15; type <= 255; type += type == 47 ? 4 : 1) { // 48 to 50 are pointers
        const bool isRefused = refused.find(static_cast<char>(type)) != std::string::npos;
        EXPECT_EQ(ValueText(value, 8, type), Status(isRefused ? SM_STATUS_BAD_ARGUMENT : SM_STATUS_FAILED)) << type;
    }
}

TEST(XMLValue, UTF8BySizeAndEscape)
{
    const std::tuple<std::string, uint32_t, SMXGValueOptions, std::string> cases[] = {
        {"ab", 2, {0, 0}, "a"},        {"ab", 0, {0, 0}, "ab"},
        {"a\0b"s, 4, {0, 0}, "a\0b"s}, {"<&>", 2, kEscaped, "&lt;&amp;&gt;"}, // the size is no more than an estimate
        {"<&>", 1, kEscaped, "<&>"},   {"\0<"s, 3, kEscaped, ""},
        {"\0<"s, 3, {0, 2}, "\0<"s}, // an empty result of two passes is none
    };
    for (const auto &[givenText, size, options, expected] : cases) {
        const char *text = givenText.c_str();
        EXPECT_EQ(ValueText(text, size, SMXLT_TYPE_UTF8, options), expected) << givenText << size;
        for (const int type : {48, 50}) // pointers to UTF-8 text
            EXPECT_EQ(ValueText(&text, size, type, options), expected) << givenText << size;
    }
}

// A tag takes an attribute list up to the first zero; a node whose value fails stays open.
TEST(XMLBuf, KeepsWhatWasWrittenBeforeAFailure)
{
    const SMXGValueOptions binary{SMXLT_FORMAT_BINARY, 0};
    const uint8_t number = 5;
    const Buf list = NewBuf(), doc = NewBuf();
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), nullptr, &number, 8, 255, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "n", &number, 1, SMXLT_TYPE_UINT8, &binary), SM_STATUS_OK);
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "a", &number, 8, 15, nullptr), SM_STATUS_FAILED);
    EXPECT_EQ(Written(list), "n=\"101\0\" a=\"\""s);
    EXPECT_EQ(SMXGBufCatNodeValue(list.get(), nullptr, 8, 255, nullptr), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "a", list.get(), &number, 8, 15, nullptr), SM_STATUS_FAILED);
    EXPECT_EQ(Written(doc), "<a n=\"101>");
}

// How it escapes is compared with a model in escape_fuzz.cpp.
TEST(XMLEscape, ManyPasses)
{
    uint32_t size = 1;
    char *escaped = SMXGEscapeXMLUTF8Str("a<&lt;", &size, UINT32_MAX);
    EXPECT_STREQ(escaped, "a&lt;&lt;");
    EXPECT_EQ(size, 9u);
    SMXGBufFreeContent(escaped);
}

} // namespace
