// Numbers and times as text, and the bounded calls they are made with.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "compat/print.h"
#include "compat/string.h"
#include "support/faults.h"
#include "text/number.h"
#include "text/utf8.h"

namespace {

using Text16 = std::u16string;

const uint16_t *Units(const Text16 &text)
{
    return reinterpret_cast<const uint16_t *>(text.c_str());
}

TEST(Number, Parses)
{
    const struct {
        const char *text;
        int64_t number;
        uint64_t positive;
    } cases[] = {
        {"", 0, 0},
        {"-", 0, 0},
        {"\t +12x", 12, 12},
        {"\v\f-7", -7, 0}, // for the unsigned form a minus is no digit
        {"+-7", 0, 0},
        {"- 7", 0, 0},
        {"9223372036854775808", INT64_MIN, UINT64_C(1) << 63},
        {"18446744073709551616", 0, 0}, // wraps
        {"18446744073709551615", -1, UINT64_MAX},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(qzvest::UTF8StrToInt64(c.text), c.number) << c.text;
        EXPECT_EQ(qzvest::UTF8StrToUInt64(c.text), c.positive) << c.text;
        const Text16 wide(c.text, c.text + strlen(c.text));
        EXPECT_EQ(qzvest::UCS2StrToInt64(Units(wide)), c.number) << c.text;
        EXPECT_EQ(qzvest::UCS2StrToUInt64(Units(wide)), c.positive) << c.text;
    }
}

TEST(Number, Prints)
{
    const int64_t numbers[] = {0, 7, -1, 1234567890123456789, INT64_MAX, INT64_MIN};
    for (const int64_t number : numbers) {
        char text[qzvest::kInt64Text];
        qzvest::Int64ToUTF8Str(text, number);
        EXPECT_EQ(text, std::to_string(number));
        qzvest::UInt64ToUTF8Str(text, static_cast<uint64_t>(number));
        EXPECT_EQ(text, std::to_string(static_cast<uint64_t>(number)));
    }
}

TEST(Number, FromUCS2)
{
    EXPECT_EQ(qzvest::UCS2StrToInt32(Units(u"-12")), -12);
    EXPECT_EQ(qzvest::UCS2StrToInt32(Units(u"4294967297")), 1);            // the low half of strtol's long
    EXPECT_EQ(qzvest::UCS2StrToInt32(Units(u"99999999999999999999")), -1); // of LONG_MAX
    EXPECT_EQ(qzvest::UCS2StrToUInt32(Units(u"-1")), UINT32_MAX);          // strtoul knows a minus
    EXPECT_EQ(qzvest::UCS2StrToDouble(Units(u" 2.5e3x")), 2500.0);
    EXPECT_EQ(qzvest::UCS2StrToInt64(Units(u"12\u00E9")), 0); // no room for what is beyond ASCII
    EXPECT_EQ(qzvest::UCS2StrToInt32(nullptr), 0);
    EXPECT_EQ(qzvest::UCS2StrToDouble(nullptr), 0.0);
}

TEST(Number, WithoutMemory)
{
    const auto without = [](auto work) {
        const long before = LiveBlocks();
        FailAllocation(1);
        const auto result = work();
        EXPECT_TRUE(StopFault());
        EXPECT_EQ(LiveBlocks(), before);
        return result;
    };
    EXPECT_EQ(without([] { return qzvest::UCS2StrToInt64(Units(u"12")); }), 0);
    uint32_t size = 9;
    EXPECT_EQ(without([&] { return qzvest::UTF8StrdupSized("text", &size); }), nullptr);
    EXPECT_EQ(size, 0u);
    char *copy = qzvest::UTF8StrdupSized("text", &size);
    EXPECT_EQ(size, 5u);
    std::free(copy);
    EXPECT_EQ(qzvest::UTF8StrdupSized(nullptr, &size), nullptr);
    EXPECT_EQ(size, 0u);
}

// A helper's result as text; what it returned if that is not 0.
template <typename Work>
Text16 Printed(Work work)
{
    uint16_t text[140];
    uint32_t size = 0;
    EXPECT_EQ(work(nullptr, &size), 0) << "asking for the size";
    uint32_t room = size - 1;
    EXPECT_EQ(work(text, &room), -1) << "a byte too few";
    EXPECT_EQ(room, size - 1);
    EXPECT_EQ(work(text, nullptr), -1);
    EXPECT_EQ(work(text, &size), 0);
    return {text, text + size / 2 - 1};
}

TEST(Number, ToUCS2)
{
    const auto int32 = [](int32_t value, int32_t radix) {
        return Printed([=](uint16_t *to, uint32_t *size) { return qzvest::Int32ToUCS2Str(value, radix, to, size); });
    };
    EXPECT_EQ(int32(-255, 10), u"-255");
    EXPECT_EQ(int32(-1, 16), u"ffffffffffffffff"); // the widened value
    EXPECT_EQ(int32(35, 36), u"z");
    EXPECT_EQ(int32(-1, 2), Text16(64, u'1'));
    uint32_t size = 200;
    uint16_t text[100];
    EXPECT_EQ(qzvest::Int32ToUCS2Str(1, 1, text, &size), -1);
    EXPECT_EQ(qzvest::UInt32ToUCS2Str(1, 37, text, &size), -1);
    EXPECT_EQ(Printed([](uint16_t *to, uint32_t *s) { return qzvest::UInt32ToUCS2Str(UINT32_MAX, 16, to, s); }),
              u"ffffffff");
    EXPECT_EQ(Printed([](uint16_t *to, uint32_t *s) { return qzvest::DoubleToUCS2Str(2, to, s, -1.125); }), u"-1.12");
    EXPECT_EQ(Printed([](uint16_t *to, uint32_t *s) { return qzvest::DoubleToUCS2Str(0, to, s, 1e300); }), u"");
}

TEST(Time, Texts)
{
    setenv("TZ", "UTC", 1);
    tzset();
    const time_t start = 0;
    char text[40] = "?";
    EXPECT_EQ(qzvest::TimeToUTF8Str(&start, text, 0), 0);
    EXPECT_STREQ(text, "?");
    EXPECT_EQ(qzvest::TimeToUTF8Str(&start, text, 26), 0);
    EXPECT_STREQ(text, "Thu Jan  1 00:00:00 1970");
    text[24] = '?';
    EXPECT_EQ(qzvest::TimeToUTF8Str(&start, text, 25), 0); // the line feed does not fit
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[24], '\0');
    EXPECT_EQ(text[1], 'h');
    const time_t tooLate = 253402300800; // in the year 10000
    EXPECT_EQ(qzvest::TimeToUTF8Str(&tooLate, text, 40), -1);
    EXPECT_EQ(qzvest::TimeToUTF8Str(nullptr, text, 40), -1);
    EXPECT_EQ(Printed([&](uint16_t *to, uint32_t *size) { return qzvest::TimeToUCS2Str(&start, to, size); }),
              u"Thu Jan  1 00:00:00 1970");
}

