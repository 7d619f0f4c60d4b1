#include <gtest/gtest.h>
#include <qzvest/sizedstring.h>

#include "text/units.h"

namespace {

template <typename Base, auto Alloc, auto Free>
struct Record : Base {
    explicit Record(uint32_t size)
    {
        Alloc(this, size);
    }
    ~Record()
    {
        Free(this);
    }
    // All units, the terminator behind them included.
    auto Held() const
    {
        return std::basic_string(this->text, this->length + 1);
    }
};
using UTF8Record = Record<SMSSUTF8Str, SMSSUTF8StrAlloc, SMSSUTF8StrFree>;
using UCS2Record = Record<SMSSUCS2Str, SMSSUCS2StrAlloc, SMSSUCS2StrFree>;

TEST(SizedString, GrowsByTheRule)
{
    // The last step wraps, and gives way to the need alone.
    const std::tuple<uint32_t, uint32_t, uint32_t, uint32_t> cases[] = {
        {16, 15, 1, 32},
        {64, 0, 1000, 1001},
        {0xFFFFF, 0xFFFFE, 1, 0x1FFFFE},
        {34359738, 34359737, 1, 42949672},
        {34359739, 34359738, 1, 34359740},
    };
    for (const auto &[capacity, givenHeld, givenAdded, after] : cases) {
        UTF8Record record(capacity);
        const std::string held(givenHeld, 'h'), added(givenAdded, 'a');
        if (givenHeld != 0)
            SMSSUTF8StrCatUTF8Str(&record, held.c_str());
        ASSERT_EQ(record.capacity, capacity);
        EXPECT_EQ(SMSSUTF8StrCatUTF8Str(&record, added.c_str()), record.text);
        EXPECT_EQ(record.capacity, after) << capacity;
        EXPECT_TRUE(record.Held() == held + added + '\0');
    }
    UCS2Record units(8);
    SMSSUCS2StrCatUCS2Str(&units, Units(u"abc").data());
    EXPECT_EQ(units.capacity, 8u);
    SMSSUCS2StrCatUCS2Str(&units, Units(u"d").data());
    EXPECT_EQ(units.capacity, 16u);
    EXPECT_EQ(Text(units.text), u"abcd");
}

TEST(SizedString, CountsCopyUnseen)
{
    UTF8Record record(8);
    SMSSUTF8StrNCatUTF8Str(&record, "0123456789", 3);
    SMSSUTF8StrNCatUTF8Str(&record, "abcdefghij", 0);
    SMSSUTF8StrNCatUTF8Str(&record, "xy\0zw", 5);
    const std::string once("012abcdefghijxy\0zw", 18);
    SMSSUTF8StrNCatUTF8Str(&record, record.text, 18); // itself: it grows, and may move
    EXPECT_EQ(record.Held(), once + once + '\0');

    UCS2Record units(2);
    const uint16_t some[] = {1, 0, 2, 9}, terminated[] = {1, 0, 2, 0};
    SMSSUCS2StrNCatUCS2Str(&units, some, 3);
    EXPECT_EQ(units.Held(), std::basic_string(terminated, 4));
}

TEST(SizedString, UTF8IntoUCS2CountsSourceBytes)
{
    UCS2Record record(64);
    SMSSUCS2StrCatUTF8Str(&record, "\xC3\xA9");
    EXPECT_EQ(record.length, 2u);
    SMSSUCS2StrCatUTF8Str(&record, "x"); // lies behind the terminator, unseen
    EXPECT_EQ(Text(record.text), u"\u00e9");
    EXPECT_EQ(record.text[2], 'x');
    SMSSUCS2StrNCatUTF8Str(&record, "hello", 2); // never cut short
    SMSSUCS2StrNCatUTF8Str(&record, "\xC3", 9);  // cannot be converted
    EXPECT_EQ(record.length, 3u);
    SMSSUCS2StrNCatUTF8Str(&record, "hi", 5);
    EXPECT_EQ(record.length, 8u);
    EXPECT_EQ(Text(record.text + 3), u"hi");
}

TEST(SizedString, UCS2IntoUTF8HasOneByteAUnit)
{
    UTF8Record record(16);
    SMSSUTF8StrCatUCS2Str(&record, Units(u"plain").data());
    SMSSUTF8StrCatUCS2Str(&record, Units(u"A\u00e9").data());
    EXPECT_EQ(record.Held(), std::string("plain\0", 6));
    SMSSUTF8StrNCatUCS2Str(&record, Units(u"A\u00e9").data(), 3);
    SMSSUTF8StrNCatUCS2Str(&record, Units(u"abc").data(), 2);
    EXPECT_EQ(record.Held(), std::string("plainA\xC3\xA9\0", 9));
}

TEST(SizedString, EmptyRecordsTakeNothing)
{
    SMSSUTF8Str record = {nullptr, 7, 7};
    EXPECT_EQ(SMSSUTF8StrAlloc(&record, 0), nullptr);
    EXPECT_EQ(record.capacity, 7u);
    SMSSUTF8StrAlloc(&record, 4);
    EXPECT_EQ(SMSSUTF8StrCatUTF8Str(&record, nullptr), record.text);
    SMSSUTF8StrFree(&record);
    SMSSUTF8StrFree(&record);
    EXPECT_EQ(record.capacity + record.length, 0u);
    EXPECT_EQ(SMSSUTF8StrCatUTF8Str(&record, "a"), nullptr);
    EXPECT_EQ(SMSSUTF8StrNCatUCS2Str(&record, Units(u"a").data(), 4), nullptr);

    UCS2Record odd(1); // no room even for the terminator, which is written all the same
    EXPECT_EQ(odd.text[0], 0u);
    SMSSUCS2StrCatUTF8Str(&odd, "ab");
    EXPECT_EQ(Text(odd.text), u"ab");
    EXPECT_EQ(odd.capacity, 6u);
}

} // namespace
