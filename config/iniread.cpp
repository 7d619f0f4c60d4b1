// The scan of INI files: sections, keys, values and lists of them.

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "config/delimited.h"
#include "config/ini.h"
#include "config/inicore.h"
#include "config/product.h"
#include "ipc/filelock.h"
#include "os/descriptor.h"
#include "os/file.h"

namespace qzvest {
namespace {

constexpr uint32_t kMostHeapText = 32768;

// A stretch of a line.
struct Text {
    const char *bytes;
    uint32_t size;
};

// The line as text: without its line feed, and up to its first zero byte.
Text TextOf(const Line &line)
{
    uint32_t size = line.size;
    if (size > 0 && line.bytes[size - 1] == '\n')
        --size;
    return {line.bytes, static_cast<uint32_t>(strnlen(line.bytes, size))};
}

Text SkipBlanks(Text text)
{
    while (text.size > 0 && IsBlank(*text.bytes)) {
        ++text.bytes;
        --text.size;
    }
    return text;
}

bool Equals(Text text, const char *wanted)
{
    return std::strlen(wanted) == text.size && std::memcmp(text.bytes, wanted, text.size) == 0;
}

// What stands before the first byte of this kind; false if there is none.
bool UpTo(Text text, char end, Text &before)
{
    const void *found = text.size != 0 ? std::memchr(text.bytes, end, text.size) : nullptr;
    if (found == nullptr)
        return false;
    before = {text.bytes, static_cast<uint32_t>(static_cast<const char *>(found) - text.bytes)};
    return true;
}

enum class Header { kNone, kGood, kMalformed };

Header ReadHeader(const Line &line, Text &name)
{
    Text text = SkipBlanks({line.bytes, line.size});
    if (text.size == 0 || *text.bytes != '[')
        return Header::kNone;
    text = SkipBlanks(TextOf(line));
    if (!UpTo({text.bytes + 1, text.size - 1}, ']', name) || name.size >= kIniNameRoom)
        return Header::kMalformed;
    return Header::kGood;
}

// In the first column alone.
bool IsComment(const Line &line)
{
    return line.bytes[0] == ';' || line.bytes[0] == '#';
}

// A key line as the reader of a section sees it: blanks in front of the equals sign belong to the key.
bool ReadKey(const Line &line, Text &key)
{
    return !IsComment(line) && UpTo(SkipBlanks(TextOf(line)), '=', key);
}

// Texts one behind the other, each with its terminator, and one terminator more. Those that find no room are counted.
class MultiString {
public:
    MultiString(char *dest, uint32_t size) : dest_(dest), room_(size)
    {
        dest_[0] = '\0';
        dest_[1] = '\0';
    }

    void Add(Text text)
    {
        if (used_ + text.size + 2 <= room_ && !full_) {
            std::memcpy(dest_ + used_, text.bytes, text.size);
            dest_[used_ + text.size] = '\0';
            dest_[used_ + text.size + 1] = '\0';
        } else {
            full_ = true;
        }
        used_ += uint64_t{text.size} + 1;
    }

