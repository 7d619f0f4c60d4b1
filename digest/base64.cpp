// The form of both directions that any processor runs, and all cases: vectors do the plain bulk before it.

#include "digest/base64.h"

#include <array>

#include <qzvest/status.h>

namespace qzvest {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPad = '=';
constexpr uint32_t kSixBits = 63;
constexpr uint8_t kNone = 0xFF; // in the reverse table; its low six bits are what an unknown character counts as
constexpr size_t kVectorGroups = 8;

constexpr std::array<uint8_t, 128> ReverseOf(const char *alphabet)
{
    std::array<uint8_t, 128> values{};
    values.fill(kNone);
    for (uint8_t value = 0; value <= kSixBits; ++value)
        values[static_cast<uint8_t>(alphabet[value])] = value;
    return values;
}

constexpr std::array<uint8_t, 128> kReverse = ReverseOf(kAlphabet);

inline uint32_t ValueOf(char character)
{
    const uint8_t byte = static_cast<uint8_t>(character);
    return byte < kReverse.size() ? kReverse[byte] & kSixBits : kSixBits;
}

// Three bytes to four characters.
inline void EncodeGroup(char *text, uint32_t b0, uint32_t b1, uint32_t b2, const char *alphabet)
{
    text[0] = alphabet[b0 >> 2];
    text[1] = alphabet[(b0 << 4 | b1 >> 4) & kSixBits];
    text[2] = alphabet[(b1 << 2 | b2 >> 6) & kSixBits];
    text[3] = alphabet[b2 & kSixBits];
}

// One group; returns how many bytes it gave. A pad character ends the group and not the text; in one of the
// first two places it empties the group.
inline size_t DecodeGroup(uint8_t *bytes, const char *text)
{
    if (text[0] == kPad || text[1] == kPad)
        return 0;
    const uint32_t bits = ValueOf(text[0]) << 18 | ValueOf(text[1]) << 12 | ValueOf(text[2]) << 6 | ValueOf(text[3]);
    bytes[0] = static_cast<uint8_t>(bits >> 16);
    if (text[2] == kPad)
        return 1;
    bytes[1] = static_cast<uint8_t>(bits >> 8);
    if (text[3] == kPad)
        return 2;
    bytes[2] = static_cast<uint8_t>(bits);
    return 3;
}

} // namespace

uint32_t SMBase64Encode(char *text, const void *bytes, int32_t size, const char *alphabet)
{
    const uint8_t *next = static_cast<const uint8_t *>(bytes);
    size_t left = size > 0 ? static_cast<size_t>(size) : 0;
    if (alphabet == nullptr) {
        alphabet = kAlphabet;
        const size_t taken = Base64EncodeVectors(text, next, left);
        next += taken;
        left -= taken;
        text += taken / 3 * 4;
    }
    for (; left >= 3; next += 3, left -= 3, text += 4)
        EncodeGroup(text, next[0], next[1], next[2], alphabet);
    if (left > 0) {
        EncodeGroup(text, next[0], left == 2 ? next[1] : 0, 0, alphabet);
        if (left == 1)
            text[2] = kPad;
        text[3] = kPad;
        text += 4;
    }
    *text = '\0';
    return SM_STATUS_OK;
}

uint32_t SMBase64Decode(void *bytes, const char *text, int32_t length)
{
    uint8_t *next = static_cast<uint8_t *>(bytes);
    size_t groups = length > 0 ? static_cast<size_t>(length) / 4 : 0;
    while (groups > 0) {
        const size_t taken = Base64DecodeVectors(next, text, groups);
        next += taken * 3;
        text += taken * 4;
        groups -= taken;
        // What stopped the vectors is in the next few groups, if it is not the end.
        for (size_t count = kVectorGroups; count > 0 && groups > 0; --count, --groups, text += 4)
            next += DecodeGroup(next, text);
    }
    *next = 0;
    return SM_STATUS_OK;
}

} // namespace qzvest
