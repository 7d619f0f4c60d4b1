// Doubles beside the C library's print, wherever the two must agree.

#include <gtest/gtest.h>
#include <qzvest/print.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 8000;
#else
constexpr int kRounds = 180000;
#endif

uint64_t Random()
{
    static uint64_t state = 0x9E3779B97F4A7C15;
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state * 0x2545F4914F6CDD1D;
}

// Below the limit; the limit is small.
int Below(int limit)
{
    return static_cast<int>((Random() >> 40) % static_cast<uint64_t>(limit));
}

double FromBits(uint64_t bits)
{
    double value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

// A neighbour, up to two steps away.
double Near(double value)
{
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    return FromBits(bits + static_cast<uint64_t>(Below(5)) - 2);
}

double AnyBits()
{
    return FromBits(Random());
}

double NearPowerOfTen()
{
    static const std::vector<double> powers = [] {
        std::vector<double> made;
        for (int i = -323; i <= 308; ++i)
            made.push_back(strtod(("1e" + std::to_string(i)).c_str(), nullptr));
        return made;
    }();
    return Near(powers[static_cast<size_t>(Below(632))]);
}

double Denormal()
{
    return FromBits((Random() & 0x800FFFFFFFFFFFFF) >> (Below(2) * Below(53)));
}

double Integer()
{
    return static_cast<double>(static_cast<int64_t>(Random()) >> Below(64)) * (Below(8) == 0 ? 1e20 : 1);
}

// Few binary digits behind the point: exact ties at many precisions.
double Dyadic()
{
    return std::ldexp(static_cast<double>(static_cast<int64_t>(Random()) >> (20 + Below(44))), -Below(24));
}

double ShortDecimal()
{
    static const double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e10, 1e13, 1e16, 1e19, 1e22};
    const auto digits = static_cast<double>(static_cast<int64_t>(Random()) >> (14 + Below(50)));
    return Below(4) == 0 ? digits * powers[Below(14)] : digits / powers[Below(14)];
}

// Decimals that end in a 5, and what lies beside them.
double NearTie()
{
    static const double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e8, 1e11, 1e14, 1e17, 1e20, 1e40, 1e80, 1e290};
    const double digits = static_cast<double>(Random() >> (16 + Below(47))) * 10 + 5;
    return Near(Below(2) == 0 ? digits * powers[Below(14)] : digits / powers[Below(14)]);
}

int SomePrecision()
{
    const int kind = Below(128);
    if (kind == 0)
        return Below(401);
    return kind < 12 ? -1 : kind < 24 ? Below(40) : Below(19);
}

struct Field {
    bool left, plus, space, alternate, zero;
    char letter;
    int width, precision; // -1: none

    std::string Format() const
    {
        std::string format = "%";
        format.append(left ? "-" : "").append(plus ? "+" : "").append(space ? " " : "");
        format.append(alternate ? "#" : "").append(zero ? "0" : "");
        return format + "*.*" + letter;
    }
};

