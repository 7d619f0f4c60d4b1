#include "text/format.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "frame/heap.h"
#include "frame/module.h"
#include "ipc/mutex.h"
#include "text/decimal.h"
#include "text/field.h"
#include "text/transcode.h"

namespace qzvest {
namespace {

// ---- The lock ----

SMMutex *lock;
uint16_t attached;
int attachResult;
uint32_t exportContext; // cleared at attach; what every call announces

// ---- Output ----

// Where the text goes. total counts what the format produced, also what found no room.
struct Output {
    char *destination; // NULL: nothing is stored, but counted as if
    uint32_t stored;
    int32_t remaining; // negative when the size was beyond what a signed number holds
    uint32_t total;
    bool truncated; // no caller asks for it yet
};

// Memory of few bytes, without a call.
inline void CopyShort(char *destination, const char *source, uint32_t count)
{
    const auto copy = [&](uint32_t size) { // twice, overlapping
        std::memcpy(destination, source, size);
        std::memcpy(destination + count - size, source + count - size, size);
    };
    if (count >= 8)
        copy(8);
    else if (count >= 4)
        copy(4);
    else if (count >= 2)
        copy(2);
    else if (count == 1)
        *destination = *source;
}

void Put(Output &output, const char *text, int64_t count)
{
    output.total += static_cast<uint32_t>(count);
    const auto fitting = static_cast<uint32_t>(std::min<int64_t>(count, std::max(output.remaining, 0)));
    if (output.destination != nullptr) {
        char *place = output.destination + output.stored;
        if (fitting <= 16)
            CopyShort(place, text, fitting);
        else
            std::memcpy(place, text, fitting);
    }
    output.stored += fitting;
    output.remaining -= static_cast<int32_t>(fitting);
    output.truncated = output.truncated || fitting < count;
}

void Pad(Output &output, char fill, int64_t count)
{
    static constexpr char kSpaces[] = "                ";
    static constexpr char kZeros[] = "0000000000000000";
    constexpr int64_t kPadSize = sizeof kSpaces - 1;
    const char *pad = fill == '0' ? kZeros : kSpaces;
    for (; count > 0 && output.remaining > 0; count -= kPadSize)
        Put(output, pad, std::min(count, kPadSize));
    if (count > 0) {
        output.total += static_cast<uint32_t>(count);
        output.truncated = true;
    }
}

void PutField(Output &output, const Field &field, const Body &body)
{
    const bool prefixed = (field.flags & kFieldHexPrefix) != 0;
    int64_t size = (field.sign != '\0' ? 1 : 0) + (prefixed ? 2 : 0);
    for (uint32_t i = 0; i < body.count; ++i)
        size += body.pieces[i].size;
    const int64_t padding = field.width - size;
    const uint32_t adjust = field.flags & (kFieldLeft | kFieldZeroPad);
    if (padding > 0 && adjust == 0)
        Pad(output, ' ', padding);
    if (field.sign != '\0')
        Put(output, &field.sign, 1);
    if (prefixed)
        Put(output, field.letter == 'X' ? "0X" : "0x", 2);
    if (padding > 0 && adjust == kFieldZeroPad)
        Pad(output, '0', padding);
    for (uint32_t i = 0; i < body.count; ++i) {
        const Piece &piece = body.pieces[i];
        if (piece.text != nullptr)
            Put(output, piece.text, piece.size);
        else
            Pad(output, '0', piece.size);
    }
    if (padding > 0 && (adjust & kFieldLeft) != 0)
        Pad(output, ' ', padding);
}

// ---- Conversions ----

// A list of arguments may be an array, which no function takes by reference.
struct Arguments {
    va_list list;
};

struct Engine {
    Output output;
    Arguments arguments;
    HeapPtr<char> converted; // text of the last S
};

// How a letter is converted. A handler gives false to end the output.
struct Conversion {
    bool (*handle)(Engine &engine, Field &field, const Conversion &conversion);
    uint32_t base;
    uint32_t flags; // that the letter brings along
};

bool PutText(Engine &engine, Field &field, const char *text, int64_t size)
{
    field.sign = '\0';
    Body body;
    body.Add(text, size);
    PutField(engine.output, field, body);
    return true;
}

char *PutPowerOfTwoBase(char *end, uint64_t value, uint32_t shift, const char *digits)
{
    for (; value != 0; value >>= shift)
        *--end = digits[value & ((1u << shift) - 1)];
    return end;
}

char *PutNumber(char *end, uint64_t value, const Field &field, uint32_t base)
{
    switch (base) {
    case 8:
        end = PutPowerOfTwoBase(end, value, 3, "01234567");
        if (value == 0 || (field.flags & kFieldAlternate) != 0)
            *--end = '0';
        return end;
    case 16:
        end = PutPowerOfTwoBase(end, value, 4, field.letter == 'X' ? "0123456789ABCDEF" : "0123456789abcdef");
        if (value == 0)
            *--end = '0';
        return end;
    default:
        return PutDecimal(end, value);
    }
}

bool PutInteger(Engine &engine, Field &field, uint64_t value, uint32_t base)
{
    char digits[24]; // 22 in base 8, and a zero in front
    char *end = digits + sizeof digits;
    const char *first = end;
    if (field.precision >= 0)
        field.flags &= ~uint32_t{kFieldZeroPad};
    if (value != 0 || field.precision != 0)
        first = PutNumber(end, value, field, base);
    Body body;
    body.AddZeros(field.precision - (end - first));
    body.Add(first, end - first);
    PutField(engine.output, field, body);
    return true;
}

bool HandleSigned(Engine &engine, Field &field, const Conversion &conversion)
{
    int64_t value;
    if ((field.flags & kField64Bit) != 0)
        value = va_arg(engine.arguments.list, int64_t);
    else if ((field.flags & kField16Bit) != 0)
        value = static_cast<int16_t>(va_arg(engine.arguments.list, int));
    else
        value = va_arg(engine.arguments.list, int);
    auto magnitude = static_cast<uint64_t>(value);
    if (value < 0) {
        field.sign = '-';
        magnitude = 0 - magnitude;
    }
    return PutInteger(engine, field, magnitude, conversion.base);
}

bool HandleUnsigned(Engine &engine, Field &field, const Conversion &conversion)
{
    uint64_t value;
    if ((field.flags & kField64Bit) != 0)
        value = va_arg(engine.arguments.list, uint64_t);
    else if ((field.flags & kField16Bit) != 0)
        value = static_cast<uint16_t>(va_arg(engine.arguments.list, unsigned));
    else
        value = va_arg(engine.arguments.list, unsigned);
    field.sign = '\0';
    if (conversion.base == 16 && value != 0 && (field.flags & kFieldAlternate) != 0)
        field.flags |= kFieldHexPrefix;
    return PutInteger(engine, field, value, conversion.base);
}

bool HandleDouble(Engine &engine, Field &field, const Conversion &)
{
    Body body;
    FormatDouble(field, va_arg(engine.arguments.list, double), body);
    PutField(engine.output, field, body);
    return true;
}

bool HandleCharacter(Engine &engine, Field &field, const Conversion &)
{
    const auto character = static_cast<char>(va_arg(engine.arguments.list, int));
    return PutText(engine, field, &character, 1);
}

// A letter that converts nothing stands for itself.
bool HandleItself(Engine &engine, Field &field, const Conversion &)
{
    return PutText(engine, field, &field.letter, 1);
}

bool PutString(Engine &engine, Field &field, const char *text)
{
    const size_t size = field.precision < 0 ? std::strlen(text) : strnlen(text, static_cast<size_t>(field.precision));
    return PutText(engine, field, text, static_cast<int64_t>(size));
}

bool HandleString(Engine &engine, Field &field, const Conversion &)
{
    const char *text = va_arg(engine.arguments.list, const char *);
    return PutString(engine, field, text != nullptr ? text : "(null)");
}

bool HandleUCS2String(Engine &engine, Field &field, const Conversion &)
{
    // The bytes of "(null)", taken for units: this is what callers see for NULL, and what they count on.
    static constexpr uint16_t kNull[] = {0x6E28, 0x6C75, 0x296C, 0};
    const uint16_t *source = va_arg(engine.arguments.list, const uint16_t *);
    if (source == nullptr)
        source = kNull;
    uint32_t size = 0;
    if (SMUCS2StrToUTF8Str(nullptr, &size, source) != SM_STATUS_OK)
        return false;
    engine.converted.reset();
    engine.converted = HeapRoom<char>(size);
    if (!engine.converted || SMUCS2StrToUTF8Str(engine.converted.get(), &size, source) != SM_STATUS_OK)
        return false;
    return PutString(engine, field, engine.converted.get());
}

bool HandleCount(Engine &engine, Field &field, const Conversion &)
{
    void *place = va_arg(engine.arguments.list, void *);
    if (place == nullptr)
        return true;
    const auto total = static_cast<int32_t>(engine.output.total);
    if ((field.flags & kField64Bit) != 0)
        *static_cast<int64_t *>(place) = total;
    else if ((field.flags & kField16Bit) != 0)
        *static_cast<int16_t *>(place) = static_cast<int16_t>(total);
    else
        *static_cast<int32_t *>(place) = total;
    return true;
}

bool HandleEnd(Engine &, Field &, const Conversion &)
{
    return false;
}

constexpr auto kConversions = [] {
    std::array<Conversion, 256> table{};
    table.fill({HandleItself, 0, 0});
    table['\0'] = {HandleEnd, 0, 0};
    table['d'] = table['i'] = {HandleSigned, 10, 0};
    table['D'] = {HandleSigned, 10, kField64Bit};
    table['u'] = {HandleUnsigned, 10, 0};
    table['U'] = {HandleUnsigned, 10, kField64Bit};
    table['o'] = {HandleUnsigned, 8, 0};
    table['O'] = {HandleUnsigned, 8, kField64Bit};
    table['x'] = table['X'] = {HandleUnsigned, 16, 0};
    table['p'] = {HandleUnsigned, 16, kField64Bit | kFieldHexPrefix};
    table['c'] = {HandleCharacter, 0, 0};
    table['s'] = {HandleString, 0, 0};
    table['S'] = {HandleUCS2String, 0, 0};
    table['n'] = {HandleCount, 0, 0};
    table['e'] = table['E'] = table['f'] = table['g'] = table['G'] = {HandleDouble, 10, 0};
    return table;
}();

// ---- The format ----

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

// Wraps where 32 bits do not hold it.
int32_t ReadNumber(const char *&format)
{
    uint32_t number = 0;
    for (; IsDigit(*format); ++format)
        number = number * 10 + static_cast<uint32_t>(*format - '0');
    return static_cast<int32_t>(number);
}

void TakeWidth(Field &field, int32_t width)
{
    field.width = width;
    if (width < 0) {
        field.flags |= kFieldLeft;
        field.width = static_cast<int32_t>(0u - static_cast<uint32_t>(width));
    }
}

int32_t ReadPrecision(const char *&format, Arguments &arguments)
{
    int32_t precision;
    if (*format == '*') {
        ++format;
        precision = va_arg(arguments.list, int);
    } else {
        precision = ReadNumber(format);
    }
    return std::max(precision, -1);
}

// Reads what stands between the percent sign and the conversion letter, in any order, and the letter.
Field ReadField(const char *&format, Arguments &arguments)
{
    Field field{0, 0, -1, '\0', '\0'};
    for (;;) {
        const char character = *format;
        if (character >= '1' && character <= '9') {
            field.width = ReadNumber(format);
            continue;
        }
        if (character != '\0')
            ++format;
        switch (character) {
        case ' ':
            if (field.sign == '\0')
                field.sign = ' ';
            break;
        case '+':
            field.sign = '+';
            break;
        case '#':
            field.flags |= kFieldAlternate;
            break;
        case '-':
            field.flags |= kFieldLeft;
            break;
        case '0':
            field.flags |= kFieldZeroPad;
            break;
        case 'h':
            field.flags |= kField16Bit;
            break;
        case 'l':
            field.flags |= kField64Bit;
            break;
        case 'L':
            field.flags |= kFieldLongDouble;
            break;
        case '*':
            TakeWidth(field, va_arg(arguments.list, int));
            break;
        case '.':
            field.precision = ReadPrecision(format, arguments);
            break;
        default:
            field.letter = character;
            return field;
        }
    }
}

void Run(Engine &engine, const char *format)
{
    for (;;) {
        const char *run = format;
        while (*format != '%' && *format != '\0')
            ++format;
        if (format != run)
            Put(engine.output, run, format - run);
        if (*format == '\0')
            return;
        ++format;
        Field field = ReadField(format, engine.arguments);
        const Conversion &conversion = kConversions[static_cast<unsigned char>(field.letter)];
        field.flags |= conversion.flags;
        if (!conversion.handle(engine, field, conversion))
            return;
    }
}

} // namespace

// The terminator and the end of the conversion buffer belong to the call, and so stand under the lock.
uint32_t SMvsnprintf(char *destination, uint32_t size, const char *format, va_list arguments)
{
    Engine engine{{destination, 0, static_cast<int32_t>(size - 1), 0, false}, {}, {}};
    va_copy(engine.arguments.list, arguments);
    (void)SMMutexLock(lock, SM_WAIT_FOREVER);
    uint32_t context;
    SMSetExportContext(&context, exportContext);
    Run(engine, format);
    if (destination != nullptr)
        destination[engine.output.stored] = '\0';
    engine.converted.reset();
    SMResetExportContext(&context);
    (void)SMMutexUnLock(lock);
    va_end(engine.arguments.list);
    return engine.output.stored;
}

int32_t SMFormatPrint(char *destination, uint32_t size, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const uint32_t stored = SMvsnprintf(destination, size, format, arguments);
    va_end(arguments);
    return static_cast<int32_t>(stored);
}

int FormatLockAttach()
{
    if (attached != 0)
        return attachResult;
    exportContext = 0;
    lock = SMMutexCreate(nullptr);
    attached = 1;
    attachResult = lock != nullptr ? 1 : 0;
    return attachResult;
}

void FormatLockDetach()
{
    if (attached == 0)
        return;
    SMMutexDestroy(lock);
    lock = nullptr;
    attached = 0;
}

} // namespace qzvest
