// The four steps between one character and a code point. What they accept and give is settled, since stored text
// depends on it: six forms of UTF-8, hardly checked, and surrogate pairs that do not mirror each other.
#ifndef TEXT_CODEPOINT_H
#define TEXT_CODEPOINT_H

#include <qzvest/status.h>

#include <bit>
#include <cstdint>

namespace qzvest {

constexpr uint32_t kLastCodePoint = 0x10FFFF;

inline bool IsSurrogate(uint32_t unit)
{
    return (unit & 0xF800) == 0xD800;
}

inline bool IsLowSurrogate(uint32_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

// Bytes of a code point's UTF-8 form; 0 for one that has none.
inline uint32_t UTF8Length(uint32_t codePoint)
{
    if (codePoint < 0x80)
        return 1;
    constexpr uint32_t kEnds[] = {0x800, 0x10000, 0x200000, 0x4000000, 0x80000000};
    for (uint32_t i = 0; i < 5; ++i) {
        if (codePoint < kEnds[i])
            return i + 2;
    }
    return 0;
}

// Surrogates and all beyond U+10FFFF are encoded like any other number.
//   destination  or NULL: only the length is wanted
//   room         in: bytes at destination; out: the length, on success alone
inline uint32_t CodePointToUTF8(char *destination, uint32_t *room, uint32_t codePoint)
{
    const uint32_t length = UTF8Length(codePoint);
    if (length == 0)
        return SM_STATUS_BAD_FORMAT;
    if (destination != nullptr) {
        if (*room < length)
            return SM_STATUS_BUFFER_TOO_SMALL;
        constexpr uint8_t kLead[] = {0, 0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
        uint32_t shift = 6 * (length - 1);
        *destination++ = static_cast<char>(kLead[length] | codePoint >> shift);
        while (shift != 0) {
            shift -= 6;
            *destination++ = static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
        }
    }
    *room = length;
    return SM_STATUS_OK;
}

// Bytes of the form that a lead byte opens; 0 for one that opens none.
inline uint32_t UTF8FormLength(uint8_t lead)
{
    const auto ones = static_cast<uint32_t>(std::countl_one(lead));
    if (ones == 0)
        return 1;
    return ones >= 2 && ones <= 6 ? ones : 0;
}

// All that is asked of the bytes behind the lead is that they are not zero; their top bits do not count, and overlong
// forms are taken. Never looks beyond a zero byte.
inline uint32_t UTF8ToCodePoint(const char *source, uint32_t *codePoint, uint32_t *length)
{
    *codePoint = 0;
    const auto lead = static_cast<uint8_t>(*source);
    const uint32_t form = UTF8FormLength(lead);
    if (form == 0)
        return SM_STATUS_BAD_FORMAT;
    uint32_t value = form == 1 ? lead : lead & (0x7Fu >> form);
    for (uint32_t i = 1; i < form; ++i) {
        const auto next = static_cast<uint8_t>(source[i]);
        if (next == 0)
            return SM_STATUS_BAD_FORMAT;
        value = value << 6 | (next & 0x3F);
    }
    *codePoint = value;
    *length = form;
    return SM_STATUS_OK;
}

// Looks at two units, but at one alone when that is zero or no high surrogate.
inline uint32_t UCS2ToCodePoint(const uint16_t *source, uint32_t *codePoint)
{
    const uint32_t first = source[0];
    if (!IsSurrogate(first)) {
        *codePoint = first;
        return SM_STATUS_OK;
    }
    if (IsLowSurrogate(first) || !IsLowSurrogate(source[1]))
        return SM_STATUS_BAD_FORMAT;
    *codePoint = ((first & 0x3FF) << 10 | (source[1] & 0x3FFu)) + 0x10000;
    return SM_STATUS_OK;
}

// Surrogate code points pass as they are. Beyond U+FFFF the ten upper bits are taken as they stand: 0x10000 is NOT
// subtracted first, so the pair is not that of UTF-16 and reads back as another code point. Not to be "repaired":
// stored text holds these pairs.
//   destination  or NULL: only the length is wanted
//   room         in: units at destination; out: the units taken, on success alone
inline uint32_t CodePointToUCS2(uint16_t *destination, uint32_t *room, uint32_t codePoint)
{
    if (codePoint > kLastCodePoint)
        return SM_STATUS_BAD_FORMAT;
    const uint32_t length = codePoint < 0x10000 ? 1 : 2;
    if (destination != nullptr) {
        if (*room < length)
            return SM_STATUS_BUFFER_TOO_SMALL;
        destination[0] = static_cast<uint16_t>(length == 1 ? codePoint : 0xD800 | (codePoint >> 10 & 0x3FF));
        if (length == 2)
            destination[1] = static_cast<uint16_t>(0xDC00 | (codePoint & 0x3FF));
    }
    *room = length;
    return SM_STATUS_OK;
}

} // namespace qzvest

#endif
