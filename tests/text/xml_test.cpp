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

struct BufFree {
    void operator()(SMXGBuf *buffer) const
    {
        SMXGBufFree(buffer);
    }
};
using Buf = std::unique_ptr<SMXGBuf, BufFree>;

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

using Doc = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

Doc Parsed(const std::string &text)
{
    return {xmlReadMemory(text.data(), static_cast<int>(text.size()), "test.xml", nullptr, XML_PARSE_NONET),
            xmlFreeDoc};
}

std::string Owned(xmlChar *text)
{
    std::string copy = text == nullptr ? "(none)" : reinterpret_cast<const char *>(text);
    xmlFree(text);
    return copy;
}

std::string Attribute(xmlNode *node, const char *name)
{
    return Owned(xmlGetProp(node, reinterpret_cast<const xmlChar *>(name)));
}

TEST(XMLBuf, BeginsWithTheHeaderForOneAlone)
{
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    constexpr int16_t kHeaders[] = {0, 1, 2, -1};
    for (const int16_t header : kHeaders) {
        const Buf buffer(SMXGBufAlloc(10, header));
        const std::string expected = header == 1 ? declaration : "";
        EXPECT_EQ(Written(buffer), expected);
        EXPECT_EQ(buffer->capacity, 64u);
        SMXGBufCatEndNode(buffer.get(), "old");
        EXPECT_EQ(SMXGBufReAllocContent(buffer.get(), 10, header), buffer->text);
        EXPECT_EQ(Written(buffer), expected);
        EXPECT_EQ(buffer->capacity, header == 1 ? 39u : 10u);
    }
    EXPECT_EQ(Buf(SMXGBufAlloc(65, 0))->capacity, 65u);
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

    EXPECT_EQ(SMXGBufFree(nullptr), nullptr);
    EXPECT_EQ(SMXGBufFreeGetContent(nullptr), nullptr);
    EXPECT_EQ(SMXGBufReAllocContent(nullptr, 64, 1), nullptr);
    SMXGBufFreeContent(nullptr);
}

TEST(XMLBuf, NullArguments)
{
    const Buf buffer = NewBuf();
    const int32_t number = 1;
    constexpr uint32_t kInvalid = SM_STATUS_INVALID_PARAMETER;
    for (const auto &call : {SMXGBufCatBeginNode, SMXGBufCatEmptyNode}) {
        EXPECT_EQ(call(nullptr, "a", nullptr), kInvalid);
        EXPECT_EQ(call(buffer.get(), nullptr, nullptr), kInvalid);
    }
    EXPECT_EQ(SMXGBufCatEndNode(nullptr, "a"), kInvalid);
    EXPECT_EQ(SMXGBufCatEndNode(buffer.get(), nullptr), kInvalid);
    EXPECT_EQ(SMXGBufCatNodeValue(nullptr, nullptr, 4, SMXLT_TYPE_INT32, nullptr), kInvalid);
    EXPECT_EQ(SMXGBufCatNodeValue(buffer.get(), nullptr, 4, 255, nullptr), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(SMXGBufCatAttribute(nullptr, "a", &number, 4, SMXLT_TYPE_INT32, nullptr), kInvalid);
    EXPECT_EQ(SMXGBufCatAttribute(buffer.get(), nullptr, &number, 4, SMXLT_TYPE_INT32, nullptr), kInvalid);
    EXPECT_EQ(SMXGBufCatAttribute(buffer.get(), "a", nullptr, 4, SMXLT_TYPE_INT32, nullptr), kInvalid);
    EXPECT_EQ(SMXGBufCatNode(nullptr, "a", nullptr, &number, 4, SMXLT_TYPE_INT32, nullptr), kInvalid);
    EXPECT_EQ(SMXGBufCatNode(buffer.get(), nullptr, nullptr, &number, 4, SMXLT_TYPE_INT32, nullptr), kInvalid);
    EXPECT_EQ(Written(buffer), "");
}

TEST(XMLDocument, ParsesToWhatWasWritten)
{
    const Buf doc = NewBuf(1);
    const Buf list = NewBuf();
    const int16_t enabled = 1;
    const uint8_t slot = 255;
    const auto name = Units(u"P\u00e9riph\u00e9rique <\u20ac>");
    const char note[] = "5 < 6 & \"six\" &lt; it's";

    SMXGBufCatBeginNode(doc.get(), "system", list.get()); // a list with nothing in it
    SMXGBufCatAttribute(list.get(), "enabled", &enabled, sizeof enabled, SMXLT_TYPE_BOOL, nullptr);
    SMXGBufCatAttribute(list.get(), "slot", &slot, sizeof slot, SMXLT_TYPE_UINT8, nullptr);
    SMXGBufCatAttribute(list.get(), "note", note, sizeof note, SMXLT_TYPE_UTF8, &kEscaped);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "card", list.get(), name.data(), 0, SMXLT_TYPE_UCS2, &kEscaped), SM_STATUS_OK);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "none", nullptr, nullptr, 0, SMXLT_TYPE_UCS2, nullptr), SM_STATUS_OK);
    SMXGBufCatEmptyNode(doc.get(), "a", nullptr);
    SMXGBufCatEmptyNode(doc.get(), "a", list.get());
    SMXGBufCatEndNode(doc.get(), "system");
    const std::string attributes =
        " enabled=\"true\" slot=\"255\" note=\"5 &lt; 6 &amp; &quot;six&quot; &lt; it&apos;s\"";
    EXPECT_EQ(Written(doc), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><system><card" + attributes +
                                ">P\u00e9riph\u00e9rique &lt;\u20ac&gt;</card><none></none><a /><a" + attributes +
                                " /></system>");

    const Doc parsed = Parsed(Written(doc));
    ASSERT_NE(parsed, nullptr);
    xmlNode *card = xmlDocGetRootElement(parsed.get())->children;
    EXPECT_EQ(Owned(xmlNodeGetContent(card)), "P\u00e9riph\u00e9rique <\u20ac>");
    EXPECT_EQ(Attribute(card, "enabled"), "true");
    EXPECT_EQ(Attribute(card, "slot"), "255");
    EXPECT_EQ(Attribute(card, "note"), "5 < 6 & \"six\" < it's"); // the reference was kept
    EXPECT_EQ(xmlChildElementCount(xmlDocGetRootElement(parsed.get())), 4u);
}

