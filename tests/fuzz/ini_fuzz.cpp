// The INI reader over any file, against its model. Input: a byte that says what is asked, one for the size of the
// room, a line with the section, a line with the key, and the file.

#include "config/inicore.h"
#include "tests/config/ini_model.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    std::string content(reinterpret_cast<const char *>(data) + 2, size - 2);
    const std::string section = TakeLine(content, 9000), key = TakeLine(content, 9000);
    const bool listsSections = data[0] % 4 == 0, listsKeys = data[0] % 4 == 1;
    const uint32_t room = data[1] < 128 ? data[1] : 9000;

    const MemoryFile file(content);
    std::vector<char> dest(room);
    uint32_t destSize = room;
    const uint32_t status =
        qzvest::INIReadFile(file.descriptor, listsSections ? nullptr : section.c_str(),
                            listsSections || listsKeys ? nullptr : key.c_str(), dest.data(), &destSize);

    if (listsSections || listsKeys) {
        if (room < 2) {
            Require(status == SM_STATUS_BAD_ARGUMENT);
            return 0;
        }
        uint32_t need = 0;
        const inimodel::Value list = inimodel::Packed(
            listsSections ? inimodel::ListSections(content) : inimodel::ListKeys(content, section), room, need);
        Require(status == list.status);
        if (status == SM_STATUS_OK || status == SM_STATUS_BUFFER_TOO_SMALL)
            Require(destSize == need && std::string(dest.data(), list.text.size()) == list.text);
        return 0;
    }
    const inimodel::Value value = inimodel::Read(content, section, key);
    const auto need = static_cast<uint32_t>(value.text.size() + 1);
    Require(status == (value.status == SM_STATUS_OK && need > room ? SM_STATUS_BUFFER_TOO_SMALL : value.status));
    Require(value.status != SM_STATUS_OK || destSize == need);
    Require(status != SM_STATUS_OK || value.text == dest.data());
    return 0;
}
