// Typed values from text: one row for each type.

#include <qzvest/status.h>
#include <qzvest/types.h>

#include <strings.h>

#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

#include "compat/load.h"
#include "os/ipv4.h"
#include "text/language.h"
#include "text/transcode.h"
#include "values/bytetext.h"
#include "values/parse.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

// What a reader works on. The value is not NULL for types of a fixed size, and the room for it is tested.
struct Request {
    char *text;
    void *value;
    uint32_t *size;
    uint32_t format;
};

template <typename Value>
uint32_t Store(const Request &request, Value value)
{
    StoreAs(request.value, value);
    return SM_STATUS_OK;
}

// True when the destination is there and has room. Its size word says what is needed either way.
bool HasRoom(const Request &request, size_t needed)
{
    const bool fits = request.value != nullptr && *request.size >= needed;
    *request.size = static_cast<uint32_t>(needed);
    return fits;
}

uint32_t ReadBool(const Request &request)
{
    if (strcasecmp(request.text, "true") == 0)
        return Store(request, int16_t{1});
    if (strcasecmp(request.text, "false") == 0)
        return Store(request, int16_t{0});
    return SM_STATUS_INVALID_PARAMETER;
}

template <typename Value, auto kParse>
uint32_t ReadInteger(const Request &request)
{
    using Limits = std::numeric_limits<Value>;
    uint32_t status;
    const auto parsed = kParse(request.text, request.format, &status);
    if (status != SM_STATUS_OK)
        return status;
    if (std::cmp_greater(parsed, Limits::max()))
        return SM_STATUS_VALUE_TOO_LARGE;
    if (std::cmp_less(parsed, Limits::min()))
        return SM_STATUS_VALUE_TOO_SMALL;
    return Store(request, static_cast<Value>(parsed));
}

uint32_t ReadDouble(const Request &request)
{
    uint32_t status;
    return Store(request, SMXLTParseDouble(request.text, request.format, &status)); // which knows no failure
}

uint32_t ReadLanguage(const Request &request)
{
    int32_t found;
    const uint32_t id = LanguageNameToID(request.text, &found);
    return found == 0 ? Store(request, id) : SM_STATUS_FAILED;
}

uint32_t RefuseTime(const Request &request)
{
    *request.size = 0;
    return SM_STATUS_BAD_ARGUMENT;
}

uint32_t CopyBytes(const Request &request, const HeapPtr<uint8_t> &bytes, uint32_t count)
{
    if (!HasRoom(request, count))
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memcpy(request.value, bytes.get(), count);
    return SM_STATUS_OK;
}

template <typename Decode>
uint32_t ReadDecoded(const Request &request, Decode decode)
{
    uint32_t count = *request.size;
    const HeapPtr<uint8_t> bytes = decode(request.text, &count);
    if (bytes)
        return CopyBytes(request, bytes, count);
    *request.size = count;
    return SM_STATUS_FAILED;
}

uint32_t ReadHex(const Request &request)
{
    return ReadDecoded(request, SMXLTHexTextToBytes);
}

uint32_t ReadBytes(const Request &request)
{
    if (request.format == SMXLT_FORMAT_DEFAULT)
        return ReadHex(request);
    if (request.format == SMXLT_FORMAT_HEX)
        return ReadDecoded(request, SMXLTCommaListToBytes);
    *request.size = static_cast<uint32_t>(std::strlen(request.text) + 1);
    return SM_STATUS_BAD_ARGUMENT;
}

uint32_t ReadUTF8(const Request &request)
{
    const size_t size = std::strlen(request.text) + 1;
    if (!HasRoom(request, size))
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memmove(request.value, request.text, size);
    return SM_STATUS_OK;
}

// The one type whose sizing call gives success.
uint32_t ReadUCS2(const Request &request)
{
    return UTF8ToUCS2Convert(static_cast<uint16_t *>(request.value), request.size, request.text);
}

uint32_t ReadIPv4(const Request &request)
{
    uint32_t address;
    const uint32_t status = SMIPAddrASCIIToNetwork(request.text, &address);
    return status == SM_STATUS_OK ? Store(request, address) : status;
}

struct Reader {
    uint32_t size; // bytes of the value; 0 when the text tells, and the reader looks at the room itself
    uint32_t (*read)(const Request &request);
};

// By type.
constexpr Reader kReaders[] = {
    {sizeof(int16_t), ReadBool},
    {sizeof(int8_t), ReadInteger<int8_t, SMXLTParseSigned32>},
    {sizeof(int16_t), ReadInteger<int16_t, SMXLTParseSigned32>},
    {sizeof(int32_t), ReadInteger<int32_t, SMXLTParseSigned32>},
    {sizeof(int64_t), ReadInteger<int64_t, SMXLTParseSigned64>},
    {sizeof(uint8_t), ReadInteger<uint8_t, SMXLTParseUnsigned32>},
    {sizeof(uint16_t), ReadInteger<uint16_t, SMXLTParseUnsigned32>},
    {sizeof(uint32_t), ReadInteger<uint32_t, SMXLTParseUnsigned32>},
    {sizeof(uint64_t), ReadInteger<uint64_t, SMXLTParseUnsigned64>},
    {sizeof(double), ReadDouble},
    {sizeof(uint32_t), ReadLanguage},
    {0, RefuseTime},
    {0, ReadBytes},
    {0, ReadUTF8},
    {0, ReadUCS2},
    {sizeof(uint32_t), ReadIPv4},
    {0, ReadHex},
};
static_assert(std::size(kReaders) == SMXLT_TYPE_HEX + 1);

} // namespace

uint32_t SMXLTUTF8ToTypeValue(char *text, void *value, uint32_t *sizeInOut, uint32_t typeAndFormat)
{
    if (text == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (value == nullptr && *sizeInOut != 0)
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t type = typeAndFormat & kTypeMask;
    if (type >= std::size(kReaders)) {
        *sizeInOut = 0;
        return SM_STATUS_BAD_ARGUMENT;
    }
    const Reader &reader = kReaders[type];
    const Request request = {text, value, sizeInOut, typeAndFormat & kFormatMask};
    if (reader.size != 0 && !HasRoom(request, reader.size))
        return SM_STATUS_BUFFER_TOO_SMALL;
    return reader.read(request);
}

} // namespace qzvest
