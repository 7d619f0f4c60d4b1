// Special bytes are found sixteen at a time; what lies between two of them is copied as a run.

#include "text/xmlescape.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "compat/cpu.h"
#include "compat/load.h"
#include "frame/heap.h"
#include "text/ascii.h"
#include "text/sizedstring.h"

namespace qzvest {
namespace {

constexpr uint32_t kMaxPasses = 16;

static_assert(std::endian::native == std::endian::little, "a word's low byte comes first");

// Bytes of 0xFF where the block holds something to replace.
QZVEST_INLINE auto SpecialsOf(Bytes16 block)
{
    return (block == '"') | (block == '&') | (block == '\'') | (block == '<') | (block == '>');
}

bool IsSpecial(char byte)
{
    return byte == '"' || byte == '&' || byte == '\'' || byte == '<' || byte == '>';
}

bool IsReference(std::string_view text)
{
    return text.starts_with("&amp;") || text.starts_with("&lt;") || text.starts_with("&gt;") ||
           text.starts_with("&quot;") || text.starts_with("&apos;");
}

struct Reference {
    char text[8]; // a whole word, so that it is copied at once
    uint32_t size;
};

// What stands for the special byte that the text begins with.
const Reference &Replacement(std::string_view text)
{
    static constexpr Reference kQuote{"&quot;", 6}, kApostrophe{"&apos;", 6}, kLess{"&lt;", 4}, kGreater{"&gt;", 4},
        kAmpersand{"&amp;", 5}, kItself{"&", 1};
    switch (text.front()) {
    case '"':
        return kQuote;
    case '\'':
        return kApostrophe;
    case '<':
        return kLess;
    case '>':
        return kGreater;
    default:
        return IsReference(text) ? kItself : kAmpersand;
    }
}

// As the sized string's own append, but without the terminator and the call where there is room.
void Put(SMSSUTF8Str *record, const char *piece, uint32_t size)
{
    if (size < record->capacity - record->length) {
        std::memcpy(record->text + record->length, piece, size);
        record->length += size;
    } else {
        (void)SMSSUTF8StrNCatUTF8Str(record, piece, size);
    }
}

// The same for a piece of at most kWord bytes, of which all kWord may be read: short ones are too many for a copy of
// just their size.
template <uint32_t kWord>
void PutShort(SMSSUTF8Str *record, const char *piece, uint32_t size)
{
    if (record->capacity - record->length > kWord) {
        std::memcpy(record->text + record->length, piece, kWord);
        record->length += size;
    } else {
        Put(record, piece, size);
    }
}

// A run of bytes that stand for themselves: at once, and where there is no memory for that, what there is memory for.
void PutRun(SMSSUTF8Str *record, const char *at, const char *end)
{
    constexpr ptrdiff_t kMostAtOnce = 1 << 30;
    while (at != end) {
        const auto size = static_cast<uint32_t>(std::min(end - at, kMostAtOnce));
        const uint32_t before = record->length;
        Put(record, at, size);
        if (record->length == before)
            for (uint32_t i = 0; i < size; ++i)
                Put(record, at + i, 1);
        at += size;
    }
}

// Calls replace with the place of each special byte.
template <typename Replace>
void ForEachSpecial(const char *at, const char *end, const Replace &replace)
{
    for (; end - at >= 16; at += 16) {
        const auto specials = SpecialsOf(LoadAs<Bytes16>(at));
        for (const int half : {0, 8}) {
            uint64_t left = LoadAs<uint64_t>(reinterpret_cast<const char *>(&specials) + half);
            while (left != 0) {
                const int bit = std::countr_zero(left) & ~7;
                replace(at + half + bit / 8);
                left &= ~(uint64_t{0xFF} << bit);
            }
        }
    }
    for (; at != end; ++at)
        if (IsSpecial(*at))
            replace(at);
}

char *EscapeOnce(const char *text, uint32_t *sizeInOut)
{
    SMSSUTF8Str result{nullptr, 0, 0};
    if (SMSSUTF8StrAlloc(&result, *sizeInOut) != nullptr) {
        const char *const end = text + std::strlen(text);
        const char *run = text; // begins what has not been copied yet
        ForEachSpecial(text, end, [&](const char *special) {
            if (special - run <= 16 && end - run >= 16)
                PutShort<16>(&result, run, static_cast<uint32_t>(special - run));
            else
                PutRun(&result, run, special);
            const Reference &reference = Replacement({special, static_cast<size_t>(end - special)});
            PutShort<sizeof reference.text>(&result, reference.text, reference.size);
            run = special + 1;
        });
        PutRun(&result, run, end);
        result.text[result.length] = '\0';
    }
    *sizeInOut = result.length;
    return result.text;
}

} // namespace

// Later passes find nothing to replace. They are made all the same: an empty text does not survive them.
char *SMXGEscapeXMLUTF8Str(const char *text, uint32_t *sizeInOut, uint32_t passes)
{
    if (text == nullptr || sizeInOut == nullptr || passes == 0)
        return nullptr;
    HeapPtr<char> result(EscapeOnce(text, sizeInOut));
    for (uint32_t pass = 1; result && pass < std::min(passes, kMaxPasses); ++pass)
        result.reset(EscapeOnce(result.get(), sizeInOut));
    return result.release();
}

} // namespace qzvest
