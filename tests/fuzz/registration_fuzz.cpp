// The first line is the key, up to a zero byte; the rest is the file.

#include <optional>

#include "config/registration.h"
#include "tests/fuzz/input.h"

namespace {

// The value by the plain rules, on the whole file.
std::optional<std::string> Expected(const std::string &file, const std::string &key)
{
    constexpr size_t kPiece = 8450;
    for (size_t begin = 0; begin < file.size();) {
        const size_t feed = file.find('\n', begin);
        const size_t size = std::min(kPiece, (feed == std::string::npos ? file.size() : feed + 1) - begin);
        const std::string line = file.substr(begin, size).c_str(); // up to a zero byte
        begin += size;
        const size_t start = line.find_first_not_of(" \t");
        const size_t sign = line.find('=');
        if (start == std::string::npos || line[start] == ';' || line[start] == '#' || sign == std::string::npos ||
            line.substr(start, sign - start) != key)
            continue;
        const size_t first = line.find_first_not_of(" \t", sign + 1);
        std::string value = first == std::string::npos ? "" : line.substr(first);
        if (value.ends_with('\n'))
            value.pop_back();
        value.erase(value.find_last_not_of(" \t") + 1);
        return value;
    }
    return std::nullopt;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string content(reinterpret_cast<const char *>(data), size);
    const std::string key = TakeLine(content, size);
    const MemoryFile file(content);

    qzvest::HeapPtr<char> value;
    qzvest::RegistrationFile registration(file.path.c_str());
    (void)registration.Read("another", value);
    value.reset();
    const uint32_t status = registration.Read(key.c_str(), value);
    const std::optional<std::string> expected = Expected(content, key);
    Require(status == (expected ? SM_STATUS_OK : SM_STATUS_NOT_FOUND));
    Require(expected ? *expected == value.get() : !value);
    return 0;
}
