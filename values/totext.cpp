// Typed values to text: one row for each type.

#include <qzvest/status.h>
#include <qzvest/types.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <iterator>

#include "compat/load.h"
#include "compat/print.h"
#include "os/ipv4.h"
#include "text/format.h"
#include "text/language.h"
#include "text/number.h"
#include "text/transcode.h"
#include "values/bytetext.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

constexpr uint32_t kBase2Text = 33;   // 32 digits
constexpr uint32_t kNumberText = 16;  // all other bases are within it
constexpr uint32_t kDoubleText = 320; // the longest double with three decimals takes 315
constexpr size_t kHexBlock = 128;
constexpr uint32_t kHexBytes = 63; // more do not fit the block with its terminator

struct Request {
    const void *value;
    uint32_t valueSize;
    char *text;
    uint32_t *size;
    uint32_t format;
};

template <typename Value>
Value Load(const Request &request)
{
    return LoadAs<Value>(request.value);
}

// True when the destination is there and has room; else its size word says what is needed.
bool HasRoom(const Request &request, uint32_t needed)
{
    if (request.text != nullptr && *request.size >= needed)
        return true;
    *request.size = needed;
    return false;
}

uint32_t CopyText(const Request &request, const char *text, uint32_t size)
{
    if (!HasRoom(request, size))
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memcpy(request.text, text, size);
    *request.size = size;
    return SM_STATUS_OK;
}

// Only the one value is true, not all but 0.
uint32_t WriteBool(const Request &request)
{
    return Load<int16_t>(request) == 1 ? CopyText(request, "true", sizeof "true")
                                       : CopyText(request, "false", sizeof "false");
}

const char *NumberFormat(uint32_t format, const char *decimal)
{
    if (format == SMXLT_FORMAT_OCTAL)
        return "%o";
    return format == SMXLT_FORMAT_HEX ? "%#x" : decimal;
}

// In all bases but ten a negative value shows its 32 bits, whatever the width that it is stored in.
template <typename Value>
uint32_t WriteSigned(const Request &request)
{
    const int32_t value = Load<Value>(request); // NOLINT(bugprone-signed-char-misuse): a number of 8 bits
    if (request.format == SMXLT_FORMAT_BINARY)
        (void)_ltoa_s(static_cast<uint32_t>(value), request.text, kBase2Text, 2);
    else
        (void)SMFormatPrint(request.text, kNumberText, NumberFormat(request.format, "%d"), value);
    return SM_STATUS_OK;
}

template <typename Value>
uint32_t WriteUnsigned(const Request &request)
{
    const uint32_t value = Load<Value>(request);
    if (request.format == SMXLT_FORMAT_BINARY)
        (void)_ultoa_s(value, request.text, kBase2Text, 2);
    else
        (void)SMFormatPrint(request.text, kNumberText, NumberFormat(request.format, "%u"), value);
    return SM_STATUS_OK;
}

uint32_t WriteInt64(const Request &request)
{
    Int64ToUTF8Str(request.text, Load<int64_t>(request));
    return SM_STATUS_OK;
}

uint32_t WriteUInt64(const Request &request)
{
    UInt64ToUTF8Str(request.text, Load<uint64_t>(request));
    return SM_STATUS_OK;
}

// The room that is asked for does not hold every double: a longer text is cut at the caller's room.
uint32_t WriteDouble(const Request &request)
{
    (void)SMFormatPrint(request.text, std::min(*request.size, kDoubleText), "%.3f", Load<double>(request));
    return SM_STATUS_OK;
}

uint32_t WriteLanguage(const Request &request)
{
    const char *name = LanguageIDToName(Load<uint32_t>(request));
    std::memcpy(request.text, name, std::strlen(name) + 1);
    return SM_STATUS_OK;
}

uint32_t WriteTime(const Request &request)
{
    const auto time = Load<time_t>(request);
    return TimeToUTF8Str(&time, request.text, *request.size) == 0 ? SM_STATUS_OK : SM_STATUS_FAILED;
}

