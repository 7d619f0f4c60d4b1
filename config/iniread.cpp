// The scan of INI files: sections, keys, values and lists of them.

#include <algorithm>
#include <cstring>
#include <string_view>

#include "config/delimited.h"
#include "config/ini.h"
#include "config/inicore.h"
#include "config/product.h"
#include "ipc/filelock.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "values/parameter.h"

namespace qzvest {
namespace {

constexpr uint32_t kMostHeapText = 32768;

// The line as text: without its line feed, and up to its first zero byte.
std::string_view TextOf(const Line &line)
{
    uint32_t size = line.size;
    if (size > 0 && line.bytes[size - 1] == '\n')
        --size;
    return {line.bytes, strnlen(line.bytes, size)};
}

// What stands before the first byte of this kind; false if there is none.
bool UpTo(std::string_view text, char end, std::string_view &before)
{
    const size_t place = text.find(end);
    if (place == std::string_view::npos)
        return false;
    before = {text.data(), place};
    return true;
}

enum class Header { kNone, kGood, kMalformed };

Header ReadHeader(const Line &line, std::string_view &name)
{
    if (!SkipBlanks({line.bytes, line.size}).starts_with('['))
        return Header::kNone;
    std::string_view text = SkipBlanks(TextOf(line));
    text.remove_prefix(1);
    if (!UpTo(text, ']', name) || name.size() >= kININameRoom)
        return Header::kMalformed;
    return Header::kGood;
}

// In the first column alone.
bool IsComment(const Line &line)
{
    return line.bytes[0] == ';' || line.bytes[0] == '#';
}

// A key line as the reader of a section sees it: blanks in front of the equals sign belong to the key.
bool ReadKey(const Line &line, std::string_view &key)
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

    void Add(std::string_view text)
    {
        if (used_ + text.size() + 2 <= room_ && !full_) {
            char *end = std::copy(text.begin(), text.end(), dest_ + used_);
            end[0] = '\0';
            end[1] = '\0';
        } else {
            full_ = true;
        }
        used_ += text.size() + 1;
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
    std::string_view name;
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
    std::string_view text;
    while (reader.Next(line) && ReadHeader(line, text) == Header::kNone)
        if (ReadKey(line, text))
            list.Add(text);
    return reader.Failed() ? SM_STATUS_INI_BAD_SECTION : list.Finish(SM_STATUS_INI_NO_KEY, destSize);
}

uint32_t FindValue(LineReader &reader, const char *section, const char *key, std::string_view &value)
{
    int64_t lineStart;
    if (const uint32_t status = FindSection(reader, section, lineStart); status != SM_STATUS_OK)
        return status;
    // A key ends at the first equals sign, so that one that holds such a sign is in no file.
    const size_t keySize = std::strchr(key, '=') == nullptr ? std::strlen(key) : SIZE_MAX;
    Line line;
    while (reader.Next(line)) {
        const std::string_view text = SkipBlanks({line.bytes, line.size});
        if (text.starts_with('['))
            break;
        if (text.size() <= keySize || text[keySize] != '=' || std::memcmp(text.data(), key, keySize) != 0 ||
            IsComment(line))
            continue;
        value = SkipBlanks(TextOf(line));
        value.remove_prefix(keySize + 1);
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
    std::string_view name;
    while (reader.NextWith('[', line)) {
        lineStart = reader.Place() - line.size;
        if (ReadHeader(line, name) != Header::kGood) // a line found by its bracket is a header
            return SM_STATUS_INI_BAD_SECTION;
        if (name == section)
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
    std::string_view value;
    if (const uint32_t status = FindValue(reader, section, key, value); status != SM_STATUS_OK)
        return status;
    const uint32_t room = *destSize;
    *destSize = static_cast<uint32_t>(value.size() + 1);
    if (room < *destSize)
        return SM_STATUS_BUFFER_TOO_SMALL;
    *std::copy(value.begin(), value.end(), dest) = '\0';
    return SM_STATUS_OK;
}

INIReadResult INIRead(const char *section, const char *key, char *dest, uint32_t *destSize, const char *defaultText,
                      uint32_t defaultSize, const char *path, int16_t wait)
{
    const FileLockGuard lock(path, kFileLockReader, wait);
    if (lock.Status() != SM_STATUS_OK)
        return {lock.Status(), false};
    if (!RollBack(path))
        return {SM_STATUS_NO_MEMORY, false};
    const Descriptor file = OpenToRead(path);
    if (!file)
        return {SM_STATUS_INI_OPEN_FAILED, false};
    const uint32_t status = INIReadFile(file.Get(), section, key, dest, destSize);
    if (status == SM_STATUS_OK || status == SM_STATUS_BUFFER_TOO_SMALL || section == nullptr || key == nullptr)
        return {status, false};
    return {status, ApplyDefault(dest, destSize, defaultText, defaultSize)};
}

uint32_t INIPathOf(const char *fileName, char (&path)[kINIPathRoom])
{
    constexpr char kDirectory[] = "/ini/";
    if (fileName == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    uint32_t size = sizeof path;
    if (SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_INI, path, &size) != SM_STATUS_OK || size == 0)
        return SM_STATUS_FAILED;
    const size_t length = std::strlen(fileName);
    if (size + sizeof kDirectory + length > sizeof path) // two terminators: a byte more than it takes, and settled
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
    uint32_t room = kINIValueRoom;
    HeapPtr<char> text = HeapRoom<char>(room);
    while (text) {
        uint32_t got = room;
        const INIReadResult read =
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
    if (multiple != 1)
        return EnumValueOf(text.get(), table, tableCount);
    const HeapPtr<char> words(SMUTF8ConvertXSVToYSV(text.get(), ',', '\0', nullptr, nullptr));
    return words ? EnumMaskOf(words.get(), table, tableCount) : SM_ENUM_UNREADABLE;
}

} // namespace qzvest