    // Status and size of the whole list; none is the status of a list without texts.
    uint32_t Finish(uint32_t none, uint32_t *size) const
    {
        if (used_ == 0)
            return none;
        *size = static_cast<uint32_t>(std::min<uint64_t>(used_ + 1, UINT32_MAX));
        return full_ ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_OK;
    }

private:
    char *dest_;
    uint64_t used_ = 0; // without the last terminator
    uint32_t room_;
    bool full_ = false;
};

uint32_t ListSections(LineReader &reader, char *dest, uint32_t *destSize)
{
    MultiString list(dest, *destSize);
    Line line;
    Text name = {nullptr, 0};
    while (reader.NextWith('[', line)) {
        if (ReadHeader(line, name) != Header::kGood) // a line found by its bracket is a header
            return SM_STATUS_INI_BAD_SECTION;
        list.Add(name);
    }
    return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : list.Finish(SM_STATUS_INI_NO_SECTION, destSize);
}

uint32_t ListKeys(LineReader &reader, const char *section, char *dest, uint32_t *destSize)
{
    MultiString list(dest, *destSize);
    int64_t lineStart;
    if (const uint32_t status = FindSection(reader, section, lineStart); status != SM_STATUS_OK)
        return status;
    Line line;
    Text text = {nullptr, 0};
    while (reader.Next(line) && ReadHeader(line, text) == Header::kNone)
        if (ReadKey(line, text))
            list.Add(text);
    return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : list.Finish(SM_STATUS_INI_NO_KEY, destSize);
}

uint32_t FindValue(LineReader &reader, const char *section, const char *key, Text &value)
{
    int64_t lineStart;
    if (const uint32_t status = FindSection(reader, section, lineStart); status != SM_STATUS_OK)
        return status;
    // A key ends at the first equals sign, so that one that holds such a sign is in no file.
    const size_t keySize = std::strchr(key, '=') == nullptr ? std::strlen(key) : SIZE_MAX;
    Line line;
    while (reader.Next(line)) {
        const Text text = SkipBlanks({line.bytes, line.size});
        if (text.size > 0 && *text.bytes == '[')
            break;
        if (text.size <= keySize || text.bytes[keySize] != '=' || std::memcmp(text.bytes, key, keySize) != 0 ||
            IsComment(line))
            continue;
        const Text whole = TextOf(line);
        value.bytes = text.bytes + keySize + 1;
        value.size = static_cast<uint32_t>(whole.bytes + whole.size - value.bytes);
        return SM_STATUS_OK;
    }
    return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : SM_STATUS_INI_NO_KEY;
}

// The default in place of a value that is not there; without one, the empty text.
bool ApplyDefault(char *dest, uint32_t *destSize, const char *defaultText, uint32_t defaultSize)
{
    if (defaultText == nullptr || defaultSize == 0) {
        if (*destSize != 0)
            *dest = '\0';
        *destSize = 0;
        return false;
    }
    *destSize = std::min(*destSize, defaultSize);
    std::memmove(dest, defaultText, *destSize);
    if (*destSize != 0)
        dest[*destSize - 1] = '\0';
    return true;
}

} // namespace

uint32_t FindSection(LineReader &reader, const char *section, int64_t &lineStart)
{
    Line line;
    Text name = {nullptr, 0};
    while (reader.NextWith('[', line)) {
        lineStart = reader.Place() - line.size;
        if (ReadHeader(line, name) != Header::kGood) // a line found by its bracket is a header
            return SM_STATUS_INI_BAD_SECTION;
        if (Equals(name, section))
            return SM_STATUS_OK;
    }
    return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : SM_STATUS_INI_NO_SECTION;
}

uint32_t INIReadFile(int descriptor, const char *section, const char *key, char *dest, uint32_t *destSize)
{
    const bool isList = section == nullptr || key == nullptr;
    if (isList && *destSize < 2)
        return SM_STATUS_BAD_ARGUMENT;
    LineReader reader;
    if (!reader.Open(descriptor))
        return isList ? SM_STATUS_NO_MEMORY : SM_STATUS_FAILED;
    if (section == nullptr)
        return ListSections(reader, dest, destSize);
    if (key == nullptr)
        return ListKeys(reader, section, dest, destSize);
    Text value;
    if (const uint32_t status = FindValue(reader, section, key, value); status != SM_STATUS_OK)
        return status;
    const uint32_t room = *destSize;
    *destSize = value.size + 1;
    if (room < *destSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memcpy(dest, value.bytes, value.size);
    dest[value.size] = '\0';
    return SM_STATUS_OK;
}

bool RollBack(const char *path)
{
    const HeapPtr<char> backup = BackupPathOf(path);
    if (!backup)
        return false;
    if (access(backup.get(), F_OK) == 0)
        (void)std::rename(backup.get(), path); // two readers may both see it; the second finds it gone
    return true;
}

IniReadResult INIRead(const char *section, const char *key, char *dest, uint32_t *destSize, const char *defaultText,
                      uint32_t defaultSize, const char *path, int16_t wait)
{
    const FileLockGuard lock(path, kFileLockReader, wait);
    if (lock.Status() != SM_STATUS_OK)
        return {lock.Status(), false};
    if (!RollBack(path))
        return {SM_STATUS_NO_MEMORY, false};
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file)
        return {SM_STATUS_INI_OPEN_FAILED, false};
    const uint32_t status = INIReadFile(file.Get(), section, key, dest, destSize);
    if (status == SM_STATUS_OK || status == SM_STATUS_BUFFER_TOO_SMALL || section == nullptr || key == nullptr)
        return {status, false};
    return {status, ApplyDefault(dest, destSize, defaultText, defaultSize)};
}

uint32_t INIPathOf(const char *fileName, char (&path)[kIniPathRoom])
{
    constexpr char kDirectory[] = "/ini/";
    if (fileName == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    uint32_t size = sizeof path;
    if (SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_INI, path, &size) != SM_STATUS_OK || size == 0)
        return SM_STATUS_FAILED;
    const size_t length = std::strlen(fileName);
    if (size + sizeof kDirectory + length > sizeof path)
        return SM_STATUS_BUFFER_TOO_SMALL;
    char *end = path + size - 1;
    std::memcpy(end, kDirectory, sizeof kDirectory - 1);
    std::memcpy(end + sizeof kDirectory - 1, fileName, length + 1);
    return SM_STATUS_OK;
}

char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultText, uint32_t *outSize,
                                   const char *pathFileName, int16_t waitForLock)
{
    uint32_t ignored;
    uint32_t &size = outSize != nullptr ? *outSize : ignored;
    size = 0;
    if (pathFileName == nullptr || *pathFileName == '\0')
        return nullptr;
    const auto defaultSize = defaultText != nullptr ? static_cast<uint32_t>(std::strlen(defaultText) + 1) : 0;
    uint32_t room = kIniValueRoom;
    HeapPtr<char> text = HeapRoom<char>(room);
    while (text) {
        uint32_t got = room;
        const IniReadResult read =
            INIRead(section, key, text.get(), &got, defaultText, defaultSize, pathFileName, waitForLock);
        if (read.status == SM_STATUS_OK || (read.defaulted && got == defaultSize)) {
            size = got;
            return text.release();
        }
        if (read.status != SM_STATUS_BUFFER_TOO_SMALL || got > kMostHeapText || got <= room)
            return nullptr;
        room = got;
        text = HeapRoom<char>(room); // what the file holds may have grown since
    }
    return nullptr;
}

uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMINIEnumEntry *table, int32_t tableCount,
                               uint16_t multiple, const char *pathFileName, int16_t waitForLock)
{
    if (section == nullptr || key == nullptr || table == nullptr || pathFileName == nullptr || tableCount < 2)
        return SM_ENUM_UNREADABLE;
    const HeapPtr<char> text(SMReadINISectionKeyUTF8Value(section, key, nullptr, nullptr, pathFileName, waitForLock));
    if (!text)
        return table[1].value;
    const SMINIEnumEntry *const end = table + tableCount;
    const auto find = [=](const char *word) {
        return std::find_if(table + 1, end,
                            [word](const SMINIEnumEntry &row) { return strcasecmp(row.name, word) == 0; });
    };
    if (multiple != 1) {
        const SMINIEnumEntry *row = find(text.get());
        return row != end ? row->value : table[0].value;
    }
    const HeapPtr<char> words(SMUTF8ConvertXSVToYSV(text.get(), ',', '\0', nullptr, nullptr));
    if (!words)
        return SM_ENUM_UNREADABLE;
    uint32_t value = 0;
    for (const char *word = words.get(); *word != '\0'; word += std::strlen(word) + 1)
        if (const SMINIEnumEntry *row = find(word); row != end)
            value |= row->value;
    return value;
}

} // namespace qzvest
