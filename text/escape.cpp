// UCS-2 text as printable ASCII with backslash escapes.

#include <cstring>

#include "frame/heap.h"
#include "text/sizedstring.h"
#include "text/ucs2.h"

namespace qzvest {
namespace {

constexpr uint32_t kFirstCapacity = 6144; // bytes

struct TextRelease {
    SMSSUTF8Str *record;
    ~TextRelease()
    {
        SMSSUTF8StrFree(record);
    }
};

// The piece of text for one unit, in room for 6 bytes; returns its bytes.
uint32_t EscapeUnit(uint16_t unit, char *piece)
{
    static constexpr struct {
        char unit;
        char letter;
    } kLetters[] = {{'\t', 't'}, {'\n', 'n'}, {'\r', 'r'}, {'\\', '\\'}};
    for (const auto &known : kLetters) {
        if (unit != known.unit)
            continue;
        piece[0] = '\\';
        piece[1] = known.letter;
        return 2;
    }
    if (unit >= 0x20 && unit <= 0x7F) {
        piece[0] = static_cast<char>(unit);
        return 1;
    }
    piece[0] = '\\';
    piece[1] = 'u';
    for (uint32_t digit = 0; digit < 4; ++digit)
        piece[2 + digit] = "0123456789abcdef"[(unit >> (12 - 4 * digit)) & 0xF];
    return 6;
}

} // namespace

uint32_t SMUCS2ToEscape(char *destination, uint32_t *sizeInOut, const uint16_t *source)
{
    if (source == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    SMSSUTF8Str text;
    if (SMSSUTF8StrAlloc(&text, kFirstCapacity) == nullptr)
        return SM_STATUS_FAILED;
    const TextRelease release{&text};
    for (; *source != 0; ++source) {
        char piece[6];
        const uint32_t length = EscapeUnit(*source, piece);
        (void)SMSSUTF8StrNCatUTF8Str(&text, piece, length); // without memory the piece is missing, and no more
    }

    const uint32_t size = text.length + 1;
    if (sizeInOut != nullptr) {
        const uint32_t capacity = *sizeInOut;
        *sizeInOut = size;
        if (size > capacity)
            return SM_STATUS_BUFFER_TOO_SMALL;
    }
    if (destination != nullptr)
        std::memcpy(destination, text.text, size);
    return SM_STATUS_OK;
}

} // namespace qzvest
