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

TEST(XMLBuf, NullArguments)
{
    const Buf buffer = NewBuf();
    EXPECT_EQ(SMXGBufCatBeginNode(buffer.get(), nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXGBufCatEmptyNode(nullptr, "a", nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXGBufCatAttribute(buffer.get(), "a", nullptr, 4, SMXLT_TYPE_INT32, nullptr),
              SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXGBufCatNodeValue(buffer.get(), nullptr, 4, 255, nullptr), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(Written(buffer), "");
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

    const std::string text = Written(doc);
    xmlDoc *parsed = xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr, XML_PARSE_NONET);
    ASSERT_NE(parsed, nullptr);
    xmlFreeDoc(parsed);
}

TEST(XMLValue, PlainByTypeAndFormat)
{
    const double real = -2.0625;
    const std::tuple<uint8_t, const void *, uint16_t, const char *, uint32_t> cases[] = {
        {SMXLT_TYPE_INT8, "\xFF", SMXLT_FORMAT_HEX, "0xffffffff", SM_STATUS_OK},
        {SMXLT_TYPE_DOUBLE, &real, 0, "-2.062", SM_STATUS_OK},
        {SMXLT_TYPE_BYTES, "\0\n\xFF", 0, "000AFF", SM_STATUS_OK},
        {SMXLT_TYPE_BYTES, "\0\n\xFF", SMXLT_FORMAT_HEX, "0x00,0x0A,0xFF", SM_STATUS_OK},
        {SMXLT_TYPE_BYTES, "\0\n\xFF", SMXLT_FORMAT_OCTAL, "", SM_STATUS_BAD_ARGUMENT},
    };
    for (const auto &[type, value, format, text, status] : cases) {
        const SMXGValueOptions options{format, 0};
        EXPECT_EQ(ValueText(value, 3, type, &options, status), text) << +type;
    }
    EXPECT_EQ(ValueText("", 0, SMXLT_TYPE_BYTES, nullptr, SM_STATUS_FAILED), "");
    const time_t noon = 43200;
    const std::string date = ctime(&noon);
    EXPECT_EQ(ValueText(&noon, 0, SMXLT_TYPE_TIME, nullptr) + '\n', date);
}

// What is too long for the first room goes in with its terminator.
TEST(XMLValue, LongFormsBringTheirTerminator)
{
    const SMXGValueOptions binary{SMXLT_FORMAT_BINARY, 0};
    const uint8_t number = 5;
    EXPECT_EQ(ValueText(&number, 1, SMXLT_TYPE_UINT8, &binary), std::string("101\0", 4));
    const std::string dump = ValueText("AB", 2, SMXLT_TYPE_BYTES, &binary);
    EXPECT_EQ(dump.size(), 82u); // a line, its end and a zero
    EXPECT_EQ(dump.back(), '\0');

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
    EXPECT_EQ(SMXGBufCatAttribute(list.get(), "n", &number, 1, SMXLT_TYPE_UINT8, &binary), SM_STATUS_OK);
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
    for (const auto *options : {static_cast<const SMXGValueOptions *>(nullptr), &kEscaped}) {
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
    EXPECT_EQ(Written(list), "a=\"\"");
}

using Escaped = std::pair<std::string, uint32_t>; // "(null)" for none

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
    const std::tuple<const char *, const char *> cases[] = {
        {"", ""},
        {"a&#65;b", "a&amp;#65;b"},
        {"\"'<>&amp;&quot;&apos;&lt;&gt;", "&quot;&apos;&lt;&gt;&amp;&quot;&apos;&lt;&gt;"},
        {"&amp &quot &apos &lt &gt", "&amp;amp &amp;quot &amp;apos &amp;lt &amp;gt"},
        {"&LT;&mt;&;&&lt;", "&amp;LT;&amp;mt;&amp;;&amp;&lt;"},
        {"&am<p;", "&amp;am&lt;p;"},
        {"\x01\x7F\x80\xA2\xA6\xBC\xFF", "\x01\x7F\x80\xA2\xA6\xBC\xFF"},
    };
    for (const auto &[text, givenExpected] : cases) {
        for (const size_t before : {0, 1, 13, 15, 16, 31}) { // where a special byte lies in a block of 16
            const std::string plain(before, '-');
            const std::string expected = plain + givenExpected + plain;
            for (const uint32_t estimate : {1, 7, 64, 1000})
                EXPECT_EQ(Escape(plain + text + plain, estimate, 1), Escaped(expected, expected.size()));
        }
    }
}

TEST(XMLEscape, PassesAndEstimate)
{
    for (const uint32_t passes : {1U, 2U, 16U, 20U, UINT32_MAX}) {
        EXPECT_EQ(Escape("a<&lt;", 1, passes), Escaped("a&lt;&lt;", 9));
        EXPECT_EQ(Escape("", 1, passes).first, passes == 1 ? "" : "(null)");
    }
    EXPECT_EQ(Escape("a", 0, 1), Escaped("(null)", 0));
    EXPECT_EQ(Escape("a", 7, 0), Escaped("(null)", 7));
}

} // namespace
