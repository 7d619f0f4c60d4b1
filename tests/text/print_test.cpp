// The print, beside the C library's wherever the two must agree.

#include <gtest/gtest.h>
#include <qzvest/print.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/ownlocale.h"
#include "support/soak.h"
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

// Where the C library reads a format the same way. Arguments are wide enough for all sizes.
TEST(Print, IntegersAgreeWithTheCLibrary)
{
    std::mt19937_64 random(51);
    const auto one = [&](std::initializer_list<const char *> list) { return list.begin()[random() % list.size()]; };
    for (int round = 0; round < 50000; ++round) {
        std::string format = "%";
        for (const char flag : std::string("-+ #0"))
            format.append(random() % 4 == 0 ? 1 : 0, flag);
        const std::string width = one({"", "7", "25", "*"}), precision = one({"", "", ".", ".3", ".22", ".45"});
        format += width + precision + one({"", "h", "l", "ll"}) + one({"d", "i", "u", "x", "X", "o"}) + "|";
        if (format.ends_with("o|") && format.find('#') != std::string::npos && !precision.empty())
            continue; // the "0" goes another way
        const int64_t number = random() % 6 == 0 ? 0 : static_cast<int64_t>(random()) >> random() % 64;
        const int star = static_cast<int>(random() % 40) - 20;
        const auto agrees = [&](auto... arguments) {
            char expected[64];
            snprintf(expected, sizeof expected, format.c_str(), arguments...);
            ASSERT_EQ(Print(format.c_str(), arguments...), expected) << format << " of " << number;
        };
        width == "*" ? agrees(star, number) : agrees(number);
        if (HasFatalFailure())
            return;
    }
}

TEST(Print, WhatTheCLibraryDoesNotDo)
{
    const auto high = reinterpret_cast<void *>(0xFFFFFFFFFFFFABCD);
    const std::string null = "\xE6\xB8\xA8\xE6\xB1\xB5\xE2\xA5\xAC";
    const auto text = Units(u"\u00e9t\u00e9"), lone = Units(u"\xD83D"), later = Units(u"a\xD83D");
    const std::pair<std::string, std::string> cases[] = {
        {Print("%hhd|%Lg|a%nb", 70000, 1.5, nullptr), "4464|1.5|ab"},
        {Print("%D %U %#O", int64_t{-1}, int64_t{-1}, 1LL << 33), "-1 18446744073709551615 0100000000000"},
        {Print("%#.3o|%#.0o|%4h#x|", 8, 0, 0x1000A), "010|| 0xa|"},
        {Print("%5-3d|%.2 5d|%.1.3d|%.2147483648d|", 7, 7, 7, 0), "7  |   07|007|0|"},
        {Print("%.*d|%.*d|%5.*d|%.*d", 3, 1, -3, 0, -1, 7, 0, 0), "001|0|    7|"},
        {Print("%hp|%.4p", high, nullptr), "0xffffffffffffabcd|0x0000"},
        {Print("%+8p|%-8p|%08p", nullptr, nullptr, nullptr), "     0x0|0x0     |0x000000"},
        {Print("%5s|%05s|%-05s|%.9s|", "ab", "ab", "ab", "ab"), "   ab|000ab|ab   |ab|"},
        {Print("%s|%.3s", nullptr, nullptr), "(null)|(nu"},
        {Print("%c%lc|%3c|%-3c|%03c|%.5c", 'a' + 256, 'b', 'a', 'b', 'c', 'd'), "ab|  a|b  |00c|d"},
        {Print("a%cb", 0), std::string("a\0b", 3)},
        {Print("%.3S|%10S", nullptr, nullptr), null.substr(0, 3) + "| " + null},
        {Print("%6S|%-6S|%06.2S", text.data(), text.data(), text.data()), " été|été |0000é"},
        // What cannot be converted ends the output, before the field's padding too.
        {Print("%S-%9S%d%n", text.data(), lone.data(), 1, text.data()), "été-"},
        {Print("%S|", later.data()), "aa|"},
        {Print("%5%|%-5%|%05%|%zu|%3F|%A%C|%1$d"), "    %|%    |0000%|zu|  F|AC|$d"},
        {Print("%-3\n|%\x80"), "\n  |\x80"},
        {Print("abc%"), "abc"},
        {Print("a%-5.3l"), "a"},
    };
    for (const auto &[printed, expected] : cases)
        EXPECT_EQ(printed, expected);
    EXPECT_EQ(Text(text.data()), u"\u00e9t\u00e9") << "no count after the end";

    const auto open = std::make_unique<char[]>(3); // not terminated
    memcpy(open.get(), "abc", 3);
    EXPECT_EQ(Print("%.3s|%.*s", open.get(), 2, open.get()), "abc|ab");
}

