// Numbers, times and language names as text, and the bounded calls they are made with.

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "compat/print.h"
#include "compat/string.h"
#include "support/faults.h"
#include "text/language.h"
#include "text/number.h"
#include "text/units.h"
#include "text/utf8.h"

namespace {

TEST(Number, Parses)
{
    const std::tuple<const char *, int64_t, uint64_t> cases[] = {
        {"\t +12x", 12, 12},
        {"\v\f-7", -7, 0},
        {"+-7", 0, 0},
        {"9223372036854775808", INT64_MIN, UINT64_C(1) << 63},
        {"18446744073709551616", 0, 0},
        {"18446744073709551615", -1, UINT64_MAX},
    };
    for (const auto &[givenText, number, positive] : cases) {
        char text[qzvest::kInt64Text];
        qzvest::Int64ToUTF8Str(text, number);
        EXPECT_EQ(text, std::to_string(number));
        qzvest::UInt64ToUTF8Str(text, positive);
        EXPECT_EQ(text, std::to_string(positive));
        // By way of the reader for UTF-8.
        const auto wide = Units({givenText, givenText + strlen(givenText)});
        EXPECT_EQ(qzvest::UCS2StrToInt64(wide.data()), number) << givenText;
        EXPECT_EQ(qzvest::UCS2StrToUInt64(wide.data()), positive) << givenText;
    }
}

TEST(Number, FromUCS2)
{
    EXPECT_EQ(qzvest::UCS2StrToInt32(Units(u"-12").data()), -12);
    EXPECT_EQ(qzvest::UCS2StrToInt32(Units(u"4294967297").data()), 1);            // the low half of strtol's long
    EXPECT_EQ(qzvest::UCS2StrToInt32(Units(u"99999999999999999999").data()), -1); // of LONG_MAX
    EXPECT_EQ(qzvest::UCS2StrToUInt32(Units(u"-1").data()), UINT32_MAX);          // strtoul knows a minus
    EXPECT_EQ(qzvest::UCS2StrToDouble(Units(u" 2.5e3x").data()), 2500.0);
    EXPECT_EQ(qzvest::UCS2StrToInt64(Units(u"12\u00E9").data()), 0); // no room for what is beyond ASCII
    EXPECT_EQ(qzvest::UCS2StrToDouble(nullptr), 0.0);
}

TEST(Number, WithoutMemory)
{
    const long before = LiveBlocks();
    EXPECT_EQ(Failing(1, qzvest::LocalLanguageNameDup), nullptr);
    EXPECT_EQ(Failing(1, [] { return qzvest::UCS2StrToInt64(Units(u"12").data()); }), 0);
    uint32_t size = 9;
    EXPECT_EQ(Failing(1, [&] { return qzvest::UTF8StrdupSized("text", &size); }), nullptr);
    EXPECT_EQ(size, 0u);
    char *copy = qzvest::UTF8StrdupSized("text", &size);
    EXPECT_STREQ(copy, "text");
    EXPECT_EQ(size, 5u);
    std::free(copy);
    EXPECT_EQ(LiveBlocks(), before);
    EXPECT_EQ(qzvest::UTF8StrdupSized(nullptr, &size), nullptr);
    EXPECT_EQ(size, 0u);
}

// A helper's result as text; what it returned if that is not 0.
template <typename Work>
std::u16string Printed(Work work)
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
    using To = uint16_t *;
    using Size = uint32_t *;
    uint32_t size = 200;
    EXPECT_EQ(qzvest::Int32ToUCS2Str(1, 1, Units(u"").data(), &size), -1);
    EXPECT_EQ(Printed([](To to, Size room) { return qzvest::Int32ToUCS2Str(-1, 2, to, room); }),
              std::u16string(64, u'1')); // the widened value
    EXPECT_EQ(Printed([](To to, Size room) { return qzvest::UInt32ToUCS2Str(UINT32_MAX, 16, to, room); }), u"ffffffff");
    EXPECT_EQ(Printed([](To to, Size room) { return qzvest::DoubleToUCS2Str(2, to, room, -1.125); }), u"-1.12");
    EXPECT_EQ(Printed([](To to, Size room) { return qzvest::DoubleToUCS2Str(0, to, room, 1e300); }), u"");
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
    EXPECT_EQ(std::string(text, 25), std::string("\0hu Jan  1 00:00:00 1970\0", 25));
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
    EXPECT_STREQ(text, "new");
    EXPECT_EQ(qzvest::strcpy_s(text, 3, "new"), ERANGE);
    EXPECT_STREQ(text, "");
    const time_t start = 0;
    EXPECT_NE(qzvest::ctime_s(text, 25, &start), 0);
    EXPECT_EQ(qzvest::sprintf_s(text, 4, "%d", 123), 3);
    EXPECT_EQ(qzvest::sprintf_s(text, 4, "%d", 1234), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(qzvest::_ltoa_s(LONG_MIN, text, sizeof text, 10), 0);
    EXPECT_STREQ(text, "-9223372036854775808");
    EXPECT_EQ(qzvest::_ultoa_s(255, text, 2, 16), ERANGE);
    EXPECT_STREQ(text, "");
}

TEST(Language, NamesAndIDsMatchWholeAndInCase)
{
    const std::pair<const char *, uint32_t> cases[] = {
        {"es", 1034}, {"de", 1031},       {"en_US", 1033}, {"en_GB", 2057}, {"fr", 1036},
        {"ja", 1041}, {"ko", 2066},       {"zh", 2052},    {"zh_TW", 1028}, {"pt_BR", 1046},
        {"DE", 1033}, {"de.UTF-8", 1033}, {"en_G", 1033},  {"", 1033},
    };
    for (const auto &[lang, id] : cases) {
        setenv("LANG", lang, 1);
        EXPECT_EQ(qzvest::SMGetLocalLanguageID(), id) << lang;
        char *name = qzvest::LocalLanguageNameDup();
        EXPECT_STREQ(name, id == 1033 ? "en_US" : lang);
        std::free(name);
    }
    unsetenv("LANG");
    EXPECT_EQ(qzvest::SMGetLocalLanguageID(), 1033u);
    for (const int32_t expected : {0, -1}) {
        int32_t found = 5;
        EXPECT_EQ(qzvest::LanguageNameToID(expected == 0 ? "en_US" : "", &found), 1033u);
        EXPECT_EQ(found, expected);
    }
}

} // namespace
