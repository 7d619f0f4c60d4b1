// The INI writer over any file, against its model. Input: a byte that says what is changed, a line each with the
// section, the key and the value, and the file.

#include "config/inicore.h"
#include "tests/config/ini_model.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    std::string content(reinterpret_cast<const char *>(data) + 1, size - 1);
    const std::string section = TakeLine(content, 255), key = TakeLine(content, 255), text = TakeLine(content, 8192);
    const char *const keyOrNull = data[0] % 4 == 0 ? nullptr : key.c_str();
    const char *const value = data[0] % 4 < 2 ? nullptr : text.c_str();

    const MemoryFile input(content), output("");
    const uint32_t status = qzvest::INIRewrite(input.descriptor, output.descriptor, section.c_str(), keyOrNull, value);
    std::string expected;
    Require(status == inimodel::Rewrite(content, section.c_str(), keyOrNull, value, expected));
    Require(status != SM_STATUS_OK || output.Content() == expected);
    Require(input.Content() == content);
    return 0;
}
