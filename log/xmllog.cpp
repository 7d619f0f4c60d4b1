#include "log/xmllog.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>

#include "frame/heap.h"
#include "ipc/filelock.h"
#include "log/limits.h"
#include "os/address.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "os/system.h"
#include "text/xml.h"

namespace qzvest {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)"sv;
constexpr std::string_view kRoot = "<EventLog>"sv;
constexpr std::string_view kClosingTag = "</EventLog>"sv;
constexpr const char *kEntry = "LogEntry";
constexpr const char *kHelpLink =
    "help/ghv/en/msgguide/wwhelp/wwhimpl/common/html/wwhelp.htm?context=Messages_Guide&topic=0000";
constexpr size_t kMostInfo = 511; // bytes of user or source
constexpr size_t kMostDescription = 8191;
constexpr uint32_t kHostRoom = 256;
constexpr uint32_t kEntryRoom = 2048; // bytes to begin with

struct BufferRelease {
    void operator()(SMXGBuf *buffer) const
    {
        (void)SMXGBufFree(buffer);
    }
};

using BufferPtr = std::unique_ptr<SMXGBuf, BufferRelease>;

// A text that may be missing, but not empty.
bool IsGoodText(const char *text, size_t most)
{
    if (text == nullptr)
        return true;
    const size_t length = strnlen(text, most + 1);
    return length >= 1 && length <= most;
}

bool IsGood(const LogEvent &event)
{
    return (event.dataSize == 0 || event.data != nullptr) && event.dataSize <= kMostLogData &&
           IsGoodText(event.userInfo, kMostInfo) && IsGoodText(event.source, kMostInfo) &&
           IsGoodText(event.description, kMostDescription);
}

struct Child {
    const char *name;
    const void *value;
    uint32_t size;
    uint8_t type;
    const SMXGValueOptions *options;
};

Child TextChild(const char *name, const char *text, const SMXGValueOptions *options = nullptr)
{
    const auto size = text != nullptr ? static_cast<uint32_t>(std::strlen(text) + 1) : 0;
    return {name, text, size, SMXLT_TYPE_UTF8, options};
}

// Only the link is escaped: the other texts go in as they are. This is by design.
uint32_t RenderEntry(SMXGBuf *buffer, const LogEvent &event, const char *host)
{
    const char *category = LogSourceName(event.category);
    const time_t now = time(nullptr);
    const int64_t seconds = now;
    constexpr SMXGValueOptions kEscaped = {SMXLT_FORMAT_DEFAULT, 1};
    constexpr SMXGValueOptions kCommaList = {SMXLT_FORMAT_HEX, 0};
    const Child children[] = {
        {"TimeStamp", &seconds, sizeof seconds, SMXLT_TYPE_INT64, nullptr},
        {"DateTime", &now, sizeof now, SMXLT_TYPE_TIME, nullptr},
        TextChild("ComputerName", host),
        {"Type", &event.type, sizeof event.type, SMXLT_TYPE_UINT16, nullptr},
        {"ID", &event.eventId, sizeof event.eventId, SMXLT_TYPE_UINT32, nullptr},
        TextChild("Link", event.link, &kEscaped),
        TextChild("UserInfo", event.userInfo),
        TextChild("Source", event.source),
        TextChild("Category", category),
        TextChild("Description", event.description),
        {"Data", event.data, event.dataSize, SMXLT_TYPE_BYTES, &kCommaList},
    };
    uint32_t status = SMXGBufCatBeginNode(buffer, kEntry, nullptr);
    for (const Child &child : children) {
        if (status != SM_STATUS_OK)
            return status;
        if (category == nullptr && child.value == category)
            return SM_STATUS_FAILED;
        status = SMXGBufCatNode(buffer, child.name, nullptr, child.value, child.size, child.type, child.options);
    }
    return status == SM_STATUS_OK ? SMXGBufCatEndNode(buffer, kEntry) : status;
}

// Where the closing tag begins that is nearest to the end, behind the declaration; -1 if there is none.
off_t FindClosingTag(int file, off_t size)
{
    constexpr size_t kBlock = 4096;
    const auto tagSize = static_cast<off_t>(kClosingTag.size());
    const auto lowest = static_cast<off_t>(kDeclaration.size());
    char block[kBlock];
    // Each block reaches into the one before it, so that no tag is cut.
    for (off_t end = size; end - tagSize >= lowest;) {
        const off_t begin = std::max(lowest, end - static_cast<off_t>(kBlock));
        const auto wanted = static_cast<size_t>(end - begin);
        if (pread(file, block, wanted, begin) != static_cast<ssize_t>(wanted))
            return -1;
        if (const size_t found = std::string_view(block, wanted).rfind(kClosingTag); found != std::string_view::npos)
            return begin + static_cast<off_t>(found);
        end = begin + tagSize - 1;
    }
    return -1;
}

bool Write(int file, std::string_view text)
{
    return WriteFully(file, text.data(), text.size());
}