TEST(XMLValue, NumbersByTypeAndFormat)
{
    const int16_t yes = 1, two = 2;
    const int8_t byte = -1;
    const int16_t shortMin = INT16_MIN;
    const int32_t intMin = INT32_MIN;
    const int64_t longMin = INT64_MIN;
    const uint8_t ubyte = 255;
    const uint16_t ushort = 65535;
    const uint32_t uint = UINT32_MAX, german = 1031;
    const uint64_t ulong = UINT64_MAX;
    const double real = -2.0625;
    const struct {
        uint8_t type;
        const void *value;
        uint16_t format;
        const char *text;
    } cases[] = {
        {SMXLT_TYPE_BOOL, &yes, 0, "true"},
        {SMXLT_TYPE_BOOL, &two, 0, "false"},
        {SMXLT_TYPE_INT8, &byte, 0, "-1"},
        {SMXLT_TYPE_INT8, &byte, SMXLT_FORMAT_HEX, "0xffffffff"},
        {SMXLT_TYPE_INT16, &shortMin, 0, "-32768"},
        {SMXLT_TYPE_INT32, &intMin, SMXLT_FORMAT_DECIMAL, "-2147483648"},
        {SMXLT_TYPE_INT64, &longMin, 0, "-9223372036854775808"},
        {SMXLT_TYPE_UINT8, &ubyte, SMXLT_FORMAT_OCTAL, "377"},
        {SMXLT_TYPE_UINT16, &ushort, SMXLT_FORMAT_HEX, "0xffff"},
        {SMXLT_TYPE_UINT32, &uint, 0, "4294967295"},
        {SMXLT_TYPE_UINT64, &ulong, 0, "18446744073709551615"},
        {SMXLT_TYPE_DOUBLE, &real, 0, "-2.062"},
        {SMXLT_TYPE_LANGUAGE, &german, 0, "de"},
    };
    for (const auto &c : cases) {
        const SMXGValueOptions options{c.format, 0};
        EXPECT_EQ(ValueText(c.value, 0, c.type, &options), c.text) << +c.type;
    }
    const time_t noon = 43200;
    std::string date = ctime(&noon);
    date.pop_back();
    EXPECT_EQ(ValueText(&noon, 0, SMXLT_TYPE_TIME, nullptr), date);
}

