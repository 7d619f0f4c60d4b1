// Values of INI files by type: the nine kinds of memory and their texts.

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "compat/load.h"
#include "compat/print.h"
#include "compat/string.h"
#include "config/ini.h"
#include "config/inicore.h"
#include "text/number.h"
#include "text/unitcount.h"
#include "values/bytetext.h"

namespace qzvest {
namespace {

constexpr uint32_t kBytesTextRoom = 8451;
constexpr uint32_t kMostBytes = 2048;
constexpr uint32_t kNumberText = 352; // the longest double with eight decimals takes 319

// ---- From text ----

// Turn the text into the value, which is of the type's size; false for text that is none.

bool ParseBool(char *text, void *value)
{
    char *rest;
    const char *word = strtok_r(text, " ", &rest);
    if (word == nullptr)
        return false;
    const bool isTrue = strcasecmp(word, "TRUE") == 0;
    if (!isTrue && strcasecmp(word, "FALSE") != 0)
        return false;
    const uint16_t result = isTrue ? 1 : 0;
    StoreAs(value, result);
    return true;
}

// The low half of what the C library reads in 64 bits.
uint32_t Low32Unsigned(const char *text)
{
    return static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

int32_t Low32Signed(const char *text)
{
    return static_cast<int32_t>(std::strtol(text, nullptr, 10));
}

double Double(const char *text)
{
    return std::strtod(text, nullptr);
}

template <typename Number, Number (*kRead)(const char *)>
bool ParseNumber(char *text, void *value)
{
    const Number result = kRead(text);
    StoreAs(value, result);
    return true;
}

// ---- To text ----

void PrintBool(const void *value, char *text)
{
    (void)strcpy_s(text, kNumberText, LoadAs<uint16_t>(value) == 1 ? "TRUE" : "FALSE");
}

// kWrite takes the number widened to 64 bits.
template <typename Number, auto kWrite>
void PrintNumber(const void *value, char *text)
{
    kWrite(text, LoadAs<Number>(value));
}

void PrintDouble(const void *value, char *text)
{
    (void)sprintf_s(text, kNumberText, "%.8f", LoadAs<double>(value));
}

// ---- The types of a fixed size ----

struct FixedType {
    uint32_t size;
    bool (*parse)(char *text, void *value);
    void (*print)(const void *value, char *text);
};

// clang-format off
constexpr FixedType kFixedTypes[] = {
    {2, ParseBool, PrintBool},
    {4, ParseNumber<uint32_t, Low32Unsigned>, PrintNumber<uint32_t, UInt64ToUTF8Str>},
    {4, ParseNumber<int32_t, Low32Signed>, PrintNumber<int32_t, Int64ToUTF8Str>},
    {8, ParseNumber<uint64_t, UTF8StrToUInt64>, PrintNumber<uint64_t, UInt64ToUTF8Str>},
    {8, ParseNumber<int64_t, UTF8StrToInt64>, PrintNumber<int64_t, Int64ToUTF8Str>},
    {8, ParseNumber<double, Double>, PrintDouble},
};
// clang-format on

const FixedType *FixedTypeOf(uint32_t type)
{
    return type >= INI_TYPE_BOOL && type <= INI_TYPE_DOUBLE ? &kFixedTypes[type - INI_TYPE_BOOL] : nullptr;
}

// Where a value is and how to get at it.
struct Place {
    const char *section;
    const char *key;
    const char *path;
    int16_t wait;
};

struct Default {
    const void *value;
    uint32_t size;
};

// The value's text, in a heap buffer of room bytes.
uint32_t ReadText(const Place &place, char *text, uint32_t room)
{
    if (*place.path == '\0')
        return SM_STATUS_BAD_ARGUMENT;
    return INIRead(place.section, place.key, text, &room, nullptr, 0, place.path, place.wait).status;
}

uint32_t ReadFixed(const Place &place, const FixedType &type, void *dest, uint32_t *destSize, const Default &fallback)
{
    if (*destSize < type.size)
        return SM_STATUS_BAD_ARGUMENT;
    const HeapPtr<char> text = HeapRoom<char>(kINIValueRoom);
    uint32_t status = text ? ReadText(place, text.get(), kINIValueRoom) : SM_STATUS_FAILED;
    if (status == SM_STATUS_OK && !type.parse(text.get(), dest))
        status = SM_STATUS_INI_BAD_VALUE;
    if (status == SM_STATUS_OK)
        return status;
    const bool given = fallback.value != nullptr && fallback.size >= type.size;
    if (given)
        std::memmove(dest, fallback.value, type.size);
    *destSize = given ? type.size : 0;
    return status;
}

struct Bytes {
    HeapPtr<uint8_t> bytes;
    uint32_t count;
    uint32_t status;
};

Bytes ReadByteText(const Place &place, char *text)
{
    Bytes read{nullptr, 0, ReadText(place, text, kBytesTextRoom)};
    if (read.status != SM_STATUS_OK)
        return read;
    read.bytes = SMXLTCommaListToBytes(text, &read.count);
    if (!read.bytes)
        read.status = SM_STATUS_FAILED;
    else if (read.count == 0)
        read.status = SM_STATUS_INI_BAD_VALUE;
    return read;
}

uint32_t ReadBytes(const Place &place, void *dest, uint32_t *destSize, const Default &fallback)
{
    if (*destSize == 0)
        return SM_STATUS_BAD_ARGUMENT;
    const HeapPtr<char> text = HeapRoom<char>(kBytesTextRoom);
    const Bytes read = text ? ReadByteText(place, text.get()) : Bytes{nullptr, 0, SM_STATUS_NO_MEMORY};
    if (read.status != SM_STATUS_OK) {
        const bool given = fallback.value != nullptr && fallback.size != 0;
        *destSize = given ? std::min(fallback.size, *destSize) : 0;
        if (given)
            std::memmove(dest, fallback.value, *destSize);
        return read.status;
    }
    const bool fits = read.count <= *destSize;
    *destSize = read.count;
    if (fits)
        std::memcpy(dest, read.bytes.get(), read.count);
    return fits ? SM_STATUS_OK : SM_STATUS_BUFFER_TOO_SMALL;
}

bool IsWholeUCS2(const void *value, uint32_t size)
{
    return (UnitCount(static_cast<const uint16_t *>(value)) + 1) * sizeof(uint16_t) == size;
}

uint32_t ReadUTF8(const Place &place, char *dest, uint32_t *destSize, const Default &fallback)
{
    if (*destSize == 0 || *place.path == '\0')
        return SM_STATUS_BAD_ARGUMENT;
    return INIRead(place.section, place.key, dest, destSize, static_cast<const char *>(fallback.value), fallback.size,
                   place.path, place.wait)
        .status;
}

uint32_t WriteBytes(const Place &place, uint32_t type, const void *value, uint32_t valueSize)
{
    if (value == nullptr) {
        if (valueSize != 0)
            return SM_STATUS_INI_BAD_VALUE;
        return INIWrite(place.section, place.key, nullptr, 0, place.path, place.wait);
    }
    if (valueSize == 0 || valueSize > kMostBytes || (type == INI_TYPE_UCS2 && !IsWholeUCS2(value, valueSize)))
        return SM_STATUS_INI_BAD_VALUE;
    const HeapPtr<char> text = SMXLTBytesToCommaList(static_cast<const uint8_t *>(value), &valueSize);
    if (!text)
        return SM_STATUS_FAILED;
    return INIWrite(place.section, place.key, text.get(), valueSize, place.path, place.wait);
}

uint32_t WriteFixed(const Place &place, const FixedType &type, const void *value, uint32_t valueSize)
{
    if (value == nullptr || valueSize < type.size)
        return SM_STATUS_INI_BAD_VALUE;
    char text[kNumberText];
    type.print(value, text);
    return INIWrite(place.section, place.key, text, static_cast<uint32_t>(std::strlen(text) + 1), place.path,
                    place.wait);
}

} // namespace

uint32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *dest, uint32_t *destSize,
                                const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                int16_t waitForLock)
{
    if (dest == nullptr || destSize == nullptr || pathFileName == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    const Place place = {section, key, pathFileName, waitForLock};
    const Default fallback = {defaultValue, defaultSize};
    if (const FixedType *fixed = FixedTypeOf(type))
        return ReadFixed(place, *fixed, dest, destSize, fallback);
    switch (type) {
    case INI_TYPE_UTF8:
        return ReadUTF8(place, static_cast<char *>(dest), destSize, fallback);
    case INI_TYPE_UCS2:
        if (defaultValue != nullptr && !IsWholeUCS2(defaultValue, defaultSize))
            return SM_STATUS_BAD_ARGUMENT;
        return ReadBytes(place, dest, destSize, fallback);
    case INI_TYPE_BINARY:
        return ReadBytes(place, dest, destSize, fallback);
    default:
        return SM_STATUS_BAD_ARGUMENT;
    }
}

uint32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *dest, uint32_t *destSize,
                            const void *defaultValue, uint32_t defaultSize, const char *fileName, int16_t waitForLock)
{
    char path[kINIPathRoom];
    if (const uint32_t status = INIPathOf(fileName, path); status != SM_STATUS_OK)
        return status;
    return SMReadINIPathFileValue(section, key, type, dest, destSize, defaultValue, defaultSize, path, waitForLock);
}

uint32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                 uint32_t valueSize, const char *pathFileName, int16_t waitForLock)
{
    if (section == nullptr || pathFileName == nullptr || *pathFileName == '\0' ||
        (key == nullptr && type != INI_TYPE_UTF8))
        return SM_STATUS_BAD_ARGUMENT;
    const Place place = {section, key, pathFileName, waitForLock};
    if (const FixedType *fixed = FixedTypeOf(type))
        return WriteFixed(place, *fixed, value, valueSize);
    switch (type) {
    case INI_TYPE_UTF8:
        return INIWrite(section, key, static_cast<const char *>(value), valueSize, pathFileName, waitForLock);
    case INI_TYPE_UCS2:
    case INI_TYPE_BINARY:
        return WriteBytes(place, type, value, valueSize);
    default:
        return SM_STATUS_BAD_ARGUMENT;
    }
}

uint32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t valueSize,
                             const char *fileName, int16_t waitForLock)
{
    char path[kINIPathRoom];
    if (const uint32_t status = INIPathOf(fileName, path); status != SM_STATUS_OK)
        return status;
    return SMWriteINIPathFileValue(section, key, type, value, valueSize, path, waitForLock);
}

} // namespace qzvest
