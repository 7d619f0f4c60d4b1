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

using Buf = std::unique_ptr<SMXGBuf, decltype([](SMXGBuf *buffer) { SMXGBufFree(buffer); })>;

constexpr SMXGValueOptions kEscaped{0, 1};
constexpr uint8_t kPointerTypes[] = {48, 50}; // to UTF-8 text

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

// What a value writes into an empty buffer.
std::string ValueText(const void *value, uint32_t size, uint8_t type, const SMXGValueOptions *options,
                      uint32_t expectedStatus = SM_STATUS_OK)
{
    const Buf buffer = NewBuf();
    EXPECT_EQ(SMXGBufCatNodeValue(buffer.get(), value, size, type, options), expectedStatus) << +type;
    return Written(buffer);
}

TEST(XMLBuf, BeginsWithTheHeaderForOneAlone)
{
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    for (const int header : {0, 1, 2}) {
        const Buf buffer = NewBuf(static_cast<int16_t>(header));
        const std::string expected = header == 1 ? declaration : "";
        EXPECT_EQ(Written(buffer), expected);
        EXPECT_EQ(buffer->capacity, 64u);
        SMXGBufCatEndNode(buffer.get(), "old");
        EXPECT_EQ(SMXGBufReAllocContent(buffer.get(), 10, static_cast<int16_t>(header)), buffer->text);
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

TEST(XMLValue, PlainByTypeAndFormat)
{
    const double real = -2.0625;
    const std::tuple<uint8_t, const void *, uint16_t, const char *, uint32_t> cases[] = {
        {SMXLT_TYPE_DOUBLE, &real, 0, "-2.062", SM_STATUS_OK},
        {SMXLT_TYPE_BYTES, "\0\n\xFF", SMXLT_FORMAT_HEX, "0x00,0x0A,0xFF", SM_STATUS_OK},
        {SMXLT_TYPE_BYTES, "\0\n\xFF", SMXLT_FORMAT_OCTAL, "", SM_STATUS_BAD_ARGUMENT},
    };
    for (const auto &[type, value, format, text, status] : cases)
        EXPECT_EQ(ValueText(value, 3, type, std::data({SMXGValueOptions{format, 0}}), status), text) << +type;
    EXPECT_EQ(ValueText("", 0, SMXLT_TYPE_BYTES, nullptr, SM_STATUS_FAILED), "");
    const time_t noon = 43200;
    EXPECT_EQ(ValueText(&noon, 0, SMXLT_TYPE_TIME, nullptr) + '\n', ctime(&noon));
}

// What is too long for the first room goes in with its terminator.
TEST(XMLValue, LongFormsBringTheirTerminator)
{
    const SMXGValueOptions binary{SMXLT_FORMAT_BINARY, 0};
    const uint8_t number = 5;
    EXPECT_EQ(ValueText(&number, 1, SMXLT_TYPE_UINT8, &binary), std::string("101\0", 4));
    EXPECT_EQ(ValueText("AB", 2, SMXLT_TYPE_BYTES, &binary).size(), 82u); // a line, its end and a zero

    // A format with a type in it: the room is that of a boolean, the text a language's.
    const SMXGValueOptions asLanguage{SMXLT_TYPE_LANGUAGE, 0};
    const uint32_t german = 1031;
    EXPECT_EQ(ValueText(&german, 4, SMXLT_TYPE_BOOL, &asLanguage), std::string("de\0", 3));
    // Text that the translator copies without a terminator.
    const SMXGValueOptions asText{SMXLT_TYPE_UTF8, 0};
    EXPECT_EQ(ValueText("\0\0abcdefgh", 2, SMXLT_TYPE_BOOL, &asText), "");
    EXPECT_EQ(ValueText("abcdefgh", 6, SMXLT_TYPE_BOOL, &asText), "abcdef");

    // A tag takes an attribute list up to the first zero.
    const Buf list = NewBuf(), doc = NewBuf();
    SMXGBufCatAttribute(list.get(), "n", &number, 1, SMXLT_TYPE_UINT8, &binary);
    SMXGBufCatBeginNode(doc.get(), "a", list.get());
    EXPECT_EQ(Written(doc), "<a n=\"101>");
}

TEST(XMLValue, UTF8BySizeAndEscape)
{
    constexpr SMXGValueOptions twice{0, 2};
    const std::tuple<std::string, uint32_t, const SMXGValueOptions *, std::string> cases[] = {
        {"ab", 2, nullptr, "a"},
        {"ab", 0, nullptr, "ab"},
        {std::string("a\0b", 3), 4, nullptr, std::string("a\0b", 3)},
        {"<&>", 2, &kEscaped, "&lt;&amp;&gt;"}, // the size is no more than an estimate
        {"<&>", 1, &kEscaped, "<&>"},
        {std::string("\0<", 2), 3, &kEscaped, ""},
        {std::string("\0<", 2), 3, &twice, std::string("\0<", 2)}, // an empty result of two passes is none
    };
    for (const auto &[givenText, size, options, expected] : cases) {
        const char *text = givenText.c_str();
        EXPECT_EQ(ValueText(text, size, SMXLT_TYPE_UTF8, options), expected) << givenText << size;
        for (const uint8_t type : kPointerTypes)
            EXPECT_EQ(ValueText(&text, size, type, options), expected) << givenText << size;
    }
    const char *none = nullptr;
    for (const uint8_t type : kPointerTypes)
        EXPECT_EQ(ValueText(&none, 1, type, nullptr, SM_STATUS_FAILED), "");
}

TEST(XMLValue, UCS2WholeWhateverTheSize)
{
    const auto text = Units(u"\u20ac<");
    const uint16_t *place = text.data(), *none = nullptr;
    EXPECT_EQ(ValueText(place, 2, SMXLT_TYPE_UCS2, nullptr), "\u20ac<");
    EXPECT_EQ(ValueText(&place, 0, 49, &kEscaped), "\u20ac&lt;");
    EXPECT_EQ(ValueText(Units(u"").data(), 2, SMXLT_TYPE_UCS2, &kEscaped), "");
    EXPECT_EQ(ValueText(&none, 0, 49, nullptr, SM_STATUS_FAILED), "");
    const uint16_t lone[] = {0xD800, 0};
    const Buf doc = NewBuf();
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "a", nullptr, lone, sizeof lone, SMXLT_TYPE_UCS2, nullptr), SM_STATUS_FAILED);
    EXPECT_EQ(Written(doc), "<a>");
}

TEST(XMLValue, OtherTypes)
{
    const uint64_t value[8] = {};
    const std::string refused = std::string("\x21\x22\x23\x25\x26\x27\x28"); // 33 to 35, 37 to 40
    for (int type = 15; type <= 255; ++type) {
        if (type >= 48 && type <= 50)
            continue;
        const bool isRefused = refused.find(static_cast<char>(type)) != std::string::npos;
        ValueText(value, 8, static_cast<uint8_t>(type), nullptr, isRefused ? SM_STATUS_BAD_ARGUMENT : SM_STATUS_FAILED);
    }
    const Buf list = NewBuf();
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), nullptr, value, 8, 255, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXGBufCatNodeValue(list.get(), nullptr, 8, 255, nullptr), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "a", value, 8, 15, nullptr), SM_STATUS_FAILED);
    EXPECT_EQ(Written(list), "a=\"\"");
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
