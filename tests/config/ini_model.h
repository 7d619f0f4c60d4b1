// What the INI calls do to a file, told once more over its content as one string: a reader, and a writer with all its
// losses. It shares no code with the library, so that tests can hold the two against each other.
#ifndef TESTS_CONFIG_INI_MODEL_H
#define TESTS_CONFIG_INI_MODEL_H

#include <qzvest/status.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace inimodel {

inline std::vector<std::string> Lines(const std::string &content)
{
    constexpr size_t kMaxPiece = 8449;
    std::vector<std::string> lines;
    for (size_t at = 0; at < content.size(); at += lines.back().size())
        lines.push_back(
            content.substr(at, std::min(std::min(content.find('\n', at), content.size()) - at + 1, kMaxPiece)));
    return lines;
}

inline std::string TextBehind(const std::string &line, const char *blanks)
{
    const std::string text = line.c_str(); // up to a zero byte
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

inline bool IsOneOf(char byte, const char *set)
{
    return std::string(set).find(byte) != std::string::npos;
}

enum class LineKind { kOther, kHeader, kMalformed };

inline LineKind KindOf(const std::string &line, std::string &name)
{
    const std::string text = TextBehind(line, " \t");
    if (text.empty() || text[0] != '[')
        return LineKind::kOther;
    name = text.substr(1, text.find(']') - 1);
    return text.find(']') == std::string::npos || name.size() > 255 ? LineKind::kMalformed : LineKind::kHeader;
}

struct Value {
    uint32_t status;
    std::string text;
};

struct Names {
    uint32_t status;
    std::vector<std::string> names;
};

// Where the lines of the section begin.
inline uint32_t FindSection(const std::vector<std::string> &lines, const std::string &section, size_t &at)
{
    for (at = 0; at < lines.size();) {
        std::string name;
        const LineKind kind = KindOf(lines[at++], name);
        if (kind == LineKind::kMalformed)
            return SM_STATUS_INI_BAD_SECTION;
        if (kind == LineKind::kHeader && name == section)
            return SM_STATUS_OK;
    }
    return SM_STATUS_INI_NO_SECTION;
}

// The status is of the section.
inline uint32_t KeyLines(const std::string &content, const std::string &section,
                         std::vector<std::pair<std::string, std::string>> &found)
{
    const std::vector<std::string> lines = Lines(content);
    size_t at = 0;
    const uint32_t status = FindSection(lines, section, at);
    for (; status == SM_STATUS_OK && at < lines.size(); ++at) {
        const std::string text = TextBehind(lines[at], " \t");
        const size_t equals = text.find('=');
        if (text[0] == '[')
            break;
        if (!IsOneOf(lines[at][0], ";#") && equals != std::string::npos)
            found.emplace_back(text.substr(0, equals), text.substr(equals + 1, text.find('\n', equals) - equals - 1));
    }
    return status;
}

inline Value Read(const std::string &content, const std::string &section, const std::string &key)
{
    std::vector<std::pair<std::string, std::string>> lines;
    const uint32_t status = KeyLines(content, section, lines);
    for (const auto &[name, value] : lines)
        if (name == key)
            return {SM_STATUS_OK, value};
    return {status == SM_STATUS_OK ? SM_STATUS_INI_NO_KEY : status, ""};
}

inline Names ListKeys(const std::string &content, const std::string &section)
{
    std::vector<std::pair<std::string, std::string>> lines;
    Names keys = {KeyLines(content, section, lines), {}};
    for (const auto &line : lines)
        keys.names.push_back(line.first);
    if (keys.status == SM_STATUS_OK && lines.empty())
        keys.status = SM_STATUS_INI_NO_KEY;
    return keys;
}

inline Names ListSections(const std::string &content)
{
    Names sections = {SM_STATUS_OK, {}};
    for (const std::string &line : Lines(content)) {
        std::string name;
        const LineKind kind = KindOf(line, name);
        if (kind == LineKind::kMalformed)
            return {SM_STATUS_INI_BAD_SECTION, {}};
        if (kind == LineKind::kHeader)
            sections.names.push_back(name);
    }
    if (sections.names.empty())
        sections.status = SM_STATUS_INI_NO_SECTION;
    return sections;
}

// What a caller's room of so many bytes gets of a list, and the bytes that the whole list has.
inline Value Packed(const Names &list, uint32_t room, uint32_t &need)
{
    Value packed = {list.status, ""};
    need = 1;
    for (const std::string &name : list.names) {
        need += static_cast<uint32_t>(name.size()) + 1;
        if (need <= room && packed.status == SM_STATUS_OK)
            packed.text += name + '\0';
        else
            packed.status = SM_STATUS_BUFFER_TOO_SMALL;
    }
    packed.text += '\0';
    return packed;
}

// From behind the section's header on: output gets the lines in front of the key, the new line, and the rest.
inline void ChangeKey(const std::vector<std::string> &lines, size_t at, const std::string &key, const char *value,
                      std::string &output)
{
    std::string pending; // comments and blank lines that are not written yet
    std::string rest;
    for (; at < lines.size(); ++at) {
        const std::string text = TextBehind(lines[at], "\t\n\r ");
        if (text.empty() || IsOneOf(text[0], ";#")) {
            pending += lines[at];
            continue;
        }
        if (text[0] == '[') {
            rest = pending.empty() ? "" : pending + lines[at]; // a header right behind a key line is lost
            break;
        }
        output += pending;
        pending.clear();
        if (text.substr(0, text.find_first_of("=\n")) == key)
            break;
        output += lines[at];
    }
    if (value != nullptr)
        output += key + "=" + value + "\n";
    output += rest;
    for (++at; at < lines.size(); ++at)
        output += lines[at];
}

// Sets the key, deletes it where value is NULL, deletes the section where key is NULL. SM_STATUS_INI_NO_SECTION where
// there is nothing to change. output is what the new file holds, for SM_STATUS_OK alone.
inline uint32_t Rewrite(const std::string &content, const char *section, const char *key, const char *value,
                        std::string &output)
{
    const std::vector<std::string> lines = Lines(content);
    size_t at = 0;
    if (const uint32_t status = FindSection(lines, section, at); status != SM_STATUS_OK)
        return status;
    output.clear();
    for (size_t i = 0; i + 1 < at + (key != nullptr ? 1 : 0); ++i)
        output += lines[i];
    if (key != nullptr)
        ChangeKey(lines, at, key, value, output);
    else
        for (bool behind = false; at < lines.size(); ++at)
            if (behind = behind || IsOneOf(lines[at][0], "[#"); behind)
                output += lines[at];
    return SM_STATUS_OK;
}

// A whole write to a file that may be missing; content is changed only for SM_STATUS_OK.
inline uint32_t Write(bool &exists, std::string &content, const char *section, const char *key, const char *value)
{
    std::string output;
    const uint32_t status = exists ? Rewrite(content, section, key, value, output) : SM_STATUS_INI_NO_SECTION;
    if (status == SM_STATUS_INI_NO_SECTION) {
        if (value == nullptr)
            return SM_STATUS_INI_BAD_VALUE;
        if (key == nullptr)
            return SM_STATUS_BAD_ARGUMENT;
        output = content + (content.empty() ? "[" : "\n[") + section + "]\n" + key + "=" + value + "\n";
    } else if (status != SM_STATUS_OK) {
        return status;
    }
    content = output;
    exists = true;
    return SM_STATUS_OK;
}

} // namespace inimodel

#endif