// What is too long for the first room goes in with its terminator.
TEST(XMLValue, LongFormsBringTheirTerminator)
{
    const SMXGValueOptions binary{SMXLT_FORMAT_BINARY, 0};
    const uint8_t number = 5;
    const Buf doc = NewBuf();
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "n", nullptr, &number, 1, SMXLT_TYPE_UINT8, &binary), SM_STATUS_OK);
    EXPECT_EQ(Written(doc), std::string("<n>101\0</n>", 11));
    const std::string dump = ValueText("AB", 2, SMXLT_TYPE_BYTES, &binary);
    EXPECT_EQ(dump.size(), 82u); // a line, its end and a zero
    EXPECT_EQ(dump.substr(0, 18), "0x00000000: 41 42 ");
    EXPECT_EQ(dump.back(), '\0');

    // A format with a type in it: the room is that of a boolean, the text a language's.
    const SMXGValueOptions asLanguage{SMXLT_TYPE_LANGUAGE, 0};
    const uint32_t german = 1031;
    EXPECT_EQ(ValueText(&german, 4, SMXLT_TYPE_BOOL, &asLanguage), std::string("de\0", 3));
    // Text that the translator copies without a terminator.
    const SMXGValueOptions asText{SMXLT_TYPE_UTF8, 0};
    EXPECT_EQ(ValueText("\0\0abcdefgh", 2, SMXLT_TYPE_BOOL, &asText), "");
    EXPECT_EQ(ValueText("abcdefgh", 6, SMXLT_TYPE_BOOL, &asText), "abcdef");

    // An attribute list is a text like any other: a tag takes it up to the first zero.
    const Buf list = NewBuf();
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "n", &number, 1, SMXLT_TYPE_UINT8, &binary), SM_STATUS_OK);
    EXPECT_EQ(Written(list), std::string("n=\"101\0\"", 8));
    SMXGBufReAllocContent(doc.get(), 64, 0);
    SMXGBufCatBeginNode(doc.get(), "a", list.get());
    EXPECT_EQ(Written(doc), "<a n=\"101>");
}

TEST(XMLValue, Bytes)
{
    const uint8_t bytes[] = {0x00, 0x0A, 0xFF};
    const SMXGValueOptions list{SMXLT_FORMAT_HEX, 0}, octal{SMXLT_FORMAT_OCTAL, 0};
    EXPECT_EQ(ValueText(bytes, 3, SMXLT_TYPE_BYTES, nullptr), "000AFF");
    EXPECT_EQ(ValueText(bytes, 3, SMXLT_TYPE_BYTES, &list), "0x00,0x0A,0xFF");
    EXPECT_EQ(ValueText(bytes, 3, SMXLT_TYPE_BYTES, &octal, SM_STATUS_BAD_ARGUMENT), "");
    EXPECT_EQ(ValueText(bytes, 0, SMXLT_TYPE_BYTES, nullptr, SM_STATUS_FAILED), "");
}

TEST(XMLValue, UTF8BySizeAndEscape)
{
    constexpr SMXGValueOptions twice{0, 2};
    const struct {
        std::string text;
        uint32_t size;
        const SMXGValueOptions *options;
        std::string expected;
    } cases[] = {
        {"ab", 3, nullptr, "ab"},
        {"ab", 2, nullptr, "a"},
        {"ab", 1, nullptr, "ab"}, // a count of 0
        {"ab", 0, nullptr, "ab"},
        {std::string("a\0b", 3), 4, nullptr, std::string("a\0b", 3)},
        {"<&>", 4, nullptr, "<&>"},
        {"<&>", 4, &kEscaped, "&lt;&amp;&gt;"},
        {"<&>", 2, &kEscaped, "&lt;&amp;&gt;"}, // the size is no more than an estimate
        {"<&>", 1, &kEscaped, "<&>"},
        {"<&>", 0, &kEscaped, "<&>"},
        {std::string("a\0<", 3), 4, &kEscaped, "a"},
        {"", 1, &kEscaped, ""},
        {std::string("\0<", 2), 3, &kEscaped, ""},
        {std::string("\0<", 2), 3, &twice, std::string("\0<", 2)}, // an empty result of two passes is none
    };
    for (const auto &c : cases) {
        const char *text = c.text.c_str();
        EXPECT_EQ(ValueText(text, c.size, SMXLT_TYPE_UTF8, c.options), c.expected) << c.text << c.size;
        for (const uint8_t type : kPointerTypes)
            EXPECT_EQ(ValueText(&text, c.size, type, c.options), c.expected) << c.text << c.size;
    }
    const char *none = nullptr;
    for (const uint8_t type : kPointerTypes)
        EXPECT_EQ(ValueText(&none, 1, type, nullptr, SM_STATUS_FAILED), "");
}

