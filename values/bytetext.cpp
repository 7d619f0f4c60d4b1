#include "values/bytetext.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "text/sizedstring.h"
#include "values/digit.h"

namespace qzvest {
namespace {

constexpr size_t kListItem = 5; // "0x", two digits, a separator

constexpr uint32_t kLineBytes = 16;
constexpr size_t kLineLength = 81; // with its line feed
constexpr size_t kDigitsColumn = 12;
constexpr size_t kCharactersColumn = 62;
constexpr uint32_t kDumpRoom = 2048; // bytes of a dump's first buffer

char *PutHexByte(char *to, uint8_t byte)
{
    constexpr const char *kDigits = "0123456789ABCDEF";
    to[0] = kDigits[byte >> 4];
    to[1] = kDigits[byte & 0x0F];
    return to + 2;
}

// The value of two hexadecimal digits, or more than a byte holds. Does not look behind a terminator.
unsigned HexPair(const char *text)
{
    const unsigned high = DigitOf(text[0]);
    const unsigned low = high == kNoDigit ? kNoDigit : DigitOf(text[1]);
    return low == kNoDigit ? UINT_MAX : high << 4 | low;
}

// Room for count bytes of text, with the size in the word; empty as well when no size word can say it.
HeapPtr<char> TextRoom(uint64_t count, uint32_t *sizeInOut)
{
    if (count == 0 || count > UINT32_MAX)
        return nullptr;
    HeapPtr<char> text(HeapRoom<char>(count));
    if (text)
        *sizeInOut = static_cast<uint32_t>(count);
    return text;
}

// False, and 0, when no size word can say how many bytes were decoded.
bool TellCount(ptrdiff_t count, uint32_t *sizeOut)
{
    const bool sayable = count <= ptrdiff_t{UINT32_MAX};
    *sizeOut = sayable ? static_cast<uint32_t>(count) : 0;
    return sayable;
}

// False when there is no number at the token's head.
bool ReadListItem(const char *token, unsigned *value)
{
    if (token[0] == '0' && token[1] == 'x') {
        *value = HexPair(token + 2);
        if (*value <= UINT8_MAX && token[4] == '\0')
            return true;
    }
    return std::sscanf(token, "%x", value) == 1; // all that is not in the form that we write ourselves
}

// One line: "0x00000010: 61 62 63 64:65 ...  abcde...". The printable range ends at 'z': the four characters above it
// show as dots, which readers of dumps know.
void PutDumpLine(char *line, const uint8_t *data, uint32_t size, uint32_t address)
{
    std::memset(line, ' ', kLineLength - 1);
    line[kLineLength - 1] = '\n';
    const uint8_t bytes[] = {static_cast<uint8_t>(address >> 24), static_cast<uint8_t>(address >> 16),
                             static_cast<uint8_t>(address >> 8), static_cast<uint8_t>(address)};
    line[0] = '0';
    line[1] = 'x';
    *PutHexDigits(line + 2, bytes, sizeof bytes) = ':';
    char *digits = line + kDigitsColumn;
    for (uint32_t i = 0; i < size; ++i) {
        digits = PutHexByte(digits, data[i]);
        *digits++ = i % 4 == 3 && i + 1 < size ? ':' : ' ';
        line[kCharactersColumn + i] = data[i] >= 0x20 && data[i] <= 0x7A ? static_cast<char>(data[i]) : '.';
    }
}

} // namespace

char *PutHexDigits(char *to, const uint8_t *data, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        to = PutHexByte(to, data[i]);
    return to;
}

HeapPtr<char> SMXLTBytesToHexText(const uint8_t *data, uint32_t *sizeInOut)
{
    const uint32_t size = *sizeInOut;
    HeapPtr<char> text = size != 0 ? TextRoom(uint64_t{size} * 2 + 1, sizeInOut) : nullptr;
    if (text)
        *PutHexDigits(text.get(), data, size) = '\0';
    return text;
}

HeapPtr<char> SMXLTBytesToCommaList(const uint8_t *data, uint32_t *sizeInOut)
{
    const uint32_t size = *sizeInOut;
    HeapPtr<char> text = TextRoom(uint64_t{size} * kListItem, sizeInOut);
    if (!text)
        return text;
    char *to = text.get();
    for (uint32_t i = 0; i < size; ++i) {
        *to++ = '0';
        *to++ = 'x';
        to = PutHexByte(to, data[i]);
        *to++ = ',';
    }
    to[-1] = '\0';
    return text;
}

HeapPtr<char> SMXLTBytesToDump(const uint8_t *data, uint32_t *sizeInOut, uint32_t firstAddress)
{
    SMSSUTF8Str sized;
    if (SMSSUTF8StrAlloc(&sized, kDumpRoom) == nullptr)
        return nullptr;
    HeapPtr<char> text;
    if (SMXLTDumpToSizedString(&sized, data, *sizeInOut, firstAddress) == 0)
        text = TextRoom(uint64_t{sized.length} + 1, sizeInOut);
    if (text)
        std::memcpy(text.get(), sized.text, *sizeInOut);
    SMSSUTF8StrFree(&sized);
    return text;
}

HeapPtr<uint8_t> SMXLTHexTextToBytes(const char *text, uint32_t *sizeOut)
{
    HeapPtr<uint8_t> bytes(HeapRoom<uint8_t>(std::strlen(text) / 2 + 1));
    if (!bytes)
        return bytes;
    uint8_t *to = bytes.get();
    for (; *text != '\0'; text += 2) {
        const unsigned pair = HexPair(text);
        if (pair > UINT8_MAX) {
            *sizeOut = 0;
            return nullptr;
        }
        *to++ = static_cast<uint8_t>(pair);
    }
    if (!TellCount(to - bytes.get(), sizeOut))
        bytes.reset();
    return bytes;
}

HeapPtr<uint8_t> SMXLTCommaListToBytes(char *text, uint32_t *sizeOut)
{
    const size_t length = std::strlen(text) + 1;
    if (length % kListItem != 0)
        return nullptr;
    // Items may be shorter than those that the length is tested for: a digit and a separator at least.
    HeapPtr<uint8_t> bytes(HeapRoom<uint8_t>(length / 2));
    if (!bytes)
        return bytes;
    uint8_t *to = bytes.get();
    char *rest;
    for (const char *token = strtok_r(text, ",", &rest); token != nullptr; token = strtok_r(nullptr, ",", &rest)) {
        unsigned value;
        if (!ReadListItem(token, &value))
            break;
        if (value > UINT8_MAX) {
            *sizeOut = 0;
            return nullptr;
        }
        *to++ = static_cast<uint8_t>(value);
    }
    if (!TellCount(to - bytes.get(), sizeOut))
        bytes.reset();
    return bytes;
}

int32_t SMXLTDumpToSizedString(SMSSUTF8Str *sized, const uint8_t *data, uint32_t size, uint32_t firstAddress)
{
    if (data == nullptr)
        return 0;
    for (uint32_t done = 0; done < size;) {
        char line[kLineLength];
        const uint32_t count = std::min(size - done, kLineBytes);
        PutDumpLine(line, data + done, count, firstAddress + done);
        const uint32_t before = sized->length;
        (void)SMSSUTF8StrNCatUTF8Str(sized, line, sizeof line); // only the length tells
        if (sized->length == before)
            return -1;
        done += count;
    }
    return 0;
}

} // namespace qzvest
