// The first two bytes are the delimiters, the rest is the source; as a multi-string it is closed behind its end.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "config/delimited.h"

namespace {

void Require(bool held)
{
    if (!held)
        __builtin_trap();
}

// Items turned into another list must come back as the same items.
void CheckItems(const char *source, char from, char to)
{
    uint32_t count;
    uint32_t size;
    char *items = qzvest::SMUTF8ConvertXSVToYSV(source, from, '\0', &count, &size);
    Require(items != nullptr && size >= 1 && size <= std::strlen(source) + 2 && items[size - 1] == '\0');
    uint32_t seen = 0;
    for (const char *item = items; *item != '\0'; item += std::strlen(item) + 1)
        ++seen;
    Require(seen == count && (count != 0) == (size != 1));

    uint32_t joinedCount;
    uint32_t joinedSize;
    char *joined = qzvest::SMUTF8ConvertXSVToYSV(items, '\0', from, &joinedCount, &joinedSize);
    Require((joined != nullptr) == (count != 0));
    if (joined != nullptr) {
        Require(joinedCount == count - 1 && joinedSize == size - 1 && std::strlen(joined) == joinedSize - 1);
        uint32_t againCount;
        uint32_t againSize;
        char *again = qzvest::SMUTF8ConvertXSVToYSV(joined, from, '\0', &againCount, &againSize);
        Require(againCount == count && againSize == size && std::memcmp(again, items, size) == 0);
        std::free(again);
    }
    std::free(joined);
    std::free(items);

    char *list = qzvest::SMUTF8ConvertXSVToYSV(source, from, to, &joinedCount, &joinedSize);
    Require(joinedCount == count && joinedSize == size && list[size - 1] == '\0');
    std::free(list);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const size_t length = size - 2;
    auto *source = static_cast<char *>(std::calloc(length + 2, 1));
    if (source == nullptr)
        return 0;
    std::memcpy(source, data + 2, length);
    uint32_t count;
    uint32_t joinedSize;
    char *joined = qzvest::SMUTF8ConvertXSVToYSV(source, '\0', static_cast<char>(data[0]), &count, &joinedSize);
    Require((joined != nullptr) == (*source != '\0'));
    Require(joined == nullptr || (joined[joinedSize - 1] == '\0' && count < joinedSize && joinedSize <= length + 1));
    std::free(joined);
    if (data[0] != 0)
        CheckItems(source, static_cast<char>(data[0]), static_cast<char>(data[1]));
    std::free(source);
    return 0;
}
