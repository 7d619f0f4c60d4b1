// What sized strings, escapes and language names do when memory runs out.

#include <gtest/gtest.h>

#include <cstring>

#include "support/faults.h"
#include "text/language.h"
#include "text/sizedstring.h"
#include "text/ucs2.h"
#include "text/units.h"

namespace {

TEST(SizedStringFault, FailedAppendChangesNothing)
{
    const long before = LiveBlocks();
    const auto units = Units(u"sixteen units...");
    for (int nth = 1;; ++nth) {
        SMSSUTF8Str record;
        qzvest::SMSSUTF8StrAlloc(&record, 4);
        qzvest::SMSSUTF8StrNCatUTF8Str(&record, "old", 0);
        FailAllocation(nth);
        char *text = qzvest::SMSSUTF8StrNCatUCS2Str(&record, units.data(), 0); // a temporary, then the buffer
        const bool failed = StopFault();
        EXPECT_EQ(text, record.text);
        EXPECT_STREQ(record.text, failed ? "old" : "oldsixteen units...");
        EXPECT_EQ(record.capacity, failed ? 4u : 20u);
        EXPECT_EQ(record.length, failed ? 3u : 19u);
        qzvest::SMSSUTF8StrFree(&record);
        EXPECT_EQ(LiveBlocks(), before);
        if (!failed) {
            EXPECT_EQ(nth, 3);
            break;
        }
    }
}

TEST(SizedStringFault, FailedConversionBetweenRecordsChangesNothing)
{
    const long before = LiveBlocks();
    SMSSUTF8Str source;
    qzvest::SMSSUTF8StrAlloc(&source, 16);
    qzvest::SMSSUTF8StrNCatUTF8Str(&source, "\xC3\xA9t\xC3\xA9", 0);
    SMSSUCS2Str record;
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMSSUCS2StrAlloc(&record, 8), nullptr);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(record.text, nullptr);
    qzvest::SMSSUCS2StrAlloc(&record, 2);
    for (int nth = 1; nth <= 2; ++nth) {
        FailAllocation(nth);
        EXPECT_EQ(qzvest::SSUCS2StrCatSSUTF8Str(&record, &source), record.text);
        EXPECT_TRUE(StopFault());
        EXPECT_EQ(record.length, 0u);
    }
    qzvest::SSUCS2StrCatSSUTF8Str(&record, nullptr);
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
    FailAllocation(1);
    EXPECT_EQ(qzvest::SMUCS2ToEscape(text.data(), &size, source.data()), SM_STATUS_FAILED);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(size, 8192u);
    FailAllocation(2); // the growth that the last of 1,024 escapes asks for; the letters behind it ask again
    EXPECT_EQ(qzvest::SMUCS2ToEscape(text.data(), &size, source.data()), SM_STATUS_OK);
    EXPECT_TRUE(StopFault());
    EXPECT_EQ(size, 1023 * 6 + 4 + 1u);
    EXPECT_STREQ(text.data() + 1022 * 6, "\\u00e9tail");
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(LanguageFault, NoNameWithoutMemory)
{
    FailAllocation(1);
    EXPECT_EQ(qzvest::LocalLanguageNameDup(), nullptr);
    EXPECT_TRUE(StopFault());
}

} // namespace
