// What texts, prints and the XML generator do when memory runs out.

#include <gtest/gtest.h>

#include <string>

#include "support/faults.h"
#include "text/format.h"
#include "text/sizedstring.h"
#include "text/ucs2.h"
#include "text/units.h"
#include "text/xml.h"
#include "text/xmlescape.h"

namespace {

TEST(SizedStringFault, FailedAppendChangesNothing)
{
    const long before = LiveBlocks();
    for (int nth = 1; nth <= 3; ++nth) { // a temporary, then the buffer
        SMSSUTF8Str record;
        qzvest::SMSSUTF8StrAlloc(&record, 4);
        qzvest::SMSSUTF8StrNCatUTF8Str(&record, "old", 0);
        FailAllocation(nth);
        EXPECT_EQ(qzvest::SMSSUTF8StrNCatUCS2Str(&record, Units(u"sixteen units...").data(), 0), record.text);
        EXPECT_EQ(StopFault(), nth < 3);
        EXPECT_STREQ(record.text, nth < 3 ? "old" : "oldsixteen units...");
        EXPECT_EQ(record.capacity, nth < 3 ? 4u : 20u);
        EXPECT_EQ(record.length, nth < 3 ? 3u : 19u);
        qzvest::SMSSUTF8StrFree(&record);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(SizedStringFault, FailedConversionBetweenRecordsChangesNothing)
{
    const long before = LiveBlocks();
    SMSSUTF8Str source;
    qzvest::SMSSUTF8StrAlloc(&source, 16);
    qzvest::SMSSUTF8StrNCatUTF8Str(&source, "\xC3\xA9t\xC3\xA9", 0);
    SMSSUCS2Str record;
    EXPECT_EQ(Failing(1, [&] { return qzvest::SMSSUCS2StrAlloc(&record, 8); }), nullptr);
    qzvest::SMSSUCS2StrAlloc(&record, 2);
    for (int nth = 1; nth <= 2; ++nth) {
        EXPECT_EQ(Failing(nth, [&] { return qzvest::SSUCS2StrCatSSUTF8Str(&record, &source); }), record.text);
        EXPECT_EQ(record.length, 0u);
    }
    qzvest::SSUCS2StrCatSSUTF8Str(&record, &source);
    EXPECT_EQ(record.length, 3u); // just the text, unlike the exported appends
    EXPECT_EQ(Text(record.text), u"\u00e9t\u00e9");
    qzvest::SMSSUTF8StrFree(&source);
    qzvest::SMSSUCS2StrFree(&record);
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(UCS2ToEscapeFault, LaterPiecesGoMissing)
{
    const long before = LiveBlocks();
    const std::vector<uint16_t> source = Units(std::u16string(1024, u'\u00e9') + u"tail");
    std::vector<char> text(8192);
    uint32_t size = 8192;
    EXPECT_EQ(Failing(1, [&] { return qzvest::SMUCS2ToEscape(text.data(), &size, source.data()); }), SM_STATUS_FAILED);
    EXPECT_EQ(size, 8192u);
    // The growth that the last of 1,024 escapes asks for; the letters behind it ask again.
    EXPECT_EQ(Failing(2, [&] { return qzvest::SMUCS2ToEscape(text.data(), &size, source.data()); }), SM_STATUS_OK);
    EXPECT_EQ(size, 1023 * 6 + 4 + 1u);
    EXPECT_STREQ(text.data() + 1022 * 6, "\\u00e9tail");
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(PrintFault, UCS2TextWithoutMemoryEndsTheOutput)
{
    const long before = LiveBlocks();
    const auto text = Units(u"\u00e9t\u00e9");
    const std::string expected[] = {"a", "a\xC3\xA9t\xC3\xA9|", "a\xC3\xA9t\xC3\xA9| \xC3\xA9t\xC3\xA9|7"};
    char room[32];
    for (int nth = 1; nth <= 3; ++nth) {
        FailAllocation(nth);
        const int32_t stored = qzvest::SMFormatPrint(room, sizeof room, "a%S|%6S|%d", text.data(), text.data(), 7);
        EXPECT_EQ(StopFault(), nth < 3);
        EXPECT_EQ(stored, static_cast<int32_t>(expected[nth - 1].size()));
        EXPECT_EQ(room, expected[nth - 1]);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

// Big numbers are kept for reuse: what has been printed before needs no memory any more.
TEST(PrintFault, EqualPrintsAllocateNothing)
{
    char room[1200];
    const auto print = [&room] {
        (void)qzvest::SMFormatPrint(room, sizeof room, "%.1074f %.17g %e %#.300e", 5e-324, 1e300, 0.1, 0.1);
    };
    print();
    print(); // powers of five that the first has built late were blocks of its beginning
    const long before = LiveBlocks();
    FailAllocation(1);
    print();
    (void)qzvest::SMFormatPrint(room, sizeof room, "%d %s %08x %p %c %%", 1, "text", 2U, room, 'c');
    EXPECT_FALSE(StopFault());
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(XMLFault, NoBufferWithoutMemory)
{
    const long before = LiveBlocks();
    for (int nth = 1; nth <= 2; ++nth)
        EXPECT_EQ(Failing(nth, [&] { return qzvest::SMXGBufAlloc(0, 1); }), nullptr);
    SMXGBuf *buffer = qzvest::SMXGBufAlloc(0, 1);
    EXPECT_EQ(Failing(1, [&] { return qzvest::SMXGBufReAllocContent(buffer, 8, 1); }), nullptr);
    EXPECT_EQ(buffer->text, nullptr);
    EXPECT_EQ(buffer->length, 0u);
    qzvest::SMXGBufFree(buffer);
    EXPECT_EQ(LiveBlocks(), before);
}

// Values of each way, in a buffer that needs no growth.
TEST(XMLFault, ValuesWithoutMemory)
{
    const long before = LiveBlocks();
    const uint8_t number = 5;
    const auto units = Units(u"\u00e9<");
    const SMXGValueOptions binary{SMXLT_FORMAT_BINARY, 0}, escaped{0, 1};
    // The statuses of a first and a second failure, and what is written then.
    using Both = std::pair<uint32_t, std::string>;
    const std::tuple<uint8_t, const void *, const SMXGValueOptions *, Both, Both> cases[] = {
        {SMXLT_TYPE_UINT8, &number, nullptr, {SM_STATUS_NO_MEMORY, ""}, {SM_STATUS_OK, "5"}},
        {SMXLT_TYPE_UINT8, &number, &binary, {SM_STATUS_NO_MEMORY, ""}, {SM_STATUS_NO_MEMORY, ""}},
        {SMXLT_TYPE_UTF8, "<", &escaped, {SM_STATUS_OK, "<"}, {SM_STATUS_OK, ""}},
        {SMXLT_TYPE_UCS2, units.data(), &escaped, {SM_STATUS_FAILED, ""}, {SM_STATUS_OK, "\u00e9<"}},
    };
    for (const auto &[type, value, options, first, second] : cases) {
        for (const int nth : {1, 2}) {
            SMXGBuf *buffer = qzvest::SMXGBufAlloc(256, 0);
            FailAllocation(nth);
            const uint32_t status = qzvest::SMXGBufCatNodeValue(buffer, value, 2, type, options);
            StopFault();
            EXPECT_EQ(Both(status, buffer->text), nth == 1 ? first : second) << +type << " " << nth;
            qzvest::SMXGBufFree(buffer);
            EXPECT_EQ(LiveBlocks(), before);
        }
    }
}

TEST(XMLFault, PiecesThatDoNotFitAreMissing)
{
    const long before = LiveBlocks();
    SMXGBuf *buffer = qzvest::SMXGBufAlloc(0, 0);
    const std::string name(62, 'n');
    EXPECT_EQ(Failing(1, [&] { return qzvest::SMXGBufCatBeginNode(buffer, name.c_str(), nullptr); }), SM_STATUS_OK);
    EXPECT_EQ(std::string(buffer->text, buffer->length), "<" + name);
    qzvest::SMXGBufFree(buffer);

    // The room ends within a run, of which the bytes then ask one by one, or at a reference, which is left out.
    for (const auto &[estimate, expected] : {std::pair{3u, "abcdef&lt;ghi"}, {7u, "abcdefghi"}}) {
        uint32_t size = estimate;
        char *text = Failing(2, [&] { return qzvest::SMXGEscapeXMLUTF8Str("abcdef<ghi", &size, 1); });
        EXPECT_STREQ(text, expected);
        EXPECT_EQ(size, std::string(expected).size());
        qzvest::SMXGBufFreeContent(text);
    }
    for (int nth = 1; nth <= 2; ++nth) { // the text of either pass
        uint32_t size = 64;
        EXPECT_EQ(Failing(nth, [&] { return qzvest::SMXGEscapeXMLUTF8Str("abc", &size, 2); }), nullptr);
        EXPECT_EQ(size, 0u);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

} // namespace
