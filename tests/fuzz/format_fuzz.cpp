// Any format, piece by piece: each piece is plain text up to the end of a conversion, and gets the arguments that it
// takes.
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "text/format.h"

namespace {

constexpr uint32_t kAmple = 1 << 16;
constexpr size_t kMostDigits = 4; // of a width or a precision

void Require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

uint32_t Print(char *destination, uint32_t size, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const uint32_t stored = qzvest::SMvsnprintf(destination, size, format, arguments);
    va_end(arguments);
    return stored;
}

// What the whole input decides: the values, and where texts are cut.
struct Choice {
    int64_t bits;
    double number;
    uint8_t selector;
};

// A piece and how it is read.
struct Piece {
    std::string text;  // what stands before the "%"
    std::string whole; // text and conversion
    bool left = false, plus = false, space = false, alternate = false, zero = false;
    bool half = false, wide = false;
    int width = 0, precision = -1;
    char letter = '\0';
    std::vector<int> stars;
};

// The digits' value; false where there are more of them than is worth the time.
bool ReadDigits(const char **at, int *value)
{
    const size_t digits = strspn(*at, "0123456789");
    *value = 0;
    for (size_t i = 0; i < digits && digits <= kMostDigits; ++i)
        *value = *value * 10 + ((*at)[i] - '0');
    *at += digits;
    return digits <= kMostDigits;
}

// Reads on behind a "%" up to the letter or the end.
bool ReadConversion(const char **at, Piece *piece, const Choice &choice)
{
    const auto star = [&] {
        const int value = choice.selector * (2 * static_cast<int>(piece->stars.size()) + 1) % 256 - 128;
        piece->stars.push_back(value);
        return value;
    };
    for (;; ++*at) {
        const char c = **at;
        if (c == '\0')
            return true;
        if (c == '-')
            piece->left = true;
        else if (c == '+')
            piece->plus = true;
        else if (c == ' ')
            piece->space = true;
        else if (c == '#')
            piece->alternate = true;
        else if (c == '0')
            piece->zero = true;
        else if (c == 'h')
            piece->half = true;
        else if (c == 'l')
            piece->wide = true;
        else if (c == '*') {
            const int value = star();
            piece->left |= value < 0;
            piece->width = value < 0 ? -value : value;
        } else if (c == '.') {
            ++*at;
            if (**at == '*') {
                const int value = star();
                piece->precision = value < 0 ? -1 : value;
            } else {
                if (!ReadDigits(at, &piece->precision))
                    return false;
                --*at;
            }
        } else if (c >= '1' && c <= '9') {
            if (!ReadDigits(at, &piece->width))
                return false;
            --*at;
        } else if (c != 'L') {
            piece->letter = c;
            ++*at;
            return true;
        }
    }
}

// Within three calls: counted only, in a block of just the size, and cut somewhere.
template <typename... Arguments>
std::string Checked(const Piece &piece, const Choice &choice, Arguments... arguments)
{
    const char *format = piece.whole.c_str();
    const uint32_t length = Print(nullptr, kAmple, format, arguments...);
    Require(length < kAmple);
    const auto room = std::make_unique<char[]>(length + 1);
    Require(Print(room.get(), length + 1, format, arguments...) == length);
    Require(room[length] == '\0');
    const uint32_t size = choice.selector % (length + 2);
    const uint32_t stored = size == 0 ? 0 : size - 1;
    const auto little = std::make_unique<char[]>(size == 0 ? 1 : size);
    Require(Print(little.get(), size, format, arguments...) == stored);
    Require(memcmp(little.get(), room.get(), stored) == 0 && little[stored] == '\0');
    Require(Print(nullptr, size, format, arguments...) == stored);
    return {room.get(), length};
}

template <typename Value>
std::string WithStars(const Piece &piece, const Choice &choice, Value value)
{
    const auto &stars = piece.stars;
    switch (stars.size()) {
    case 0:
        return Checked(piece, choice, value);
    case 1:
        return Checked(piece, choice, stars[0], value);
    default:
        return Checked(piece, choice, stars[0], stars[1], value);
    }
}

// The same conversion by the C library, its parts in C's order.
template <typename Value>
std::string Theirs(const Piece &piece, const char *size, char letter, Value value)
{
    std::string format = "%";
    format.append(piece.left ? "-" : "").append(piece.plus ? "+" : "").append(piece.space ? " " : "");
    format.append(piece.alternate ? "#" : "").append(piece.zero ? "0" : "");
    format.append("*.*").append(size) += letter;
    std::vector<char> text(kAmple);
    const int length = snprintf(text.data(), text.size(), format.c_str(), piece.width, piece.precision, value);
    return piece.text + std::string(text.data(), static_cast<size_t>(length));
}

void CheckInteger(const Piece &piece, const Choice &choice)
{
    const char letter = piece.letter;
    const bool upper = strchr("DOU", letter) != nullptr;
    if (piece.half && (piece.wide || upper))
        return;
    const char small = upper ? static_cast<char>(letter + ('a' - 'A')) : letter;
    const int64_t value = choice.selector % 8 == 0 ? 0 : choice.bits;
    const bool wide = piece.wide || upper;
    const std::string ours = wide ? WithStars(piece, choice, value) : WithStars(piece, choice, static_cast<int>(value));
    if (small == 'o' && piece.alternate && piece.precision == 0)
        return;
    Require(ours == (wide ? Theirs(piece, "ll", small, static_cast<long long>(value))
                          : Theirs(piece, piece.half ? "h" : "", small, static_cast<int>(value))));
}

void CheckDouble(const Piece &piece, const Choice &choice)
{
    const std::string ours = WithStars(piece, choice, choice.number);
    const bool same = piece.alternate || (piece.letter != 'e' && piece.letter != 'E');
    if (!std::isfinite(choice.number))
        Require(ours.find("Inf") != std::string::npos);
    else if (const std::string theirs = Theirs(piece, "", piece.letter, choice.number); !same)
        Require(ours.size() <= theirs.size());
    else // some C libraries drop the zeros of "%#g" where a value rounds up to a power of ten
        Require(ours == theirs || (piece.alternate && theirs.find_first_of("eE") != std::string::npos &&
                                   strchr("gG", piece.letter) != nullptr && ours.size() >= theirs.size()));
}

void CheckText(const Piece &piece, const Choice &choice)
{
    const char *const texts[] = {"some text", "", "\xFF\x80", nullptr};
    const char *text = texts[choice.selector % 4];
    const std::string ours = WithStars(piece, choice, text);
    if (!piece.zero && text != nullptr && !piece.wide)
        Require(ours == Theirs(piece, "", 's', text));
}

void CheckUCS2(const Piece &piece, const Choice &choice)
{
    static const uint16_t plain[] = {'a', 0xE9, 0x20AC, 0xD800, 0};
    static const uint16_t lone[] = {0xDC00, 'a', 0};
    static const uint16_t pair[] = {0xD83D, 0xDE00, 0};
    const uint16_t *const texts[] = {plain, lone, pair, nullptr};
    const char *const converted[] = {"a\xC3\xA9\xE2\x82\xAC"
                                     "a",
                                     nullptr, "\xF0\x9F\x98\x80\xF0\x9F\x98\x80",
                                     "\xE6\xB8\xA8\xE6\xB1\xB5\xE2\xA5\xAC"};
    const size_t which = choice.selector % 4;
    const std::string ours = WithStars(piece, choice, texts[which]);
    if (converted[which] == nullptr)
        Require(ours == piece.text);
    else if (!piece.zero)
        Require(ours == Theirs(piece, "", 's', converted[which]));
}

void CheckCount(const Piece &piece, const Choice &choice)
{
    int64_t count = 0;
    Require(WithStars(piece, choice, &count) == piece.text);
    if (!(piece.half && piece.wide))
        Require(count == static_cast<int64_t>(piece.text.size()));
}

void CheckByte(const Piece &piece, const Choice &choice)
{
    const int value = piece.letter == 'c' ? static_cast<uint8_t>(choice.bits) : piece.letter;
    const std::string ours = WithStars(piece, choice, value); // for other letters one argument too many
    if (!piece.zero)
        Require(ours == Theirs(piece, "", 'c', value));
    else
        Require(ours.size() >= piece.text.size() + 1);
}

void CheckPiece(const Piece &piece, const Choice &choice)
{
    const struct {
        const char *letters;
        void (*check)(const Piece &, const Choice &);
    } checks[] = {
        {"diuoxXDUO", CheckInteger}, {"eEfgG", CheckDouble}, {"s", CheckText}, {"S", CheckUCS2}, {"n", CheckCount},
    };
    if (piece.letter == '\0') {
        Require(WithStars(piece, choice, 0) == piece.text);
        return;
    }
    if (piece.letter == 'p') {
        const void *pointer = choice.selector % 2 == 0 ? nullptr : &piece;
        Require(WithStars(piece, choice, pointer).find("0x") != std::string::npos);
        return;
    }
    for (const auto &each : checks)
        if (strchr(each.letters, piece.letter) != nullptr)
            return each.check(piece, choice);
    CheckByte(piece, choice);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Choice choice;
    if (size < 9)
        return 0;
    memcpy(&choice.bits, data, 8);
    memcpy(&choice.number, data, 8);
    choice.selector = data[8];
    const std::string format(reinterpret_cast<const char *>(data) + 9, size - 9);
    for (const char *at = format.c_str(); *at != '\0';) {
        const char *start = at;
        at += strcspn(at, "%");
        Piece piece;
        piece.text.assign(start, at);
        if (*at == '%' && (++at, !ReadConversion(&at, &piece, choice)))
            return 0;
        if (piece.stars.size() > 2)
            return 0;
        piece.whole.assign(start, at);
        CheckPiece(piece, choice);
    }
    return 0;
}
