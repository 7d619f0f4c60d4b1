#include "config/delimited.h"

#include <cstring>

#include "frame/heap.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

// What a conversion tells besides its text.
struct Extent {
    uint32_t count;
    uint32_t size;
};

// The closing NUL comes along uncounted: it keeps the result a multi-string when the delimiter is NUL as well.
char *JoinTexts(const char *source, char delimiter, Extent *extent)
{
    size_t size = 0;
    uint32_t texts = 0;
    for (; source[size] != '\0'; ++texts)
        size += std::strlen(source + size) + 1;
    if (texts == 0 || size > UINT32_MAX)
        return nullptr;
    HeapPtr<char> result(HeapRoom<char>(size + 1));
    if (!result)
        return nullptr;
    std::memcpy(result.get(), source, size + 1);
    char *const last = result.get() + size - 1;
    for (char *at = result.get() + std::strlen(result.get()); at != last; at += std::strlen(at))
        *at++ = delimiter;
    *extent = {texts - 1, static_cast<uint32_t>(size)};
    return result.release();
}

// Works on a copy in the result's own block: what an item takes there, its delimiter included, never reaches beyond
// what has been read.
char *SplitItems(const char *source, char from, char to, Extent *extent)
{
    const size_t length = std::strlen(source);
    if (length > UINT32_MAX - 2)
        return nullptr;
    HeapPtr<char> result(HeapRoom<char>(length + 2));
    if (!result)
        return nullptr;
    std::memcpy(result.get(), source, length + 1);
    char *write = result.get();
    char *const sourceEnd = result.get() + length;
    uint32_t items = 0;
    for (char *read = result.get(); read <= sourceEnd;) {
        char *const end = strchrnul(read, from);
        *end = '\0';
        const char *const item = SMUTF8rtrim(SMUTF8ltrim(read));
        read = end + 1;
        const size_t itemLength = std::strlen(item);
        if (itemLength == 0)
            continue;
        std::memmove(write, item, itemLength);
        write += itemLength;
        *write++ = to;
        ++items;
    }
    *write++ = '\0';
    *extent = {items, static_cast<uint32_t>(write - result.get())};
    return result.release();
}

} // namespace

char *SMUTF8ConvertXSVToYSV(const char *source, char fromDelimiter, char toDelimiter, uint32_t *count, uint32_t *size)
{
    Extent extent = {0, 0};
    char *result = nullptr;
    if (source != nullptr)
        result = fromDelimiter == '\0' ? JoinTexts(source, toDelimiter, &extent)
                                       : SplitItems(source, fromDelimiter, toDelimiter, &extent);
    if (count != nullptr)
        *count = extent.count;
    if (size != nullptr)
        *size = extent.size;
    return result;
}

} // namespace qzvest
