// Growable text. An append has no way to report a failure: it leaves the record as it was, and only an unchanged
// length tells.

#include "text/sizedstring.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "frame/heap.h"
#include "text/transcode.h"
#include "text/ucs2.h"

namespace qzvest {
namespace {

static_assert(offsetof(SMSSUCS2Str, capacity) == 8 && offsetof(SMSSUCS2Str, length) == 12);
static_assert(offsetof(SMSSUTF8Str, capacity) == 8 && offsetof(SMSSUTF8Str, length) == 12);

constexpr uint32_t kDoublingLimit = 0x100000; // bytes; from here on a buffer grows to 125 %

// What a record's text consists of: uint16_t or char.
template <typename Record>
using UnitOf = std::remove_pointer_t<decltype(Record::text)>;

uint32_t LengthOf(const char *text)
{
    return static_cast<uint32_t>(std::strlen(text));
}

uint32_t LengthOf(const uint16_t *text)
{
    return SMUCS2Strlen(text);
}

template <typename Record>
UnitOf<Record> *Alloc(Record *record, uint32_t size)
{
    using Unit = UnitOf<Record>;
    record->text = nullptr;
    if (size == 0)
        return nullptr;
    // The terminator is written whatever the size.
    auto *text = static_cast<Unit *>(std::malloc(size < sizeof(Unit) ? sizeof(Unit) : size));
    if (text == nullptr)
        return nullptr;
    text[0] = 0;
    *record = {text, size, 0};
    return text;
}

template <typename Record>
void Free(Record *record)
{
    std::free(record->text);
    *record = {nullptr, 0, 0};
}

// The step from 1 MiB on is of 32 bits and wraps from 34,359,739 bytes upward, so that very large texts grow by
// what they need and no more. It is not to be widened.
uint32_t GrownCapacity(uint32_t capacity, uint32_t needed)
{
    const uint32_t candidate = capacity < kDoublingLimit ? 2 * capacity : capacity * 125 / 100;
    return candidate > needed ? candidate : needed;
}

// Makes room for count more units and the terminator. False leaves the record as it was.
template <typename Record>
bool Reserve(Record *record, uint32_t count)
{
    const uint64_t needed = (uint64_t{record->length} + count + 1) * sizeof(UnitOf<Record>);
    if (needed <= record->capacity)
        return true;
    if (needed > UINT32_MAX)
        return false; // no capacity can say it
    const uint32_t capacity = GrownCapacity(record->capacity, static_cast<uint32_t>(needed));
    void *text = std::realloc(record->text, capacity);
    if (text == nullptr)
        return false;
    record->text = static_cast<UnitOf<Record> *>(text);
    record->capacity = capacity;
    return true;
}

// The source may lie in the record's own text and then moves with it; it is read unit by unit, so that one that
// runs into what is being appended repeats itself.
template <typename Record>
UnitOf<Record> *Append(Record *record, const UnitOf<Record> *source, uint32_t count)
{
    using Unit = UnitOf<Record>;
    if (source == nullptr || record->text == nullptr)
        return record->text;
    if (count == 0)
        count = LengthOf(source);
    const auto offset = reinterpret_cast<uintptr_t>(source) - reinterpret_cast<uintptr_t>(record->text);
    const bool isOwn = offset < record->capacity;
    if (!Reserve(record, count))
        return record->text;
    Unit *end = record->text + record->length;
    if (isOwn) {
        source = record->text + offset / sizeof(Unit);
        for (uint32_t i = 0; i < count; ++i)
            end[i] = source[i];
    } else {
        std::memcpy(end, source, size_t{count} * sizeof(Unit));
    }
    end[count] = 0;
    record->length += count;
    return record->text;
}

// Appends count units of the converted source. What lies behind the converted text counts too, zeros here.
template <typename Record, typename Source, typename Convert>
UnitOf<Record> *AppendConverted(Record *record, const Source *source, uint32_t count, Convert convert)
{
    using Unit = UnitOf<Record>;
    if (source == nullptr || record->text == nullptr)
        return record->text;
    if (count == 0)
        count = LengthOf(source);
    const uint32_t size = (count + 1) * static_cast<uint32_t>(sizeof(Unit));
    const HeapPtr<Unit> converted(static_cast<Unit *>(std::malloc(size)));
    uint32_t used = size;
    if (!converted || convert(converted.get(), &used, source) != SM_STATUS_OK)
        return record->text;
    std::memset(reinterpret_cast<char *>(converted.get()) + used, 0, size - used);
    return Append(record, converted.get(), count);
}

} // namespace

uint16_t *SMSSUCS2StrAlloc(SMSSUCS2Str *record, uint32_t size)
{
    return Alloc(record, size);
}

char *SMSSUTF8StrAlloc(SMSSUTF8Str *record, uint32_t size)
{
    return Alloc(record, size);
}

void SMSSUCS2StrFree(SMSSUCS2Str *record)
{
    Free(record);
}

void SMSSUTF8StrFree(SMSSUTF8Str *record)
{
    Free(record);
}

uint16_t *SMSSUCS2StrNCatUCS2Str(SMSSUCS2Str *record, const uint16_t *source, uint32_t count)
{
    return Append(record, source, count);
}

char *SMSSUTF8StrNCatUTF8Str(SMSSUTF8Str *record, const char *source, uint32_t count)
{
    return Append(record, source, count);
}

uint16_t *SMSSUCS2StrNCatUTF8Str(SMSSUCS2Str *record, const char *source, uint32_t count)
{
    return AppendConverted(record, source, count, UTF8ToUCS2Convert);
}

// A plain append has one byte of room for each unit, so text beyond ASCII does not go in without a count that is
// large enough. Callers know.
char *SMSSUTF8StrNCatUCS2Str(SMSSUTF8Str *record, const uint16_t *source, uint32_t count)
{
    return AppendConverted(record, source, count, UCS2ToUTF8Convert);
}

uint16_t *SSUCS2StrCatSSUTF8Str(SMSSUCS2Str *record, const SMSSUTF8Str *source)
{
    if (source == nullptr || record->text == nullptr)
        return record->text;
    uint32_t size = (source->length + 1) * static_cast<uint32_t>(sizeof(uint16_t));
    const HeapPtr<uint16_t> converted(static_cast<uint16_t *>(std::malloc(size)));
    if (!converted || source->text == nullptr)
        return record->text;
    if (UTF8ToUCS2Convert(converted.get(), &size, source->text) != SM_STATUS_OK)
        return record->text;
    return Append(record, converted.get(), 0);
}

} // namespace qzvest
