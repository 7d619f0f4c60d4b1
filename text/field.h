// One conversion of the formatted print: what the format asked for, and the text made of it.
#ifndef TEXT_FIELD_H
#define TEXT_FIELD_H

#include <cstdint>

namespace qzvest {

enum FieldFlag : uint32_t {
    kFieldAlternate = 1u << 0,
    kFieldHexPrefix = 1u << 1,
    kFieldLeft = 1u << 2,
    kFieldLongDouble = 1u << 3, // the letter was seen; a double is read all the same
    kField64Bit = 1u << 4,
    kField16Bit = 1u << 6,
    kFieldZeroPad = 1u << 7,
    kFieldFloat = 1u << 8 // told, and asked by nobody yet
};

struct Field {
    uint32_t flags;
    int32_t width;
    int32_t precision; // -1 if none
    char sign;         // '\0', '+', '-' or a space
    char letter;       // the conversion
};

// A stretch of text, or of zeros where there is no text.
struct Piece {
    const char *text;
    int64_t size;
};

// What stands between sign or prefix and the padding behind.
struct Body {
    static constexpr uint32_t kRoom = 6;

    Piece pieces[kRoom];
    uint32_t count = 0;
    char scratch[8]; // of the exponent

    void Add(const char *text, int64_t size)
    {
        if (size > 0)
            pieces[count++] = {text, size};
    }
    void AddZeros(int64_t size)
    {
        Add(nullptr, size);
    }
};

// The body of e, E, f, g and G; sets the sign and flags of field. The digits that body points to live to the next call.
// The caller holds the lock of the formatted print.
void FormatDouble(Field &field, double value, Body &body);

} // namespace qzvest

#endif
