// The walk goes from one special byte to the next; what lies between is copied as a run.

#include "text/xmlescape.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "frame/heap.h"
#include "text/ascii.h"
#include "text/sizedstring.h"

namespace qzvest {
namespace {

constexpr uint32_t kMaxPasses = 16;

// Bytes of 0xFF where the block holds something to replace.
QZVEST_INLINE auto SpecialsOf(Bytes16 block)
{
    return (block == '"') | (block == '&') | (block == '\'') | (block == '<') | (block == '>');
}

bool IsSpecial(char byte)
{
    return byte == '"' || byte == '&' || byte == '\'' || byte == '<' || byte == '>';
}

// The first special byte, or end.
const char *NextSpecial(const char *at, const char *end)
{
    while (end - at >= 16) {
        Bytes16 block;
        std::memcpy(&block, at, sizeof block);
        const auto specials = SpecialsOf(block);
        const uint64_t low = WordAt(&specials);
        const uint64_t high = WordAt(reinterpret_cast<const char *>(&specials) + 8);
        if ((low | high) == 0) {
            at += 16;
            continue;
        }
        if constexpr (std::endian::native == std::endian::little)
            return at + (low != 0 ? std::countr_zero(low) : 64 + std::countr_zero(high)) / 8;
        break;
    }
    return std::find_if(at, end, IsSpecial);
}

bool IsReference(std::string_view text)
{
    return text.starts_with("&amp;") || text.starts_with("&lt;") || text.starts_with("&gt;") ||
           text.starts_with("&quot;") || text.starts_with("&apos;");
}

// What stands for the special byte that the text begins with.
std::string_view Replacement(std::string_view text)
{
    switch (text.front()) {
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return IsReference(text) ? "&" : "&amp;";
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

char *EscapeOnce(const char *text, uint32_t *sizeInOut)
{
    SMSSUTF8Str result{nullptr, 0, 0};
    if (SMSSUTF8StrAlloc(&result, *sizeInOut) != nullptr) {
        const char *end = text + std::strlen(text);
        for (const char *at = text;;) {
            const char *special = NextSpecial(at, end);
            PutRun(&result, at, special);
            if (special == end)
                break;
            const auto piece = Replacement({special, static_cast<size_t>(end - special)});
            Put(&result, piece.data(), static_cast<uint32_t>(piece.size()));
            at = special + 1;
        }
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
