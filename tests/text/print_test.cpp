#include <fcntl.h>
#include <gtest/gtest.h>
#include <qzvest/print.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

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

TEST(Print, Integers)
{
    const Case<int> plain[] = {
        {"%d", INT_MIN, "-2147483648"},
        {"%i|", 0, "0|"},
        {"%u", -1, "4294967295"},
        {"%o", -1, "37777777777"},
        {"%x", 0xBEEF, "beef"},
        {"%X", 0xBEEF, "BEEF"},
        // 16 bits
        {"%hd", 70000, "4464"},
        {"%hi", 0x18000, "-32768"},
        {"%hu", -1, "65535"},
        {"%ho", 0x10008, "10"},
        {"%hx", -1, "ffff"},
        {"%hhd", 70000, "4464"},
        {"%#hx", 0x10000, "0"},
        // signs
        {"%+d", 5, "+5"},
        {"% d", 5, " 5"},
        {"% +d", 5, "+5"},
        {"%+ d", 5, "+5"},
        {"%+d", -5, "-5"},
        {"%+u", 5, "5"},
        {"% x", 5, "5"},
        {"%+o", 5, "5"},
        // alternate forms
        {"%#x", 0, "0"},
        {"%#X", 255, "0XFF"},
        {"%#o", 0, "0"},
        {"%#o", 8, "010"},
        {"%#.3o", 8, "010"},
        {"%#.2o", 8, "010"},
        {"%#.0o|", 0, "|"},
        {"%#d", 5, "5"},
        // width, zeros and precision
        {"%5d|", -42, "  -42|"},
        {"%-5d|", -42, "-42  |"},
        {"%05d|", -42, "-0042|"},
        {"%-05d|", -42, "-42  |"},
        {"%0-5d|", -42, "-42  |"},
        {"%2d", 12345, "12345"},
        {"%#08x", 255, "0x0000ff"},
        {"%#8x", 255, "    0xff"},
        {"%#-8x|", 255, "0xff    |"},
        {"%.5d", -42, "-00042"},
        {"%08.5d", -42, "  -00042"},
        {"%-8.5d|", 42, "00042   |"},
        {"%#8.5x", 255, " 0x000ff"},
        {"%.0d|", 0, "|"},
        {"%.d|", 0, "|"},
        {"%3.0d|", 0, "   |"},
        {"%+.0d|", 0, "+|"},
        {"%.0x|", 0, "|"},
        {"%.20d", 1, "00000000000000000001"},
        {"%20d", 1, "                   1"},
        {"%.45d", 1, "000000000000000000000000000000000000000000001"},
        // any order, and again
        {"%5-3d|", 7, "7  |"},
        {"%3+d", 7, " +7"},
        {"%.-5d|", 7, "7    |"},
        {"%.2 5d|", 7, "   07|"},
        {"%.1.3d", 7, "007"},
        {"%.0005d", 7, "00007"},
        {"%h5d|", 70000, " 4464|"},
        {"%4h#x|", 0x1000A, " 0xa|"},
        // numbers that no int holds
        {"%.2147483648d", 5, "5"},
        {"%.2147483648d|", 0, "0|"},
    };
    for (const auto &c : plain)
        EXPECT_EQ(Print(c.format, c.value), c.expected) << c.format;

    const Case<int64_t> wide[] = {
        {"%ld", INT64_MIN, "-9223372036854775808"},
        {"%lld", INT64_MAX, "9223372036854775807"},
        {"%D", -1, "-1"},
        {"%U", -1, "18446744073709551615"},
        {"%lu", -1, "18446744073709551615"},
        {"%llo", -1, "1777777777777777777777"},
        {"%#O", 1LL << 33, "0100000000000"},
        {"%lx", 0x123456789ABCDEF0, "123456789abcdef0"},
        {"%#lX", 0xABCDEF0123, "0XABCDEF0123"},
        {"%l5d", 7, "    7"},
    };
    for (const auto &c : wide)
        EXPECT_EQ(Print(c.format, c.value), c.expected) << c.format;

    EXPECT_EQ(Print("%*d|%*d|%-*d|%0*d", 4, 1, -4, 2, 3, 3, 3, 4), "   1|2   |3  |004");
    EXPECT_EQ(Print("%.*d|%.*d|%5.*d|%.*d", 3, 1, -3, 0, -1, 7, 0, 0), "001|0|    7|");
}

