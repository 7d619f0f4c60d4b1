// Both directions go over the text in rounds: the run of ASCII at its head, a run of other regular text where the
// machine has a way for it, and a few characters by the single steps, which alone know of failures. The source is
// measured first, so that no load passes its end; that costs little beside the rest. What lies behind
// the last sequence of a destination is untouched in the end, also on failure.
#include "text/transcode.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "text/ascii.h"
#include "text/codepoint.h"
#include "text/target.h"
#include "text/transcode_x86.h"
#include "text/unitcount.h"

namespace qzvest {
namespace {

constexpr ptrdiff_t kByStep = 16; // source bytes or units by single steps before a run is tried again

// Text from UTF-8, one sequence at a time.
struct UTF8Reader {
    const char *start;
    const char *at;
    const char *end;

    uint32_t Next(uint32_t *codePoint)
    {
        uint32_t length;
        const uint32_t status = UTF8ToCodePoint(at, codePoint, &length);
        if (status == SM_STATUS_OK)
            at += length;
        return status;
    }
};

// Text from UCS-2, one unit at a time. A surrogate anywhere stands for what the string BEGINS with: its first unit,
// or its first pair. Stored text came about this way; not to be "repaired".
struct UCS2Reader {
    const uint16_t *start;
    const uint16_t *at;
    const uint16_t *end;

    uint32_t Next(uint32_t *codePoint)
    {
        *codePoint = *at++;
        return IsSurrogate(*codePoint) ? UCS2ToCodePoint(start, codePoint) : SM_STATUS_OK;
    }
};

inline uint32_t Encode(uint16_t *destination, uint32_t *room, uint32_t codePoint)
{
    return CodePointToUCS2(destination, room, codePoint);
}

inline uint32_t Encode(char *destination, uint32_t *room, uint32_t codePoint)
{
    return CodePointToUTF8(destination, room, codePoint);
}

template <bool kWrites, typename Unit>
uint32_t PutCodePoint(Target<kWrites, Unit> *target, uint32_t codePoint)
{
    auto length = static_cast<uint32_t>(target->room);
    const uint32_t status = Encode(target->next, &length, codePoint);
    if (status == SM_STATUS_OK)
        target->Advance(length);
    return status;
}

template <bool kWrites, typename Unit>
uint32_t Finish(const Target<kWrites, Unit> &target, uint32_t *size)
{
    if constexpr (kWrites) {
        if (target.room == 0)
            return SM_STATUS_BUFFER_TOO_SMALL;
        *target.next = 0;
    }
    *size = static_cast<uint32_t>((target.total + 1) * sizeof(Unit));
    return SM_STATUS_OK;
}

// What a machine can do for runs: each call says how much it took and gave.
struct PortableSteps {
    static constexpr bool kHasRuns = false;

    template <bool kWrites, typename Unit, typename Reader>
    static QZVEST_INLINE size_t Ascii(const Target<kWrites, Unit> &target, const Reader &reader, size_t count)
    {
        return CopyAscii<kWrites>(target.next, reader.at, count);
    }
};

#if QZVEST_X86
struct AVX2Steps {
    static constexpr bool kHasRuns = true;

    template <bool kWrites, typename Unit, typename Reader>
    static size_t Ascii(const Target<kWrites, Unit> &target, const Reader &reader, size_t count)
    {
        return CopyAsciiAVX2<kWrites>(target.next, reader.at, count);
    }
    template <bool kWrites>
    static size_t Run(Target<kWrites, uint16_t> *target, const UTF8Reader &reader)
    {
        return RunAVX2(target, reader.at, reader.start, reader.end);
    }
    template <bool kWrites>
    static size_t Run(Target<kWrites, char> *target, const UCS2Reader &reader)
    {
        return RunAVX2(target, reader.at, reader.end);
    }
};
#endif

template <typename Steps, bool kWrites, typename Unit, typename Reader>
uint32_t Convert(Target<kWrites, Unit> target, uint32_t *size, Reader reader)
{
    while (reader.at != reader.end) {
        const auto left = static_cast<size_t>(reader.end - reader.at);
        const size_t ascii = Steps::Ascii(target, reader, std::min(left, target.room));
        target.Advance(ascii);
        reader.at += ascii;
        if (reader.at == reader.end)
            break;
        if constexpr (Steps::kHasRuns)
            reader.at += Steps::Run(&target, reader);
        const auto *stop = reader.at + std::min(kByStep, reader.end - reader.at);
        while (reader.at < stop) {
            uint32_t codePoint;
            uint32_t status = reader.Next(&codePoint);
            if (status == SM_STATUS_OK)
                status = PutCodePoint(&target, codePoint);
            if (status != SM_STATUS_OK)
                return status;
        }
    }
    return Finish(target, size);
}

template <typename Steps, typename Unit, typename Reader>
uint32_t ConvertTo(Unit *destination, uint32_t *size, Reader reader)
{
    if (destination == nullptr)
        return Convert<Steps>(Target<false, Unit>{nullptr, SIZE_MAX}, size, reader);
    return Convert<Steps>(Target<true, Unit>{destination, *size / sizeof(Unit)}, size, reader);
}

UTF8Reader ReaderOf(const char *source)
{
    return {source, source, source + std::strlen(source)};
}

UCS2Reader ReaderOf(const uint16_t *source, size_t count)
{
    return {source, source, source + count};
}

} // namespace

uint32_t UTF8ToUCS2Portable(uint16_t *destination, uint32_t *sizeInOut, const char *source)
{
    return ConvertTo<PortableSteps>(destination, sizeInOut, ReaderOf(source));
}

uint32_t UCS2ToUTF8Portable(char *destination, uint32_t *sizeInOut, const uint16_t *source)
{
    return ConvertTo<PortableSteps>(destination, sizeInOut, ReaderOf(source, UnitCountPortable(source)));
}

uint32_t UTF8ToUCS2Convert(uint16_t *destination, uint32_t *sizeInOut, const char *source)
{
#if QZVEST_X86
    if (HasAVX2())
        return ConvertTo<AVX2Steps>(destination, sizeInOut, ReaderOf(source));
#endif
    return UTF8ToUCS2Portable(destination, sizeInOut, source);
}

uint32_t UCS2ToUTF8Convert(char *destination, uint32_t *sizeInOut, const uint16_t *source)
{
#if QZVEST_X86
    if (HasAVX2())
        return ConvertTo<AVX2Steps>(destination, sizeInOut, ReaderOf(source, UnitCount(source)));
#endif
    return UCS2ToUTF8Portable(destination, sizeInOut, source);
}

uint32_t SMUTF8StrToUCS2Str(uint16_t *destination, uint32_t *sizeInOut, const char *source)
{
    if (source == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return UTF8ToUCS2Convert(destination, sizeInOut, source);
}

uint32_t SMUCS2StrToUTF8Str(char *destination, uint32_t *sizeInOut, const uint16_t *source)
{
    if (source == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return UCS2ToUTF8Convert(destination, sizeInOut, source);
}

} // namespace qzvest
