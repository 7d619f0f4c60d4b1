// The first two bytes are the delimiters, the rest is the source; as a multi-string it is closed behind its end.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "config/delimited.h"

namespace {

void Require(bool held)
{
    if (!held)
        __builtin_trap();
}

// The list by the plain rules, which know nothing of buffers.
void CheckItems(const std::string &source, char from, char to)
{
    constexpr char kBlanks[] = " \t\n\r";
    std::string expected, item;
    uint32_t items = 0;
    for (const char c : source + from) {
        if (c != from) {
            item += c;
            continue;
        }
        if (const size_t first = item.find_first_not_of(kBlanks); first != std::string::npos) {
            expected += item.substr(first, item.find_last_not_of(kBlanks) + 1 - first) + to;
            ++items;
        }
        item.clear();
    }
    uint32_t count, size;
    char *list = qzvest::SMUTF8ConvertXSVToYSV(source.c_str(), from, to, &count, &size);
    Require(count == items && size == expected.size() + 1);
    Require(std::memcmp(list, expected.c_str(), size) == 0);
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