uint32_t WriteBytes(const Request &request)
{
    const auto *data = static_cast<const uint8_t *>(request.value);
    uint32_t size = request.valueSize;
    HeapPtr<char> text;
    switch (request.format) {
    case SMXLT_FORMAT_DEFAULT:
        text = SMXLTBytesToHexText(data, &size);
        break;
    case SMXLT_FORMAT_BINARY:
        text = SMXLTBytesToDump(data, &size, 0);
        break;
    case SMXLT_FORMAT_HEX:
        text = SMXLTBytesToCommaList(data, &size);
        break;
    default:
        return SM_STATUS_BAD_ARGUMENT;
    }
    return text ? CopyText(request, text.get(), size) : SM_STATUS_FAILED;
}

// All bytes are copied, terminators among them; the size is that up to the first one.
uint32_t WriteUTF8(const Request &request)
{
    if (!HasRoom(request, request.valueSize))
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memmove(request.text, request.value, request.valueSize);
    *request.size = static_cast<uint32_t>(strnlen(request.text, *request.size) + 1);
    return SM_STATUS_OK;
}

uint32_t WriteUCS2(const Request &request)
{
    const auto *units = static_cast<const uint16_t *>(request.value);
    const uint32_t status = UCS2ToUTF8Convert(request.text, request.size, units);
    return status == SM_STATUS_OK && request.text == nullptr ? SM_STATUS_BUFFER_TOO_SMALL : status;
}

// Refuses to be asked for the size without a destination, unlike all others.
uint32_t WriteIPv4(const Request &request)
{
    return SMIPAddrNetworkToASCII(Load<uint32_t>(request), request.text, request.size);
}

uint32_t WriteHex(const Request &request)
{
    const HeapPtr<char> block(HeapRoom<char>(kHexBlock));
    if (!block)
        return SM_STATUS_NO_MEMORY;
    const uint32_t count = std::min(request.valueSize, kHexBytes);
    *PutHexDigits(block.get(), static_cast<const uint8_t *>(request.value), count) = '\0';
    return CopyText(request, block.get(), count * 2 + 1);
}

struct Writer {
    uint32_t room;      // bytes asked for; 0 when the value tells, and the writer looks at the room itself
    uint32_t base2Room; // the same for digits of base 2
    uint32_t (*write)(const Request &request);
};

// By type. The rooms are worst cases that callers know, 17 beside 16 included; they are not to be made equal.
constexpr Writer kWriters[] = {
    {0, 0, WriteBool},
    {17, kBase2Text, WriteSigned<int8_t>},
    {17, kBase2Text, WriteSigned<int16_t>},
    {17, kBase2Text, WriteSigned<int32_t>},
    {33, 33, WriteInt64},
    {16, kBase2Text, WriteUnsigned<uint8_t>},
    {16, kBase2Text, WriteUnsigned<uint16_t>},
    {16, kBase2Text, WriteUnsigned<uint32_t>},
    {32, 32, WriteUInt64},
    {32, 32, WriteDouble},
    {16, 16, WriteLanguage},
    {64, 64, WriteTime},
    {0, 0, WriteBytes},
    {0, 0, WriteUTF8},
    {0, 0, WriteUCS2},
    {0, 0, WriteIPv4},
    {0, 0, WriteHex},
};
static_assert(std::size(kWriters) == SMXLT_TYPE_HEX + 1);

} // namespace

uint32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *sizeInOut,
                              uint32_t typeAndFormat)
{
    if (sizeInOut == nullptr || value == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t type = typeAndFormat & kTypeMask;
    if (type >= std::size(kWriters))
        return SM_STATUS_BAD_ARGUMENT;
    const Writer &writer = kWriters[type];
    const Request request = {value, valueSize, text, sizeInOut, typeAndFormat & kFormatMask};
    if (writer.room == 0)
        return writer.write(request);
    if (!HasRoom(request, request.format == SMXLT_FORMAT_BINARY ? writer.base2Room : writer.room))
        return SM_STATUS_BUFFER_TOO_SMALL;
    const uint32_t status = writer.write(request);
    if (status == SM_STATUS_OK)
        *sizeInOut = static_cast<uint32_t>(std::strlen(text) + 1);
    return status;
}

} // namespace qzvest
