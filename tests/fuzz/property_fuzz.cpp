// A file beside the model: its keys, a value, and the file with that value replaced. The input is a key, a line feed
// and the file. Files are in memory only.

#include <qzvest/status.h>

#include <memory>

#include "config/propertyscan.h"
#include "tests/config/property_model.h"
#include "tests/fuzz/input.h"

namespace {

void CheckKeys(const MemoryFile &file, const std::string &expected, uint32_t cut)
{
    const auto need = static_cast<uint32_t>(expected.size());
    const uint32_t room = need - std::min(need, cut);
    const std::unique_ptr<char[]> keys(new char[room]);
    uint32_t size = room;
    const uint32_t status = qzvest::PropertyList(file.Rewound(), keys.get(), &size);
    Require(size == need);
    Require(status == (need == 1 ? SM_STATUS_INI_NO_KEY : room == need ? SM_STATUS_OK : SM_STATUS_BUFFER_TOO_SMALL));
    if (need == 1 || room == 0)
        return;
    uint32_t used = 0; // whole keys, and the end of the list
    while (used < room && keys[used] != '\0')
        used += static_cast<uint32_t>(std::strlen(&keys[used])) + 1;
    Require(used < room && std::memcmp(keys.get(), expected.data(), used) == 0);
    Require(room < need || used == need - 1);
}

void CheckValue(const MemoryFile &file, const std::string &key, const std::string &expected)
{
    const auto need = static_cast<uint32_t>(expected.size() + 1);
    const std::unique_ptr<char[]> text(new char[need]);
    for (const uint32_t room : {0u, need - 1, need}) {
        uint32_t size = room;
        const uint32_t status =
            qzvest::PropertyFind(file.Rewound(), key.c_str(), room != 0 ? text.get() : nullptr, &size);
        Require(status == (room < need ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_OK) && size == need);
    }
    Require(std::memcmp(text.get(), expected.c_str(), need) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string content(reinterpret_cast<const char *>(data), size);
    const std::string key = TakeLine(content, size);
    const MemoryFile file(content);

    CheckKeys(file, propertymodel::Keys(content), 0);
    CheckKeys(file, propertymodel::Keys(content), static_cast<uint32_t>(size % 19));
    const auto entry = propertymodel::Find(propertymodel::Lines(content), key);
    uint32_t need = 77;
    if (entry)
        CheckValue(file, key, entry->value);
    else
        Require(qzvest::PropertyFind(file.Rewound(), key.c_str(), nullptr, &need) == SM_STATUS_INI_NO_KEY &&
                need == 77);

    const MemoryFile output("");
    const std::string line = key + "=new\n";
    Require(qzvest::PropertyReplace(file.Rewound(), output.descriptor, key.c_str(), line.data(),
                                    static_cast<uint32_t>(line.size())) == SM_STATUS_OK);
    Require(output.Content() == propertymodel::Replaced(content, key, "new"));
    return 0;
}
