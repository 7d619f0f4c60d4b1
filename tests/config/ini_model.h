// What the INI calls do to a file, told once more over its content as one string: a reader, and a writer with all its
// losses. It shares no code with the library, so that tests can hold the two against each other.
#ifndef TESTS_CONFIG_INI_MODEL_H
#define TESTS_CONFIG_INI_MODEL_H

#include <qzvest/status.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace inimodel {

constexpr size_t kMaxPiece = 8449;
constexpr size_t kMaxHeaderName = 255;

// ---- lines ----

inline std::vector<std::string> Lines(const std::string &content)
{
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
    const size_t end = text.find(']');
    if (end == std::string::npos || end - 1 > kMaxHeaderName)
        return LineKind::kMalformed;
    name = text.substr(1, end - 1);
    return LineKind::kHeader;
}

// ---- the reader ----

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

// Every key line of the section, as key and value alternately.
inline Names KeyLines(const std::string &content, const std::string &section)
{
    const std::vector<std::string> lines = Lines(content);
    size_t at = 0;
    Names found = {FindSection(lines, section, at), {}};
    for (; found.status == SM_STATUS_OK && at < lines.size(); ++at) {
        const std::string text = TextBehind(lines[at], " \t");
        if (IsOneOf(lines[at][0], ";#"))
            continue;
        if (!text.empty() && text[0] == '[')
            break;
        const size_t equals = text.find('=');
        if (equals == std::string::npos)
            continue;
        found.names.push_back(text.substr(0, equals));
        found.names.push_back(text.substr(equals + 1, text.find('\n', equals) - equals - 1));
    }
    return found;
}

inline Value Read(const std::string &content, const std::string &section, const std::string &key)
{
    const Names lines = KeyLines(content, section);
    for (size_t i = 0; i < lines.names.size(); i += 2) {
        if (lines.names[i] == key)
            return {SM_STATUS_OK, lines.names[i + 1]};
    }
    return {lines.status == SM_STATUS_OK ? SM_STATUS_INI_NO_KEY : lines.status, ""};
}

inline Names ListKeys(const std::string &content, const std::string &section)
{
    const Names lines = KeyLines(content, section);
    Names keys = {lines.status, {}};
    for (size_t i = 0; i < lines.names.size(); i += 2)
        keys.names.push_back(lines.names[i]);
    if (keys.status == SM_STATUS_OK && keys.names.empty())
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

// ---- the writer ----

constexpr const char *kWriterBlanks = "\t\n\r ";

// From behind the section's header on: output gets the lines in front of the key, the new line, and the rest.
inline void ChangeKey(const std::vector<std::string> &lines, size_t at, const std::string &key, const char *value,
                      std::string &output)
{
    std::string pending; // comments and blank lines that are not written yet
    std::string rest;
    for (; at < lines.size(); ++at) {
        const std::string text = TextBehind(lines[at], kWriterBlanks);
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

// From behind the header, which is dropped, on.
inline void DropBody(const std::vector<std::string> &lines, size_t at, std::string &output)
{
    while (at < lines.size() && !IsOneOf(lines[at][0], "[#"))
        ++at;
    for (; at < lines.size(); ++at)
        output += lines[at];
}

// Sets the key, deletes it where value is NULL, deletes the section where key is NULL. SM_STATUS_INI_NO_SECTION where
// there is nothing to change. output is what the new file holds, for SM_STATUS_OK alone.
inline uint32_t Rewrite(const std::string &content, const char *section, const char *key, const char *value,
                        std::string &output)
{
    const std::vector<std::string> lines = Lines(content);
    size_t at = 0;
    const uint32_t status = FindSection(lines, section, at);
    if (status != SM_STATUS_OK)
        return status;
    output.clear();
    for (size_t i = 0; i + 1 < at + (key != nullptr ? 1 : 0); ++i)
        output += lines[i];
    if (key != nullptr)
        ChangeKey(lines, at, key, value, output);
    else
        DropBody(lines, at, output);
    return SM_STATUS_OK;
}

// A whole write to a file that may be missing; content is changed only for SM_STATUS_OK.
inline uint32_t Write(bool &exists, std::string &content, const char *section, const char *key, const char *value)
{
    std::string output;
    uint32_t status = exists ? Rewrite(content, section, key, value, output) : SM_STATUS_INI_NO_SECTION;
    if (status == SM_STATUS_INI_NO_SECTION) {
        if (value == nullptr)
            return SM_STATUS_INI_BAD_VALUE;
        if (key == nullptr)
            return SM_STATUS_BAD_ARGUMENT;
        output = content + (content.empty() ? "[" : "\n[") + section + "]\n" + key + "=" + value + "\n";
        status = SM_STATUS_OK;
    }
    if (status == SM_STATUS_OK) {
        content = output;
        exists = true;
    }
    return status;
}

} // namespace inimodel

#endif
