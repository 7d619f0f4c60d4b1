#include <gtest/gtest.h>
#include <qzvest/print.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/ownlocale.h"
#include "text/units.h"

namespace {

// The printed text in an exactly sized block, which the address sanitizer watches; zero bytes inside are kept.
template <typename... Arguments>
std::string Print(const char *format, Arguments... arguments)
{
    const uint32_t length = SMsnprintf(nullptr, 4096, format, arguments...);
    const auto room = std::make_unique<char[]>(length + 1);
    memset(room.get(), '~', length + 1);
    EXPECT_EQ(SMsnprintf(room.get(), length + 1, format, arguments...), length) << format;
    EXPECT_EQ(room[length], '\0') << format;
    return {room.get(), length};
}

template <typename Value>
struct Case {
    const char *format;
    Value value;
    const char *expected;
};

// Where the C library reads a format the same way. Arguments are wide enough for all sizes.
TEST(Print, IntegersAgreeWithTheCLibrary)
{
    std::mt19937_64 random(51);
    for (int round = 0; round < 50000; ++round) {
        std::string format = "%";
        for (const char flag : std::string("-+ #0"))
            format.append(random() % 4 == 0 ? 1 : 0, flag);
        format += std::vector<std::string>{"", "7", "25", "*"}[random() % 4];
        format += std::vector<std::string>{"", "", ".", ".3", ".22", ".45"}[random() % 6];
        const bool star = format.back() == '*' || format.find("*.") != std::string::npos;
        format += std::vector<std::string>{"", "h", "l", "ll"}[random() % 4];
        format += "diuxXo"[random() % 6];
        if (format.back() == 'o' && format.find('#') != std::string::npos && format.find('.') != std::string::npos)
            continue; // the "0" goes another way
        const int64_t number = random() % 6 == 0 ? 0 : static_cast<int64_t>(random()) >> random() % 64;
        const int width = static_cast<int>(random() % 40) - 20;
        char expected[64];
        if (star)
            snprintf(expected, sizeof expected, (format + "|").c_str(), width, number);
        else
            snprintf(expected, sizeof expected, (format + "|").c_str(), number);
        ASSERT_EQ(star ? Print((format + "|").c_str(), width, number) : Print((format + "|").c_str(), number), expected)
            << format << " of " << number;
    }
}

TEST(Print, IntegersUnlikeTheCLibrarys)
{
    const Case<int64_t> cases[] = {
        {"%hhd", 70000, "4464"},
        {"%D", -1, "-1"},
        {"%U", -1, "18446744073709551615"},
        {"%#O", 1LL << 33, "0100000000000"},
        {"%#.3o", 8, "010"},
        {"%#.0o|", 0, "|"},
        {"%5-3d|", 7, "7  |"},
        {"%.2 5d|", 7, "   07|"},
        {"%.1.3d", 7, "007"},
        {"%4h#x|", 0x1000A, " 0xa|"},
        {"%.2147483648d|", 0, "0|"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Print(c.format, c.value), c.expected) << c.format;
    EXPECT_EQ(Print("%.*d|%.*d|%5.*d|%.*d", 3, 1, -3, 0, -1, 7, 0, 0), "001|0|    7|");
}

TEST(Print, PointersAlwaysHaveThePrefix)
{
    const auto high = reinterpret_cast<void *>(0xFFFFFFFFFFFFABCD);
    EXPECT_EQ(Print("%hp", high), "0xffffffffffffabcd");
    EXPECT_EQ(Print("%+8p|%-8p|%08p", nullptr, nullptr, nullptr), "     0x0|0x0     |0x000000");
    EXPECT_EQ(Print("%.4p", nullptr), "0x0000");
}

TEST(Print, Texts)
{
    const Case<const char *> cases[] = {
        {"%5s|", "ab", "   ab|"}, {"%05s|", "ab", "000ab|"}, {"%-05s|", "ab", "ab   |"},
        {"%.9s|", "ab", "ab|"},   {"%s", nullptr, "(null)"}, {"%.3s", nullptr, "(nu"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Print(c.format, c.value), c.expected) << c.format;

    const auto open = std::make_unique<char[]>(3); // not terminated
    memcpy(open.get(), "abc", 3);
    EXPECT_EQ(Print("%.3s|%.*s", open.get(), 2, open.get()), "abc|ab");

    EXPECT_EQ(Print("%c%lc", 'a' + 256, 'b'), "ab");
    EXPECT_EQ(Print("%3c|%-3c|%03c|%.5c", 'a', 'b', 'c', 'd'), "  a|b  |00c|d");
    EXPECT_EQ(Print("a%cb", 0), std::string("a\0b", 3));
}

TEST(Print, UCS2Texts)
{
    const std::string null = "\xE6\xB8\xA8\xE6\xB1\xB5\xE2\xA5\xAC";
    EXPECT_EQ(Print("%.3S|%10S", nullptr, nullptr), null.substr(0, 3) + "| " + null);

    const auto text = Units(u"\u00e9t\u00e9");
    EXPECT_EQ(Print("%6S|%-6S|%06.2S", text.data(), text.data(), text.data()),
              " \xC3\xA9t\xC3\xA9|\xC3\xA9t\xC3\xA9 |0000\xC3\xA9");

    // What cannot be converted ends the output, before the field's padding too.
    const std::vector<uint16_t> lone = {0xD83D, 'a', 0};
    const std::vector<uint16_t> later = {'a', 0xD83D, 0};
    int32_t untouched = -7;
    EXPECT_EQ(Print("%S-%9S%d%n", text.data(), lone.data(), 1, &untouched), "\xC3\xA9t\xC3\xA9-");
    EXPECT_EQ(untouched, -7);
    EXPECT_EQ(Print("%S|", later.data()), "aa|");
}

TEST(Print, CountsSoFar)
{
    int64_t slot = -1;
    EXPECT_EQ(Print("ab%5d%n!", 1, &slot), "ab    1!");
    EXPECT_EQ(slot, static_cast<int64_t>(0xFFFFFFFF00000007)); // a little-endian host
    slot = -1;
    EXPECT_EQ(Print("abc%hn", &slot), "abc");
    EXPECT_EQ(slot, static_cast<int64_t>(0xFFFFFFFFFFFF0003));
    EXPECT_EQ(Print("abc%ln", &slot), "abc");
    EXPECT_EQ(slot, 3);
}

TEST(Print, OtherCharactersPrintThemselves)
{
    const std::tuple<const char *, const char *> cases[] = {
        {"", ""},       {"%5%|", "    %|"}, {"%-5%|", "%    |"}, {"%05%", "0000%"}, {"%zu", "zu"},   {"%3F|", "  F|"},
        {"%A%C", "AC"}, {"%1$d", "$d"},     {"%-3\n|", "\n  |"}, {"%\x80", "\x80"}, {"abc%", "abc"}, {"a%-5.3l", "a"},
    };
    for (const auto &[format, expected] : cases)
        EXPECT_EQ(Print(format), expected) << format;
}

TEST(Print, RoomBoundsTextAndCount)
{
    for (const uint32_t size : {0u, 1u, 4u, 9u, 10u, 11u, 0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
        char room[16] = "~~~~~~~~~~~~~~~";
        const std::string printed = "ab00345yz";
        const uint32_t stored = size == 0 || size > 0x80000000 ? 0 : std::min(size - 1, 9u);
        EXPECT_EQ(SMsnprintf(room, size, "%s%05d%c%c", "ab", 345, 'y', 'z'), stored) << size;
        EXPECT_EQ(std::string(room, stored + 2), printed.substr(0, stored) + '\0' + '~') << size;
        EXPECT_EQ(SMsnprintf(nullptr, size, "%9s", "a"), stored) << size;
    }
    char room[20];
    EXPECT_EQ(SMsnprintf(room, sizeof room, "%2147483647d", 1), 19u);
    EXPECT_STREQ(room, "                   ");
    EXPECT_EQ(SMsnprintf(room, sizeof room, "%-.2147483647d", -1), 19u);
    EXPECT_STREQ(room, "-000000000000000000");
}

TEST(Print, ThreadsDontMix)
{
    const auto units = Units(u"\u00e9t\u00e9");
    const auto work = [&units](int self) {
        const double value = std::ldexp(1.0 + self / 16.0, 900 - 200 * self); // big numbers, of many sizes
        char expected[512];
        char room[512];
        snprintf(expected, sizeof expected, "%d %.30f %.17g \u00e9t\u00e9", self, value, value);
        for (int i = 0; i < 500; ++i) {
            const uint32_t stored =
                SMsnprintf(room, sizeof room, "%d %.30f %.17g %S", self, value, value, units.data());
            ASSERT_EQ(stored, strlen(expected));
            ASSERT_STREQ(room, expected);
        }
    };
    std::thread threads[8];
    for (int i = 0; i < 8; ++i)
        threads[i] = std::thread(work, i);
    for (auto &thread : threads)
        thread.join();
}

TEST(Print, PointInALocaleWithAComma)
{
    const OwnLocale comma("LC_NUMERIC", LC_NUMERIC, "decimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\n");
    ASSERT_TRUE(comma.isSet);
    char theirs[8];
    snprintf(theirs, sizeof theirs, "%.1f", 1.5);
    EXPECT_STREQ(theirs, "1,5");
    EXPECT_EQ(Print("%.1f %e %g %#.0f", 1.5, 1.5, 1e6 + 0.5, 2.0), "1.5 1.5e+00 1e+06 2.");
}

} // namespace