TEST(Print, CountsSoFar)
{
    int64_t slots[] = {-1, -1, -1};
    EXPECT_EQ(Print("ab%5d%n!%hn%ln", 1, &slots[0], &slots[1], &slots[2]), "ab    1!");
    EXPECT_EQ(slots[0], static_cast<int64_t>(0xFFFFFFFF00000007)); // a little-endian host
    EXPECT_EQ(slots[1], static_cast<int64_t>(0xFFFFFFFFFFFF0008));
    EXPECT_EQ(slots[2], 8);
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
    std::vector<std::jthread> threads;
    for (int self = 0; self < 8; ++self)
        threads.emplace_back([&units, self] {
            const double value = std::ldexp(1.0 + self / 16.0, 900 - 200 * self); // big numbers, of many sizes
            char expected[512], room[512];
            snprintf(expected, sizeof expected, "%d %.30f %.17g été", self, value, value);
            for (int i = 0; i < 500; ++i) {
                SMsnprintf(room, sizeof room, "%d %.30f %.17g %S", self, value, value, units.data());
                ASSERT_STREQ(room, expected);
            }
        });
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

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 48000;
#else
constexpr int kRounds = 1000000;
#endif

uint64_t Random()
{
    static std::mt19937_64 engine(static_cast<unsigned>(FromEnvironment("QZVEST_SEED", 50)));
    return engine();
}

// Below the limit; the limit is small.
int Below(int limit)
{
    return static_cast<int>((Random() >> 40) % static_cast<uint64_t>(limit));
}

// A neighbour, up to two steps away.
double Near(double value)
{
    return std::bit_cast<double>(std::bit_cast<uint64_t>(value) + static_cast<uint64_t>(Below(5)) - 2);
}

double Scaled(double digits)
{
    static const double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e7, 1e8, 1e11, 1e14, 1e17, 1e22, 1e40, 1e290};
    return Below(3) == 0 ? digits * powers[Below(14)] : digits / powers[Below(14)];
}

// Any bits; beside a power of ten; a denormal; few binary digits behind the point, exact ties at many precisions; a
// short decimal; and beside one that ends in a 5.
double SomeDouble(int kind)
{
    const double integer = static_cast<double>(static_cast<int64_t>(Random()) >> (14 + Below(50)));
    switch (kind) {
    case 0:
        return std::bit_cast<double>(Random());
    case 1:
        return Near(strtod(("1e" + std::to_string(Below(632) - 323)).c_str(), nullptr));
    case 2:
        return std::bit_cast<double>((Random() & 0x800FFFFFFFFFFFFF) >> (Below(2) * Below(53)));
    case 3:
        return std::ldexp(integer, -Below(24));
    case 4:
        return Scaled(integer);
    default:
        return Near(Scaled(integer * 10 + 5));
    }
}

struct Field {
    int flags;
    char letter;
    int width, precision; // -1: none
    bool left = (flags & 1) != 0, alternate = (flags & 8) != 0, zero = (flags & 16) != 0;

    std::string Format() const
    {
        std::string format = "%";
        for (int i = 0; i < 5; ++i)
            format.append(flags >> i & 1, "-+ #0"[i]);
        return format + "*.*" + letter;
    }
};

Field SomeField()
{
    const int flags = Below(3) == 0 ? Below(32) : Below(2) * 8, kind = Below(128);
    const int precision = kind == 0 ? Below(401) : kind < 12 ? -1 : kind < 24 ? Below(40) : Below(19);
    return {flags, "efgEG"[Below(5)], Below(4) == 0 ? Below(60) : 0, precision};
}

