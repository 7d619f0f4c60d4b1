// Any format, piece by piece: each piece is plain text up to the end of a conversion, and gets the arguments that it
// takes. What comes out has to be the same in any room.
#include <cstdarg>
#include <memory>

#include "tests/fuzz/input.h"
#include "text/format.h"

namespace {

constexpr uint32_t kAmple = 1 << 16;

uint32_t Print(char *destination, uint32_t size, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const uint32_t stored = qzvest::SMvsnprintf(destination, size, format, arguments);
    va_end(arguments);
    return stored;
}

struct Piece {
    std::string text;       // what stands before the "%"
    std::string conversion; // from there
    uint8_t selector;       // decides the rest
    char Letter() const
    {
        return conversion.size() < 2 || strchr("-+ #0123456789.*hlL", conversion.back()) ? '\0' : conversion.back();
    }
};

// Within three calls: counted only, in a block of just the size, and cut somewhere.
template <typename... Arguments>
std::string Checked(const Piece &piece, Arguments... arguments)
{
    const std::string whole = piece.text + piece.conversion;
    const char *format = whole.c_str();
    const uint32_t length = Print(nullptr, kAmple, format, arguments...);
    Require(length < kAmple);
    const auto room = std::make_unique<char[]>(length + 1);
    Require(Print(room.get(), length + 1, format, arguments...) == length);
    Require(room[length] == '\0');
    const uint32_t size = piece.selector % (length + 2);
    const uint32_t stored = size == 0 ? 0 : size - 1;
    const auto little = std::make_unique<char[]>(size == 0 ? 1 : size);
    Require(Print(little.get(), size, format, arguments...) == stored);
    Require(memcmp(little.get(), room.get(), stored) == 0 && little[stored] == '\0');
    Require(Print(nullptr, size, format, arguments...) == stored);
    const std::string printed(room.get(), length);
    Require(printed.compare(0, piece.text.size(), piece.text) == 0);
    return printed.substr(piece.text.size());
}

template <typename Value>
std::string WithStars(const Piece &piece, size_t stars, Value value)
{
    const int first = piece.selector - 128, second = piece.selector * 3 % 256 - 128;
    return stars == 0   ? Checked(piece, value)
           : stars == 1 ? Checked(piece, first, value)
                        : Checked(piece, first, second, value);
}

void CheckPiece(const Piece &piece, int64_t bits, size_t stars)
{
    static const uint16_t plain[] = {'a', 0xE9, 0x20AC, 0xD800, 0}, lone[] = {0xDC00, 'a', 0};
    const uint16_t *const units[] = {plain, lone, nullptr};
    const char *const texts[] = {"some text", "", "\xFF\x80", nullptr};
    const char letter = piece.Letter();
    int64_t count = 0;
    double number;
    memcpy(&number, &bits, sizeof number);
    if (letter == '\0')
        Require(WithStars(piece, stars, 0).empty());
    else if (strchr("eEfgG", letter) != nullptr)
        Require(!WithStars(piece, stars, number).empty());
    else if (letter == 's')
        (void)WithStars(piece, stars, texts[piece.selector % 4]);
    else if (letter == 'S')
        (void)WithStars(piece, stars, units[piece.selector % 3]);
    else if (letter == 'n')
        Require(WithStars(piece, stars, &count).empty());
    else if (letter == 'p')
        Require(WithStars(piece, stars, &piece).find("0x") != std::string::npos);
    else // for other letters one argument too many
        (void)WithStars(piece, stars, bits);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    int64_t bits;
    if (size < 9)
        return 0;
    memcpy(&bits, data, 8);
    const std::string format(reinterpret_cast<const char *>(data) + 9, size - 9);
    for (const char *at = format.c_str(); *at != '\0';) {
        Piece piece{{at, strcspn(at, "%")}, "", data[8]};
        at += piece.text.size();
        const char *start = at;
        size_t digits = 0, stars = 0;
        for (at += *at == '%'; *at != '\0' && strchr("-+ #0123456789.*hlL", *at) != nullptr; ++at) {
            digits = *at >= '0' && *at <= '9' ? digits + 1 : 0;
            stars += *at == '*';
            if (digits > 4 || stars > 2) // more than is worth the time, or than are passed
                return 0;
        }
        at += *start == '%' && *at != '\0';
        piece.conversion.assign(start, at);
        CheckPiece(piece, bits, stars);
    }
    return 0;
}