TEST(Bounded, ViolationsLeaveAnEmptyText)
{
    char text[32] = "old";
    EXPECT_EQ(qzvest::strcpy_s(text, 4, "new"), 0);
    EXPECT_STREQ(text, "new");
    EXPECT_EQ(qzvest::strcpy_s(text, 0, "x"), EINVAL);
    EXPECT_EQ(qzvest::strcpy_s(text, SIZE_MAX, "x"), EINVAL);
    EXPECT_EQ(qzvest::strcpy_s(nullptr, 4, "x"), EINVAL);
    EXPECT_STREQ(text, "new");
    EXPECT_EQ(qzvest::strcpy_s(text, 3, "new"), ERANGE);
    EXPECT_STREQ(text, "");
    text[0] = 'x';
    EXPECT_EQ(qzvest::strcpy_s(text, 3, nullptr), EINVAL);
    EXPECT_STREQ(text, "");

    const time_t start = 0;
    EXPECT_NE(qzvest::ctime_s(text, 25, &start), 0);
    EXPECT_EQ(qzvest::sprintf_s(text, 4, "%d", 123), 3);
    EXPECT_EQ(qzvest::sprintf_s(text, 4, "%d", 1234), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(qzvest::_ltoa_s(LONG_MIN, text, sizeof text, 10), 0);
    EXPECT_STREQ(text, "-9223372036854775808");
    EXPECT_EQ(qzvest::_ultoa_s(255, text, 3, 16), 0);
    EXPECT_STREQ(text, "ff");
    EXPECT_EQ(qzvest::_ultoa_s(255, text, 2, 16), ERANGE);
    EXPECT_STREQ(text, "");
}

} // namespace
