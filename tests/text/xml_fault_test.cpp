// What the XML generator does when memory runs out.

#include <gtest/gtest.h>

#include <string>

#include "support/faults.h"
#include "text/units.h"
#include "text/xml.h"
#include "text/xmlescape.h"

namespace {

TEST(XMLFault, NoBufferWithoutMemory)
{
    const long before = LiveBlocks();
    for (int nth = 1; nth <= 2; ++nth) {
        FailAllocation(nth);
        EXPECT_EQ(qzvest::SMXGBufAlloc(0, 1), nullptr);
        EXPECT_TRUE(StopFault());
        EXPECT_EQ(LiveBlocks(), before);
    }
    SMXGBuf *buffer = qzvest::SMXGBufAlloc(0, 1);
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMXGBufReAllocContent(buffer, 8, 1), nullptr);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(buffer->text, nullptr);
    EXPECT_EQ(buffer->length, 0u);
    qzvest::SMXGBufFree(buffer);
    EXPECT_EQ(LiveBlocks(), before);
}

// Values of each way, in a buffer that needs no growth; the statuses are those of the first and the next failures.
TEST(XMLFault, ValuesWithoutMemory)
{
    const long before = LiveBlocks();
    const uint8_t number = 5;
    const auto units = Units(u"\u00e9<");
    const SMXGValueOptions binary{SMXLT_FORMAT_BINARY, 0}, escaped{0, 1};
    const struct {
        uint8_t type;
        const void *value;
        const SMXGValueOptions *options;
        uint32_t statuses[2];
        std::string texts[2]; // what is written with such a failure
    } cases[] = {
        {SMXLT_TYPE_UINT8, &number, nullptr, {SM_STATUS_NO_MEMORY, SM_STATUS_OK}, {"", "5"}},
        {SMXLT_TYPE_UINT8, &number, &binary, {SM_STATUS_NO_MEMORY, SM_STATUS_NO_MEMORY}, {"", ""}},
        {SMXLT_TYPE_UTF8, "<", &escaped, {SM_STATUS_OK, SM_STATUS_OK}, {"<", ""}},
        {SMXLT_TYPE_UCS2, units.data(), &escaped, {SM_STATUS_FAILED, SM_STATUS_OK}, {"", "\u00e9<"}},
    };
    for (const auto &c : cases) {
        for (int nth = 1; nth <= 2; ++nth) {
            SMXGBuf *buffer = qzvest::SMXGBufAlloc(256, 0);
            FailAllocation(nth);
            EXPECT_EQ(qzvest::SMXGBufCatNodeValue(buffer, c.value, 2, c.type, c.options), c.statuses[nth - 1]);
            StopFault();
            EXPECT_EQ(std::string(buffer->text, buffer->length), c.texts[nth - 1]) << +c.type << " " << nth;
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
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMXGBufCatBeginNode(buffer, name.c_str(), nullptr), SM_STATUS_OK);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(std::string(buffer->text, buffer->length), "<" + name);
    qzvest::SMXGBufFree(buffer);

    // The room ends within a run, of which the bytes then ask one by one, or at a reference, which is left out.
    const struct {
        uint32_t estimate;
        const char *expected;
    } cases[] = {{3, "abcdef&lt;ghi"}, {7, "abcdefghi"}, {11, "abcdef&lt;ghi"}};
    for (const auto &c : cases) {
        uint32_t size = c.estimate;
        FailAllocation(2);
        char *text = qzvest::SMXGEscapeXMLUTF8Str("abcdef<ghi", &size, 1);
        EXPECT_TRUE(StopFault());
        EXPECT_STREQ(text, c.expected);
        EXPECT_EQ(size, std::string(c.expected).size());
        qzvest::SMXGBufFreeContent(text);
    }
    for (int nth = 1; nth <= 2; ++nth) { // the text of either pass
        uint32_t size = 64;
        FailAllocation(nth);
        EXPECT_EQ(qzvest::SMXGEscapeXMLUTF8Str("abc", &size, 2), nullptr);
        EXPECT_TRUE(StopFault());
        EXPECT_EQ(size, 0u);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

} // namespace