// Puts the file's place where the entry goes.
uint32_t MakeRoom(int file)
{
    const off_t size = lseek(file, 0, SEEK_END);
    if (size < 0)
        return SM_STATUS_FAILED;
    if (size < static_cast<off_t>(kDeclaration.size())) {
        if (lseek(file, 0, SEEK_SET) != 0)
            return SM_STATUS_FAILED;
        return Write(file, kDeclaration) && Write(file, kRoot) ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
    }
    const off_t tag = FindClosingTag(file, size);
    if (tag < 0)
        return SM_STATUS_BAD_FORMAT; // damaged: it stays as it is
    return lseek(file, tag, SEEK_SET) == tag ? SM_STATUS_OK : SM_STATUS_FAILED;
}

int OpenOrCreate(const char *path, mode_t mode)
{
    const int file = open(path, O_RDWR | O_CLOEXEC);
    return file != -1 ? file : open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
}

// The search for the tag, the overwrite and the new tag are one step to all that take the lock. A crash between the two
// last writes leaves a document without its end, which nothing repairs.
uint32_t WriteUnderLock(const char *path, const SMXGBuf &entry, mode_t mode)
{
    const FileLockGuard lock(path, kFileLockWriter, kWaitForLock);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    Descriptor file(OpenOrCreate(path, mode));
    if (!file)
        return SM_STATUS_FAILED;
    (void)fchmod(file.Get(), mode); // of somebody else's file it stays as it is
    if (const uint32_t status = MakeRoom(file.Get()); status != SM_STATUS_OK)
        return status;
    const bool written = Write(file.Get(), {entry.text, entry.length}) && Write(file.Get(), kClosingTag);
    return file.Close() && written ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
}

uint32_t AppendEvent(const char *path, const LogEvent &event, uint32_t limit)
{
    if (const uint32_t status = MakeLogDirectory(path); status != SM_STATUS_OK)
        return status;
    const HeapPtr<char> host = HeapRoom<char>(kHostRoom);
    if (!host)
        return SM_STATUS_NO_MEMORY;
    const BufferPtr entry(SMXGBufAlloc(kEntryRoom, 0));
    if (!entry)
        return SM_STATUS_FAILED;
    uint32_t hostSize = kHostRoom;
    uint32_t status = SMGetIPHostName(host.get(), &hostSize);
    if (status == SM_STATUS_OK)
        status = RenderEntry(entry.get(), event, host.get());
    if (status != SM_STATUS_OK)
        return status;
    const mode_t mode = SMFileModeGet(path, kLogMode, kKeepSticky);
    uint32_t size;
    if (SMGetSizeOfFile(path, &size) == SM_STATUS_OK && uint64_t{size} + entry->length >= limit &&
        BackUpLog(path) == SM_STATUS_OK) {
        const LogEvent notice = {kNoticeType,   kNoticeCategory, 1, event.source,
                                 kBackupNotice, nullptr,         0, event.userInfo};
        (void)AppendEvent(path, notice, DefaultLogLimit());
    }
    return WriteUnderLock(path, *entry, mode);
}

} // namespace

uint32_t AppendToXMLLog(const char *path, const LogEvent &event, uint32_t limit)
{
    return path != nullptr && IsGood(event) ? AppendEvent(path, event, limit) : SM_STATUS_BAD_ARGUMENT;
}

uint32_t SMAppendToXMLLog(const char *pathFileName, uint16_t type, uint16_t category, uint32_t eventId,
                          const char *userInfo, const char *source, const char *description, const char *link,
                          const void *data, uint32_t dataSize, uint32_t maxSize)
{
    const LogEvent event = {type, category, eventId, source, description, data, dataSize, userInfo, link};
    return AppendToXMLLog(pathFileName, event, maxSize);
}

uint32_t SMClearXMLLog(const char *pathFileName, uint16_t category, const char *userInfo, const char *source)
{
    if (const uint32_t status = DeleteLog(pathFileName); status != SM_STATUS_OK)
        return status;
    const LogEvent notice = {kNoticeType, category, 0, source, kClearNotice, nullptr, 0, userInfo, kHelpLink};
    return AppendToXMLLog(pathFileName, notice, DefaultLogLimit());
}

// Creates nothing: the file comes into being with the first event.
uint32_t SMForceXMLLogExists(const char *pathFileName, int16_t)
{
    uint32_t size;
    if (pathFileName != nullptr)
        (void)SMGetSizeOfFile(pathFileName, &size);
    return SM_STATUS_OK;
}

uint32_t SMGetBackupXMLLogPathFileName(const char *pathFileName, char *dest, uint32_t *destSize)
{
    if (pathFileName == nullptr || destSize == nullptr || std::strlen(pathFileName) + 1 < 3)
        return SM_STATUS_INVALID_PARAMETER;
    const auto need = static_cast<uint32_t>(std::strlen(pathFileName) + 1);
    const bool fits = dest != nullptr && *destSize >= need;
    *destSize = need;
    if (!fits)
        return SM_STATUS_BUFFER_TOO_SMALL;
    PutBackupPath(dest, pathFileName, need);
    return SM_STATUS_OK;
}

} // namespace qzvest