TEST(XMLValue, UCS2WholeWhateverTheSize)
{
    constexpr SMXGValueOptions twice{0, 2};
    for (const auto *options : {static_cast<const SMXGValueOptions *>(nullptr), &kEscaped, &twice}) {
        const auto text = Units(u"\u20ac<"), empty = Units(u"");
        const uint16_t *place = text.data();
        const char *expected = options == nullptr ? "\u20ac<" : "\u20ac&lt;";
        EXPECT_EQ(ValueText(place, 2, SMXLT_TYPE_UCS2, options), expected);
        EXPECT_EQ(ValueText(&place, 0, 49, options), expected);
        EXPECT_EQ(ValueText(empty.data(), 2, SMXLT_TYPE_UCS2, options), "");
    }
    const uint16_t *none = nullptr;
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
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "a", value, 8, 15, nullptr), SM_STATUS_FAILED);
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "b", value, 8, SMXLT_TYPE_INT8, nullptr), SM_STATUS_OK);
    EXPECT_EQ(Written(list), "a=\"\" b=\"0\"");
}

struct Escaped {
    std::string text; // "(null)" for none
    uint32_t size;
};

Escaped Escape(const std::string &text, uint32_t estimate, uint32_t passes)
{
    uint32_t size = estimate;
    char *result = SMXGEscapeXMLUTF8Str(text.c_str(), &size, passes);
    const Escaped escaped{result == nullptr ? "(null)" : result, size};
    SMXGBufFreeContent(result);
    return escaped;
}

TEST(XMLEscape, Specials)
{
    const struct {
        const char *text;
        const char *expected;
    } cases[] = {
        {"", ""},
        {"a&amp;b", "a&amp;b"},
        {"a&b", "a&amp;b"},
        {"a&#65;b", "a&amp;#65;b"},
        {"\"'<>", "&quot;&apos;&lt;&gt;"},
        {"&amp;&quot;&apos;&lt;&gt;", "&amp;&quot;&apos;&lt;&gt;"},
        {"&amp &quot &apos &lt &gt", "&amp;amp &amp;quot &amp;apos &amp;lt &amp;gt"},
        {"&LT;&mt;&;&&lt;", "&amp;LT;&amp;mt;&amp;;&amp;&lt;"},
        {"&am<p;", "&amp;am&lt;p;"},
        {"\x01\x7F\x80\xA2\xA6\xBC\xFF", "\x01\x7F\x80\xA2\xA6\xBC\xFF"}, // 0x80 above some special bytes
    };
    for (const auto &c : cases) {
        for (const size_t before : {0, 1, 13, 15, 16, 31}) { // where a special byte lies in a block of 16
            const std::string plain(before, '-');
            const std::string expected = plain + c.expected + plain;
            for (const uint32_t estimate : {1, 7, 64, 1000}) {
                const Escaped escaped = Escape(plain + c.text + plain, estimate, 1);
                EXPECT_EQ(escaped.text, expected);
                EXPECT_EQ(escaped.size, expected.size());
            }
        }
    }
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(20, static_cast<char>(byte));
        EXPECT_EQ(Escape(text, 1, 1).text == text, std::string("\"&'<>").find(text[0]) == std::string::npos) << byte;
    }
}

TEST(XMLEscape, PassesAndEstimate)
{
    for (const uint32_t passes : {1U, 2U, 16U, 20U, UINT32_MAX}) {
        const Escaped escaped = Escape("a<&lt;", 1, passes);
        EXPECT_EQ(escaped.text, "a&lt;&lt;");
        EXPECT_EQ(escaped.size, 9u);
        EXPECT_EQ(Escape("", 1, passes).text, passes == 1 ? "" : "(null)");
    }
    EXPECT_EQ(Escape("a", 0, 1).text, "(null)");
    EXPECT_EQ(Escape("a", 0, 1).size, 0u);
    EXPECT_EQ(Escape("a", 7, 0).text, "(null)");
    EXPECT_EQ(Escape("a", 7, 0).size, 7u);
    uint32_t size = 7;
    EXPECT_EQ(SMXGEscapeXMLUTF8Str(nullptr, &size, 1), nullptr);
    EXPECT_EQ(size, 7u);
    EXPECT_EQ(SMXGEscapeXMLUTF8Str("a", nullptr, 1), nullptr);
}

} // namespace