TEST(Print, PointersAlwaysHaveThePrefix)
{
    const auto high = reinterpret_cast<void *>(0xFFFFFFFFFFFFABCD);
    EXPECT_EQ(Print("%p", nullptr), "0x0");
    EXPECT_EQ(Print("%p", high), "0xffffffffffffabcd");
    EXPECT_EQ(Print("%hp", high), "0xffffffffffffabcd");
    EXPECT_EQ(Print("%+8p|%-8p|%08p", nullptr, nullptr, nullptr), "     0x0|0x0     |0x000000");
    EXPECT_EQ(Print("%.4p", nullptr), "0x0000");
}

TEST(Print, Texts)
{
    const Case<const char *> cases[] = {
        {"%s", "", ""},
        {"%ls", "ab", "ab"},
        {"%5s|", "ab", "   ab|"},
        {"%-5s|", "ab", "ab   |"},
        {"%05s|", "ab", "000ab|"},
        {"%-05s|", "ab", "ab   |"},
        {"%.1s", "ab", "a"},
        {"%.0s|", "ab", "|"},
        {"%5.1s|", "ab", "    a|"},
        {"%.9s|", "ab", "ab|"},
        {"%s", nullptr, "(null)"},
        {"%.3s", nullptr, "(nu"},
        {"%8s", nullptr, "  (null)"},
        {"%36s", "ab", "                                  ab"},
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
    EXPECT_EQ(Print("%S", nullptr), null);
    EXPECT_EQ(Print("%.3S|%10S", nullptr, nullptr), null.substr(0, 3) + "| " + null);

    const auto text = Units(u"\u00e9t\u00e9");
    const auto empty = Units(u"");
    EXPECT_EQ(Print("%S", text.data()), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(Print("%lS|%S|%S", text.data(), empty.data(), text.data()), "\xC3\xA9t\xC3\xA9||\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(Print("%.1S", text.data()), "\xC3");
    EXPECT_EQ(Print("%6S|%-6S|%06.2S", text.data(), text.data(), text.data()),
              " \xC3\xA9t\xC3\xA9|\xC3\xA9t\xC3\xA9 |0000\xC3\xA9");
    EXPECT_EQ(Print("%+S", text.data()), "\xC3\xA9t\xC3\xA9");

    // What cannot be converted ends the output, before the field's padding too.
    const std::vector<uint16_t> lone = {0xD83D, 'a', 0};
    const std::vector<uint16_t> later = {'a', 0xD83D, 0};
    int32_t untouched = -7;
    EXPECT_EQ(Print("%S", lone.data()), "");
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
    EXPECT_EQ(Print("%ln", &slot), "");
    EXPECT_EQ(slot, 0);

    char room[4];
    int32_t produced = 0;
    EXPECT_EQ(SMsnprintf(room, 4, "abcde%5d%n", 1, &produced), 3u);
    EXPECT_EQ(produced, 10);
}

TEST(Print, OtherCharactersPrintThemselves)
{
    const struct {
        const char *format, *expected;
    } cases[] = {
        {"", ""},           {"text", "text"},    {"%%", "%"},
        {"%5%|", "    %|"}, {"%-5%|", "%    |"}, {"%05%", "0000%"},
        {"%zu", "zu"},      {"%jd", "jd"},       {"%td", "td"},
        {"%qd", "qd"},      {"%3F|", "  F|"},    {"%.2a", "a"},
        {"%A%C", "AC"},     {"%1$d", "$d"},      {"%ly", "y"},
        {"%\x80", "\x80"},  {"%-3\n|", "\n  |"}, {"abc%", "abc"},
        {"abc%5", "abc"},   {"a%-5.3l", "a"},    {"100%% %", "100% "},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Print(c.format), c.expected) << c.format;
}

TEST(Print, Doubles)
{
    const double inf = INFINITY;
    const Case<double> cases[] = {
        {"%f", 1.5, "1.500000"},
        {"%.0f", 1.5, "2"},
        {"%.0f", 2.5, "2"},
        {"%.f", 0.5, "0"},
        {"%#.0f", 2.5, "2."},
        {"%.2f", 0.0, "0.00"},
        {"%Lf", 1.5, "1.500000"},
        {"%lf", 1.5, "1.500000"},
        {"%e", 1.5, "1.5e+00"},
        {"%#e", 1.5, "1.500000e+00"},
        {"%e", 100.0, "1e+02"},
        {"%E", 1e-100, "1E-100"},
        {"%e", 0.0, "0e+00"},
        {"%#e", 0.0, "0.000000e+00"},
        {"%.0e", 1.5, "2e+00"},
        {"%#.0e", 1.5, "2.e+00"},
        {"%.3e", 1.0004, "1e+00"},
        {"%e", 9.9999999, "1e+01"},
        {"%010e", -1.5, "-001.5e+00"},
        {"%-10e|", 1.5, "1.5e+00   |"},
        {"%g", 0.0001, "0.0001"},
        {"%g", 0.00001, "1e-05"},
        {"%G", 1e10, "1E+10"},
        {"%#g", 1.0, "1.00000"},
        {"%.0g", 0.05, "0.05"},
        // what is not finite
        {"%f", inf, "Inf"},
        {"%f", -inf, "-Inf"},
        {"%E", inf, "Inf"},
        {"%G", -inf, "-Inf"},
        {"%f", NAN, "Inf"},
        {"%g", std::copysign(NAN, -1.0), "Inf"},
        {"%+f", inf, "+Inf"},
        {"%+e", NAN, "+Inf"},
        {"% +f", std::copysign(NAN, -1.0), "+Inf"},
        {"% g", inf, " Inf"},
        {"%+f", -inf, "-Inf"},
        {"%05f", inf, "00Inf"},
        {"%06f", -inf, "-00Inf"},
        {"%-6.1f|", inf, "Inf   |"},
        {"%#.0f", inf, "Inf"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Print(c.format, c.value), c.expected) << c.format << " of " << c.value;
    EXPECT_EQ(Print("%*.*f|%-*.*e|", 8, 2, 3.14159, 9, -1, 2.0), "    3.14|2e+00    |");
}

TEST(Print, RoomBoundsTextAndCount)
{
    const struct {
        uint32_t size, stored;
    } cases[] = {
        {0, 0},   {1, 0},           {2, 1},          {4, 3},          {10, 9},         {11, 10},
        {12, 10}, {0x80000000, 10}, {0x80000001, 0}, {0x80000002, 0}, {0xFFFFFFFF, 0},
    };
    for (const auto &c : cases) {
        char room[16];
        memset(room, '~', sizeof room);
        EXPECT_EQ(SMsnprintf(room, c.size, "%s%05d%c%c", "ab", 345, 'y', 'z'), c.stored < 9 ? c.stored : 9u) << c.size;
        const uint32_t stored = c.stored < 9 ? c.stored : 9;
        EXPECT_EQ(memcmp(room, "ab00345yz", stored), 0) << c.size;
        EXPECT_EQ(room[stored], '\0') << c.size;
        EXPECT_EQ(room[stored + 1], '~') << c.size;
        EXPECT_EQ(SMsnprintf(nullptr, c.size, "%10s", "a"), c.stored) << c.size;
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

// A locale with a decimal comma: one that is installed, or one compiled for the test if the system can.
bool SetCommaLocale(const std::filesystem::path &folder)
{
    for (const char *name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "nl_NL.UTF-8"})
        if (setlocale(LC_ALL, name) != nullptr)
            return true;
    const std::string made = folder / "comma.UTF-8";
    const char *const arguments[] = {"localedef", "-i", "de_DE", "-f", "UTF-8", made.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&quiet, 1, 2);
    pid_t child = 0;
    const int failed = posix_spawnp(&child, arguments[0], &quiet, nullptr, const_cast<char **>(arguments), environ);
    posix_spawn_file_actions_destroy(&quiet);
    int status = 0;
    if (failed != 0 || waitpid(child, &status, 0) != child)
        return false;
    setenv("LOCPATH", folder.c_str(), 1);
    const bool set = setlocale(LC_ALL, "comma.UTF-8") != nullptr;
    unsetenv("LOCPATH");
    return set;
}

TEST(Print, PointInALocaleWithAComma)
{
    char folder[] = "/tmp/print_test.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const bool set = SetCommaLocale(folder);
    std::filesystem::remove_all(folder);
    char comma[8];
    snprintf(comma, sizeof comma, "%.1f", 1.5);
    if (set) {
        EXPECT_STREQ(comma, "1,5");
        EXPECT_EQ(Print("%.1f %e %g %#.0f", 1.5, 1.5, 1e6 + 0.5, 2.0), "1.5 1.5e+00 1e+06 2.");
    }
    setlocale(LC_ALL, "C");
    if (!set)
        GTEST_SKIP() << "no locale with a decimal comma";
}

} // namespace
