// Property files once more, as plain text: what the library is held against.
#ifndef TESTS_CONFIG_PROPERTY_MODEL_H
#define TESTS_CONFIG_PROPERTY_MODEL_H

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace propertymodel {

inline std::vector<std::string> Lines(const std::string &file)
{
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < file.size(); begin += lines.back().size()) {
        const size_t end = std::min(file.find('\n', begin), file.size() - 1);
        lines.push_back(file.substr(begin, std::min(end + 1 - begin, size_t{8449})));
    }
    return lines;
}

inline std::string Text(const std::string &line)
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

inline std::vector<Entry> Entries(const std::vector<std::string> &lines)
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

inline std::optional<Entry> Find(const std::vector<std::string> &lines, const std::string &key)
{
    for (const Entry &entry : Entries(lines)) {
        if (key.compare(0, entry.key.size(), entry.key) == 0)
            return entry;
    }
    return std::nullopt;
}

inline std::string Keys(const std::string &file)
{
    std::string keys;
    for (const Entry &entry : Entries(Lines(file)))
        keys += entry.key + '\0';
    return keys + '\0';
}

inline std::string Replaced(const std::string &file, const std::string &key, const std::string &value)
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

} // namespace propertymodel

#endif
