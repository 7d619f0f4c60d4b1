#include "config/propertyscan.h"

#include <cstring>
#include <string_view>

#include <qzvest/status.h>

#include "config/linereader.h"
#include "config/rangecopy.h"
#include "os/file.h"
#include "text/utf8.h"

namespace qzvest {
namespace {

constexpr bool IsDelimiter(char byte)
{
    return byte == '=' || byte == ':' || IsTextSpace(byte);
}

template <bool (*kIs)(char)>
void SkipRun(std::string_view &text)
{
    while (!text.empty() && kIs(text.front()))
        text.remove_prefix(1);
}

// A line as text ends at its first zero byte, even if a line feed is behind that.
std::string_view TextOf(const Line &line)
{
    std::string_view text(line.bytes, strnlen(line.bytes, line.size));
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    return text;
}

// Just one byte: it is for the carriage return of files with CRLF.
std::string_view ValueOf(std::string_view text)
{
    if (!text.empty() && IsTextSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

// A second backslash takes the first its meaning, but not if there is nothing else.
bool Continues(std::string_view value)
{
    const size_t size = value.size();
    return size >= 2 && value[size - 1] == '\\' && (size == 2 || value[size - 2] != '\\');
}

bool IsComment(std::string_view text)
{
    return text.front() == ';' || text.front() == '#' || text.front() == '!' || text.starts_with("//");
}

// The first line of an entry, which the value may go on behind.
struct Entry {
    std::string_view key;
    std::string_view value;
};

// False for a line without a key.
bool ParseEntry(const Line &line, Entry &entry)
{
    std::string_view text = TextOf(line);
    SkipRun<IsTextSpace>(text);
    if (text.size() < 2 || IsComment(text))
        return false;
    const char *begin = text.data();
    while (!text.empty() && !IsDelimiter(text.front()))
        text.remove_prefix(1);
    entry.key = {begin, text.data()};
    SkipRun<IsDelimiter>(text);
    entry.value = ValueOf(text);
    return !entry.key.empty();
}

bool NextEntry(LineReader &lines, Entry &entry)
{
    for (Line line; lines.Next(line);) {
        if (ParseEntry(line, entry))
            return true;
    }
    return false;
}

// Hands the value on in pieces, and leaves the reader behind its last line.
template <typename Take>
void ReadValue(LineReader &lines, std::string_view value, Take take)
{
    while (Continues(value)) {
        value.remove_suffix(1);
        take(value);
        take(std::string_view("\n"));
        Line line;
        if (!lines.Next(line))
            return;
        value = ValueOf(TextOf(line));
    }
    take(value);
}

void SkipValue(LineReader &lines, std::string_view value)
{
    ReadValue(lines, value, [](std::string_view) {});
}

// Tells most lines of other keys without taking them apart: another first byte, and nothing that goes on.
bool IsElsewhere(const Line &line, char first)
{
    std::string_view text = TextOf(line);
    SkipRun<IsTextSpace>(text);
    return text.empty() || (text.front() != first && !ValueOf(text).ends_with('\\'));
}

// The key of the file may be the beginning of the one that is asked for. start: of the line, in the file.
bool FindEntry(LineReader &lines, const char *key, Entry &entry, int64_t &start)
{
    for (Line line; start = lines.Place(), lines.Next(line);) {
        if (IsElsewhere(line, *key) || !ParseEntry(line, entry))
            continue;
        if (std::strncmp(key, entry.key.data(), entry.key.size()) == 0)
            return true;
        SkipValue(lines, entry.value);
    }
    return false;
}

// A text in the making, which is counted to its end when the room is not enough.
struct CountedText {
    char *text;
    size_t size; // bytes at text
    size_t used = 0;

    void Add(std::string_view piece)
    {
        if (text != nullptr && used + piece.size() <= size)
            std::memcpy(text + used, piece.data(), piece.size());
        used += piece.size();
    }

    uint32_t Close(uint32_t *need)
    {
        constexpr char kEnd = '\0';
        Add({&kEnd, 1});
        if (used > UINT32_MAX)
            return SM_STATUS_NO_MEMORY;
        *need = static_cast<uint32_t>(used);
        return used > size ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_OK;
    }
};

} // namespace

uint32_t PropertyFind(int descriptor, const char *key, char *text, uint32_t *size)
{
    LineReader lines;
    if (!lines.Open(descriptor))
        return SM_STATUS_NO_MEMORY;
    Entry entry;
    int64_t start;
    if (!FindEntry(lines, key, entry, start))
        return lines.Failed() ? SM_STATUS_FAILED : SM_STATUS_INI_NO_KEY;
    CountedText value = {text, text != nullptr ? *size : 0};
    ReadValue(lines, entry.value, [&value](std::string_view piece) { value.Add(piece); });
    return lines.Failed() ? SM_STATUS_FAILED : value.Close(size); // half a value is none
}

uint32_t PropertyList(int descriptor, char *keys, uint32_t *size)
{
    LineReader lines;
    if (!lines.Open(descriptor))
        return SM_STATUS_NO_MEMORY;
    CountedText list = {keys, keys != nullptr ? *size : 0};
    size_t given = 0; // bytes of the keys that fit, with the end of the list behind them
    for (Entry entry; NextEntry(lines, entry); SkipValue(lines, entry.value)) {
        const size_t need = entry.key.size() + 1;
        if (given == list.used && given + need < list.size) {
            std::memcpy(keys + given, entry.key.data(), need - 1);
            keys[given + need - 1] = '\0';
            given += need;
        }
        list.used += need;
    }
    if (lines.Failed())
        return SM_STATUS_FAILED;
    const bool empty = list.used == 0;
    if (!empty && given < list.size)
        keys[given] = '\0';
    const uint32_t status = list.Close(size);
    return empty ? SM_STATUS_INI_NO_KEY : status;
}

uint32_t PropertyReplace(int input, int output, const char *key, const char *entry, uint32_t entrySize)
{
    LineReader lines;
    RangeCopier copier = {input, output, {}};
    if (!copier.Open() || !lines.Open(input))
        return SM_STATUS_NO_MEMORY;
    Entry found;
    int64_t start;
    if (FindEntry(lines, key, found, start))
        SkipValue(lines, found.value);
    else if (!lines.Failed())
        return SM_STATUS_OK;
    if (lines.Failed()) // what is there would be lost
        return SM_STATUS_FAILED;
    if (copier.Copy(0, start) != CopyResult::kDone)
        return SM_STATUS_FAILED;
    if (!WriteFully(output, entry, entrySize))
        return SM_STATUS_LIMIT_REACHED;
    switch (copier.Copy(lines.Place(), kToEnd)) {
    case CopyResult::kDone:
        return SM_STATUS_OK;
    case CopyResult::kReadFailed:
        return SM_STATUS_FAILED;
    default:
        return SM_STATUS_LIMIT_REACHED;
    }
}

} // namespace qzvest