// The text without its padding, padded as the field wants.
std::string Padded(const Field &field, const std::string &text)
{
    const size_t width = static_cast<size_t>(field.width);
    const size_t fill = width > text.size() ? width - text.size() : 0;
    if (field.left)
        return text + std::string(fill, ' ');
    if (!field.zero)
        return std::string(fill, ' ') + text;
    const size_t sign = strchr("+- ", text[0]) != nullptr ? 1 : 0;
    return text.substr(0, sign) + std::string(fill, '0') + text.substr(sign);
}

// What the C library has to say, with the two differences: "Inf", and no trailing zeros in the exponent form.
std::string Expected(const Field &field, double value)
{
    char text[1200];
    if (!std::isfinite(value))
        return Padded(field, std::string(value < 0 ? "-" : field.flags & 2 ? "+" : field.flags & 4 ? " " : "") + "Inf");
    if (field.alternate || (field.letter != 'e' && field.letter != 'E')) {
        snprintf(text, sizeof text, field.Format().c_str(), field.width, field.precision, value);
        return text;
    }
    snprintf(text, sizeof text, Field{field.flags & 6, field.letter, 0, 0}.Format().c_str(), 0, field.precision, value);
    char *exponent = strchr(text, field.letter);
    if (memchr(text, '.', static_cast<size_t>(exponent - text)) == nullptr)
        return Padded(field, text);
    char *end = exponent;
    while (end[-1] == '0')
        --end;
    end -= end[-1] == '.' ? 1 : 0;
    return Padded(field, std::string(text, end) + exponent);
}

void Compare(const Field &field, double value)
{
    if (field.alternate && (field.letter | 0x20) == 'g')
        return; // some C libraries drop zeros where a value rounds up to a power of ten
    const std::string format = field.Format();
    char text[1200], exact[64];
    const uint32_t stored = SMsnprintf(text, sizeof text, format.c_str(), field.width, field.precision, value);
    snprintf(exact, sizeof exact, "%a", value);
    ASSERT_EQ(std::string(text, stored), Expected(field, value))
        << format << " of " << exact << ", width " << field.width << ", precision " << field.precision;
}

TEST(PrintDouble, AgreesWithTheCLibrary)
{
    const int rounds = kRounds * FromEnvironment("QZVEST_SOAK", 1);
    for (int i = 0; i < rounds && !HasFailure(); ++i)
        Compare(SomeField(), SomeDouble(i % 6));
    std::printf("COUNT prints beside the C library: %d doubles\n", rounds);
    for (const double value :
         {0.0, -0.0, -5e-324, HUGE_VAL, -HUGE_VAL, double{NAN}, -double{NAN}, 1.7976931348623157e+308, 9.5})
        for (const int precision : {-1, 0, 1, 6, 17, 330, 767, 780})
            for (int kind = 0; kind < 5 * 32 && !HasFailure(); ++kind)
                Compare({kind % 32, "eEfgG"[kind / 32], 12, precision}, value);
}

// Precisions beyond all the digits there are, in little room.
TEST(PrintDouble, HugePrecisions)
{
    const std::tuple<const char *, double, const char *> cases[] = {
        {"%.2147483647e", 1.0, "1e+00"},
        {"%#.2147483646e", 1.5, "1.5000000000000"},
        {"%.2147483647g", 0.25, "0.25"},
    };
    for (const auto &[givenFormat, givenValue, expected] : cases) {
        char room[16];
        EXPECT_EQ(SMsnprintf(room, 16, givenFormat, givenValue), strlen(expected)) << givenFormat;
        EXPECT_STREQ(room, expected) << givenFormat << " of " << givenValue;
    }
    for (const char *format : {"%.1100f", "%#.1100e", "%.1100g", "%.20000f", "%#.140000g", "%140000.1075f"})
        for (const double value : {5e-324, 2.2250738585072009e-308, 1.7976931348623157e+308, 0.1}) {
            std::string ours(140900, '~'), theirs = ours;
            const uint32_t stored = SMsnprintf(ours.data(), 140900, format, value);
            EXPECT_EQ(stored, static_cast<uint32_t>(snprintf(theirs.data(), 140900, format, value))) << format;
            EXPECT_TRUE(ours == theirs) << format << " of " << value;
        }
}

} // namespace
