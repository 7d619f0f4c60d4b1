// A file beside the model: its keys, a value, and the file with that value replaced. The input is a key, a line feed
// and the file. Files are in memory only.

#include <qzvest/status.h>

#include <memory>
#include <optional>
#include <vector>

#include "config/propertyscan.h"
#include "tests/fuzz/input.h"

namespace {

// ---- The model: a file as plain text ----

std::vector<std::string> Lines(const std::string &file)
{
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < file.size(); begin += lines.back().size()) {
        const size_t end = std::min(file.find('\n', begin), file.size() - 1);
        lines.push_back(file.substr(begin, std::min(end + 1 - begin, size_t{8449})));
    }
    return lines;
}

std::string Text(const std::string &line)
{
    std::string text = line.c_str();
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

struct Entry {
    std::string key;
    std::string value;
    size_t firstLine;
    size_t endLine;
};

std::vector<Entry> Entries(const std::vector<std::string> &lines)
{
    constexpr char kDelimiters[] = "=: \t\r\n";
    std::vector<Entry> entries;
    for (size_t next = 0; next < lines.size();) {
        Entry entry = {"", "", next, 0};
        std::string text = Text(lines[next++]);
        text.erase(0, text.find_first_not_of("\t\n\r "));
        if (text.size() < 2 || std::strchr(";#!", text[0]) != nullptr || text.substr(0, 2) == "//")
            continue;
        entry.key = text.substr(0, text.find_first_of(kDelimiters));
        if (entry.key.empty())
            continue;
        text.erase(0, entry.key.size());
        text.erase(0, text.find_first_not_of(kDelimiters));
        for (bool more = true; more;) {
            if (!text.empty() && std::strchr("\t\n\r ", text.back()) != nullptr)
                text.pop_back();
            entry.value += text;
            more = text == "\\\\" || (text.size() >= 2 && text.back() == '\\' && text[text.size() - 2] != '\\');
            if (more) {
                entry.value.back() = '\n';
                more = next < lines.size();
            }
            if (more)
                text = Text(lines[next++]);
        }
        entry.endLine = next;
        entries.push_back(entry);
    }
    return entries;
}

std::optional<Entry> Find(const std::vector<std::string> &lines, const std::string &key)
{
    for (const Entry &entry : Entries(lines)) {
        if (key.compare(0, entry.key.size(), entry.key) == 0)
            return entry;
    }
    return std::nullopt;
}

std::string Keys(const std::string &file)
{
    std::string keys;
    for (const Entry &entry : Entries(Lines(file)))
        keys += entry.key + '\0';
    return keys + '\0';
}

std::string Replaced(const std::string &file, const std::string &key, const std::string &value)
{
    const std::vector<std::string> lines = Lines(file);
    const std::optional<Entry> entry = Find(lines, key);
    if (!entry)
        return "";
    std::string result;
    for (size_t i = 0; i < entry->firstLine; ++i)
        result += lines[i];
    result += key + "=" + value + "\n";
    for (size_t i = entry->endLine; i < lines.size(); ++i)
        result += lines[i];
    return result;
}

// ---- The library beside it ----

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

    CheckKeys(file, Keys(content), 0);
    CheckKeys(file, Keys(content), static_cast<uint32_t>(size % 19));
    const auto entry = Find(Lines(content), key);
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
    Require(output.Content() == Replaced(content, key, "new"));
    return 0;
}