Field SomeField()
{
    const int flags = Below(3) == 0 ? Below(32) : Below(2) * 8;
    return {(flags & 1) != 0,
            (flags & 2) != 0,
            (flags & 4) != 0,
            (flags & 8) != 0,
            (flags & 16) != 0,
            "efgEG"[Below(5)],
            Below(4) == 0 ? Below(60) : 0,
            SomePrecision()};
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

// The same as "e" or "f", by C's definition: some C libraries drop the zeros of "%#g" where a value rounds up to a
// power of ten.
Field WithoutG(Field field, double value)
{
    const int digits = field.precision < 0 ? 6 : field.precision == 0 ? 1 : field.precision;
    char text[1200];
    snprintf(text, sizeof text, "%.*e", digits - 1, value);
    const int exponent = atoi(strchr(text, 'e') + 1);
    const bool fixed = exponent >= -4 && exponent < digits;
    field.letter = fixed ? 'f' : static_cast<char>(field.letter - 'g' + 'e');
    field.precision = fixed ? digits - 1 - exponent : digits - 1;
    return field;
}

// What the C library has to say, with the two differences: "Inf", and no trailing zeros in the exponent form.
std::string Expected(const Field &field, double value)
{
    char text[1200];
    if (!std::isfinite(value)) {
        const bool minus = value < 0;
        return Padded(field, std::string(minus ? "-" : field.plus ? "+" : field.space ? " " : "") + "Inf");
    }
    if (field.alternate && (field.letter == 'g' || field.letter == 'G'))
        return Expected(WithoutG(field, value), value);
    if (field.alternate || (field.letter != 'e' && field.letter != 'E')) {
        snprintf(text, sizeof text, field.Format().c_str(), field.width, field.precision, value);
        return text;
    }
    Field bare = field;
    bare.zero = bare.left = false;
    snprintf(text, sizeof text, bare.Format().c_str(), 0, field.precision, value);
    char *exponent = strchr(text, field.letter);
    if (memchr(text, '.', static_cast<size_t>(exponent - text)) == nullptr)
        return Padded(field, text);
    char *end = exponent;
    while (end[-1] == '0')
        --end;
    end -= end[-1] == '.' ? 1 : 0;
    return Padded(field, std::string(text, end) + exponent);
}

void Compare(double (*some)())
{
    int faults = 0;
    for (int i = 0; i < kRounds && faults < 5; ++i) {
        const double value = some();
        const Field field = SomeField();
        const std::string format = field.Format();
        const std::string expected = Expected(field, value);
        char text[1200];
        const uint32_t stored = SMsnprintf(text, sizeof text, format.c_str(), field.width, field.precision, value);
        if (stored == expected.size() && memcmp(text, expected.c_str(), stored + 1) == 0)
            continue;
        ++faults;
        char exact[64];
        snprintf(exact, sizeof exact, "%a", value);
        ADD_FAILURE() << format << " of " << exact << ", width " << field.width << ", precision " << field.precision
                      << ": \"" << text << "\", not \"" << expected << "\"";
    }
}

TEST(PrintDouble, AnyBits)
{
    Compare(AnyBits);
}

TEST(PrintDouble, NearPowersOfTen)
{
    Compare(NearPowerOfTen);
}

TEST(PrintDouble, Denormals)
{
    Compare(Denormal);
}

TEST(PrintDouble, Integers)
{
    Compare(Integer);
}

TEST(PrintDouble, ExactTies)
{
    Compare(Dyadic);
}

TEST(PrintDouble, ShortDecimals)
{
    Compare(ShortDecimal);
}

TEST(PrintDouble, NearTies)
{
    Compare(NearTie);
}

TEST(PrintDouble, Ends)
{
    const double values[] = {0.0,
                             -0.0,
                             5e-324,
                             -5e-324,
                             2.2250738585072009e-308,
                             2.2250738585072014e-308,
                             HUGE_VAL,
                             -HUGE_VAL,
                             NAN,
                             -NAN,
                             1.7976931348623157e+308,
                             9007199254740993.0,
                             9.5,
                             0.5,
                             1e22,
                             1e23,
                             9.9999999999999995e+22,
                             0.00009999995,
                             999999.5,
                             0.000099999949999999999};
    for (const double value : values)
        for (const char letter : {'e', 'E', 'f', 'g', 'G'})
            for (const int precision : {-1, 0, 1, 5, 6, 16, 17, 25, 330, 767, 780})
                for (int flags = 0; flags < 32; ++flags) {
                    const Field field{(flags & 1) != 0,
                                      (flags & 2) != 0,
                                      (flags & 4) != 0,
                                      (flags & 8) != 0,
                                      (flags & 16) != 0,
                                      letter,
                                      12,
                                      precision};
                    char text[1200];
                    (void)SMsnprintf(text, sizeof text, field.Format().c_str(), 12, precision, value);
                    ASSERT_EQ(text, Expected(field, value)) << field.Format() << ' ' << precision << ' ' << value;
                }
}

// Precisions beyond all the digits there are, in little room.
TEST(PrintDouble, HugePrecisions)
{
    const struct {
        const char *format;
        double value;
        const char *expected;
    } cases[] = {
        {"%.140000f", 1.5, "1.5000000000000"},
        {"%.2147483647e", 1.0, "1e+00"},
        {"%#.2147483646e", 1.5, "1.5000000000000"},
        {"%.2147483647g", 0.25, "0.25"},
        {"%#.2147483647g", 0.25, "0.2500000000000"},
        {"%.2147483647f", -1.5, "-1.500000000000"},
        {"%.140000f", 5e-324, "0.0000000000000"},
        {"%.2147483647f", 0.0, "0.0000000000000"},
        {"%.140000e", 0.125, "1.25e-01"},
        {"%.200000g", 1e15, "100000000000000"},
    };
    for (const auto &c : cases) {
        const auto room = std::make_unique<char[]>(16);
        EXPECT_EQ(SMsnprintf(room.get(), 16, c.format, c.value), strlen(c.expected)) << c.format;
        EXPECT_STREQ(room.get(), c.expected) << c.format << " of " << c.value;
    }
    for (const char *format : {"%.1100f", "%#.1100e", "%.1100g", "%#.1100G", "%.20000f", "%#.140000g", "%140000.1075f"})
        for (const double value : {5e-324, 2.2250738585072009e-308, 1.7976931348623157e+308, 0.1}) {
            std::string ours(140900, '~');
            std::string theirs(140900, '~');
            const uint32_t stored = SMsnprintf(ours.data(), 140900, format, value);
            EXPECT_EQ(stored, static_cast<uint32_t>(snprintf(theirs.data(), 140900, format, value))) << format;
            EXPECT_TRUE(ours == theirs) << format << " of " << value;
        }
}

} // namespace
