#include "config/property.h"

#include <unistd.h>

#include <cstring>

#include "config/propertyscan.h"
#include "ipc/filelock.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "text/utf8.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

constexpr mode_t kDefaultMode = 0600; // of a file that goes meanwhile
constexpr mode_t kOwnerBits = 0700;

// A value that is longer than most is read once more, into what it needs.
uint32_t ReadValue(int descriptor, const char *key, void *dest, uint32_t *destSize, uint32_t typeAndFormat)
{
    uint32_t size = 1024;
    HeapPtr<char> text = HeapRoom<char>(size);
    if (!text)
        return SM_STATUS_NO_MEMORY;
    uint32_t status = PropertyFind(descriptor, key, text.get(), &size);
    if (status == SM_STATUS_BUFFER_TOO_SMALL) {
        if (lseek(descriptor, 0, SEEK_SET) != 0)
            return SM_STATUS_FAILED;
        text = HeapRoom<char>(size);
        if (!text)
            return SM_STATUS_NO_MEMORY;
        status = PropertyFind(descriptor, key, text.get(), &size);
    }
    return status == SM_STATUS_OK ? SMXLTUTF8ToTypeValue(text.get(), dest, destSize, typeAndFormat) : status;
}

uint32_t ReadOrList(const char *path, const char *key, void *dest, uint32_t *destSize, uint32_t typeAndFormat)
{
    const Descriptor file = OpenToRead(path);
    if (!file)
        return SM_STATUS_INI_OPEN_FAILED;
    if (key != nullptr)
        return ReadValue(file.Get(), key, dest, destSize, typeAndFormat);
    if (typeAndFormat != SMXLT_TYPE_UTF8)
        return SM_STATUS_OK;
    return PropertyList(file.Get(), static_cast<char *>(dest), destSize);
}

// For the temporary file. A path without a directory gets it in the root directory.
HeapPtr<char> DirectoryOf(const char *path)
{
    const char *slash = std::strrchr(path, '/');
    return UTF8Copy({path, slash != nullptr ? static_cast<size_t>(slash - path) : 0});
}

struct Value {
    const void *data;
    uint32_t size;
    uint32_t typeAndFormat;
};

// The line of an entry: the key in full, and the text of the value.
uint32_t MakeEntry(const char *key, const Value &value, HeapPtr<char> &entry, uint32_t &entrySize)
{
    uint32_t size = 0;
    uint32_t status = SMXLTTypeValueToUTF8(value.data, value.size, nullptr, &size, value.typeAndFormat);
    if (status != SM_STATUS_BUFFER_TOO_SMALL)
        return status;
    const size_t keySize = std::strlen(key);
    const size_t room = keySize + 1 + size + 1; // a text without its terminator is one byte longer than its need
    if (room > UINT32_MAX)
        return SM_STATUS_NO_MEMORY;
    entry = HeapRoom<char>(room);
    if (!entry)
        return SM_STATUS_NO_MEMORY;
    char *text = entry.get() + keySize + 1;
    std::memcpy(entry.get(), key, keySize);
    text[-1] = '=';
    status = SMXLTTypeValueToUTF8(value.data, value.size, text, &size, value.typeAndFormat);
    if (status != SM_STATUS_OK)
        return status;
    text[size - 1] = '\n';
    entrySize = static_cast<uint32_t>(keySize + 1 + size);
    return SM_STATUS_OK;
}

uint32_t WriteTemporary(const char *key, const Value &value, const char *path, const char *directory,
                        HeapPtr<char> &temporary)
{
    const Descriptor input = OpenToRead(path);
    if (!input)
        return SM_STATUS_INI_OPEN_FAILED;
    const mode_t mode = SMFileModeGet(path, kDefaultMode, kKeepSticky);
    uint32_t status;
    Descriptor output = CreateTmpFile(directory, temporary, mode & kOwnerBits, status);
    if (!output)
        return status;
    (void)fchmod(output.Get(), mode); // now, so that a crash behind the swap cannot leave another
    HeapPtr<char> entry;
    uint32_t entrySize = 0;
    status = MakeEntry(key, value, entry, entrySize);
    if (status == SM_STATUS_OK)
        status = PropertyReplace(input.Get(), output.Get(), key, entry.get(), entrySize);
    const bool closed = output.Close(); // some file systems report a failed write here
    return status == SM_STATUS_OK && !closed ? SM_STATUS_LIMIT_REACHED : status;
}

} // namespace

uint32_t SMPropertyFileReadValue(const char *key, uint32_t typeAndFormat, void *dest, uint32_t *destSize,
                                 const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                 int16_t waitForLock)
{
    if (destSize == nullptr || pathFileName == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t room = *destSize;
    const FileLockGuard lock(pathFileName, kFileLockReader, waitForLock);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    const uint32_t status = ReadOrList(pathFileName, key, dest, destSize, typeAndFormat);
    if (status != SM_STATUS_OK && defaultValue != nullptr && dest != nullptr && room >= defaultSize) {
        std::memmove(dest, defaultValue, defaultSize);
        *destSize = defaultSize;
    }
    return status;
}

uint32_t SMPropertyFileWriteValue(const char *key, uint32_t typeAndFormat, const void *value, uint32_t valueSize,
                                  const char *pathFileName, int16_t waitForLock)
{
    if (key == nullptr || value == nullptr || pathFileName == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const HeapPtr<char> directory = DirectoryOf(pathFileName);
    uint32_t status = SM_STATUS_FAILED;
    HeapPtr<char> temporary = directory ? TmpPathIn(directory.get(), status) : nullptr;
    if (!temporary)
        return SM_STATUS_FAILED;
    const FileLockGuard lock(pathFileName, kFileLockWriter, waitForLock);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    const Value typed = {value, valueSize, typeAndFormat};
    status = WriteTemporary(key, typed, pathFileName, directory.get(), temporary);
    return status == SM_STATUS_OK ? SMSafeFileReplace(pathFileName, temporary.get()) : status;
}

} // namespace qzvest
