// Doubles beside the C library's print, wherever the two must agree.

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

#include "support/soak.h"

namespace {

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
        for (const char letter : {'e', 'E', 'f', 'g', 'G'})
            for (const int precision : {-1, 0, 1, 6, 17, 330, 767, 780})
                for (int flags = 0; flags < 32 && !HasFailure(); ++flags)
                    Compare({flags, letter, 12, precision}, value);
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
        const auto room = std::make_unique<char[]>(16);
        EXPECT_EQ(SMsnprintf(room.get(), 16, givenFormat, givenValue), strlen(expected)) << givenFormat;
        EXPECT_STREQ(room.get(), expected) << givenFormat << " of " << givenValue;
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
