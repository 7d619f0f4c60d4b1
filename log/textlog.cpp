#include "log/textlog.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <ctime>
#include <iterator>
#include <memory>

#include "frame/heap.h"
#include "ipc/filelock.h"
#include "log/limits.h"
#include "os/address.h"
#include "os/descriptor.h"
#include "os/file.h"
#include "os/system.h"
#include "text/number.h"
#include "text/sizedstring.h"
#include "text/transcode.h"
#include "text/unitcount.h"
#include "values/bytetext.h"

namespace qzvest {
namespace {

constexpr uint32_t kTextRoom = 2048; // bytes of a text of the event in UCS-2, with its terminator
constexpr uint32_t kDumpRoom = 2048;
constexpr int64_t kHeaderSize = 256; // bytes; a log that is shorter gets the block

struct TypeLine {
    uint16_t type;
    const char *line;
};

constexpr TypeLine kTypeLines[] = {
    {SM_LOG_TYPE_NONE, "Type: None"},
    {SM_LOG_TYPE_ERROR, "Type: Error"},
    {SM_LOG_TYPE_WARNING, "Type: Warning"},
    {SM_LOG_TYPE_INFORMATION, "Type: Information"},
    {SM_LOG_TYPE_AUDIT_SUCCESS, "Type: Audit Success"},
    {SM_LOG_TYPE_AUDIT_FAILURE, "Type: Audit Failure"},
};

const char *TypeLineOf(uint16_t type)
{
    const auto *row = std::find_if(std::begin(kTypeLines), std::end(kTypeLines),
                                   [type](const TypeLine &line) { return line.type == type; });
    return row != std::end(kTypeLines) ? row->line : nullptr;
}

// A line in the making. Each line is one write.
struct LineBuffer {
    static constexpr size_t kRoom = 1200; // units: a text of an event, and what stands around it

    uint16_t units[kRoom];
    size_t count = 0;

    void Add(const char *ascii)
    {
        for (; *ascii != '\0'; ++ascii)
            Add(static_cast<uint16_t>(static_cast<unsigned char>(*ascii)));
    }
    void Add(const uint16_t *text, size_t length)
    {
        for (size_t i = 0; i < length; ++i)
            Add(text[i]);
    }
    void Add(uint16_t unit)
    {
        // The file's byte order, whatever the machine's.
        units[count++] = std::endian::native == std::endian::little ? unit : __builtin_bswap16(unit);
    }
    bool WriteLine(int file)
    {
        Add("\r\n");
        const bool written = WriteFully(file, units, count * sizeof *units);
        count = 0;
        return written;
    }
};

// An event whose texts are converted, and what the record says besides.
struct Record {
    uint16_t source[kTextRoom / 2];
    uint16_t description[kTextRoom / 2];
    size_t sourceLength;
    size_t descriptionLength;
    const char *category;
    const char *typeLine;
    char time[32];
    uint16_t host[kHostNameRoom];
    size_t hostLength;
    SMSSUCS2Str dump;
};

bool WriteHeader(int file)
{
    constexpr const char *kLines[] = {"#-------------------------------", "# Do not remove this block",
                                      "# This data file is parsed", "#------------------------------- ", ""};
    LineBuffer line;
    line.Add(uint16_t{0xFEFF});
    for (const char *text : kLines) {
        line.Add(text);
        if (!line.WriteLine(file))
            return false;
    }
    return true;
}

bool WriteTextLine(int file, const char *label, const char *text)
{
    LineBuffer line;
    line.Add(label);
    line.Add(text);
    return line.WriteLine(file);
}

bool WriteTextLine(int file, const char *label, const uint16_t *text, size_t length)
{
    LineBuffer line;
    line.Add(label);
    line.Add(text, length);
    return line.WriteLine(file);
}

// The dump has line feeds alone between its rows, and the line's end behind the last.
bool WriteDump(int file, const SMSSUCS2Str &dump)
{
    LineBuffer line;
    for (uint32_t done = 0; done < dump.length;) {
        const uint32_t part = std::min<uint32_t>(dump.length - done, LineBuffer::kRoom);
        line.Add(dump.text + done, part);
        if (!WriteFully(file, line.units, line.count * sizeof *line.units))
            return false;
        line.count = 0;
        done += part;
    }
    return line.WriteLine(file);
}

bool WriteRecord(int file, const Record &record, uint32_t eventId)
{
    char number[kInt64Text];
    UInt64ToUTF8Str(number, eventId);
    return WriteTextLine(file, "EventID: ", number) &&
           WriteTextLine(file, "Source: ", record.source, record.sourceLength) &&
           WriteTextLine(file, "Category: ", record.category) && WriteTextLine(file, "", record.typeLine) &&
           WriteTextLine(file, "Date and Time: ", record.time) &&
           WriteTextLine(file, "Computer: ", record.host, record.hostLength) &&
           WriteTextLine(file, "Description:", "") &&
           WriteTextLine(file, "", record.description, record.descriptionLength) &&
           WriteTextLine(file, "Data: Bytes in Hex", "") && WriteDump(file, record.dump);
}

template <size_t kRoom>
uint32_t Convert(const char *text, uint16_t (&units)[kRoom], size_t &length)
{
    uint32_t size = sizeof units;
    const uint32_t status = SMUTF8StrToUCS2Str(units, &size, text);
    if (status == SM_STATUS_OK)
        length = UnitCount(units);
    return status;
}

uint32_t ConvertTexts(const LogEvent &event, Record &record)
{
    uint32_t status = Convert(event.source, record.source, record.sourceLength);
    if (status == SM_STATUS_OK)
        status = Convert(event.description, record.description, record.descriptionLength);
    if (status != SM_STATUS_OK)
        return status;
    const bool good = record.sourceLength >= 1 && record.descriptionLength >= 1; // what is too long finds no room above
    return good ? SM_STATUS_OK : SM_STATUS_BAD_ARGUMENT;
}

// Time, host and dump. Under the lock, so that the records' times ascend. The append of the dump tells a record
// without a buffer.
uint32_t Complete(const LogEvent &event, Record &record)
{
    const time_t now = time(nullptr);
    if (TimeToUTF8Str(&now, record.time, sizeof record.time) != 0)
        return SM_STATUS_FAILED;
    char host[kHostNameRoom];
    uint32_t hostSize = sizeof host;
    if (SMGetIPHostName(host, &hostSize) != SM_STATUS_OK ||
        Convert(host, record.host, record.hostLength) != SM_STATUS_OK)
        return SM_STATUS_FAILED;
    SMSSUCS2StrAlloc(&record.dump, kDumpRoom);
    return SSUCS2StrCatHexDump(&record.dump, static_cast<const uint8_t *>(event.data), event.dataSize, 0);
}

// The record is written under the lock in one go. A torn one stays in the file.
uint32_t WriteUnderLock(const char *path, const LogEvent &event, Record &record, mode_t mode)
{
    const FileLockGuard lock(path, kFileLockWriter, kWaitForLock);
    if (lock.Status() != SM_STATUS_OK)
        return lock.Status();
    Descriptor file(open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode));
    if (!file)
        return SM_STATUS_FAILED;
    (void)fchmod(file.Get(), mode); // of somebody else's file it stays as it is
    const off_t size = lseek(file.Get(), 0, SEEK_END);
    if (size < 0)
        return SM_STATUS_FAILED;
    if (size < kHeaderSize && !WriteHeader(file.Get()))
        return SM_STATUS_LIMIT_REACHED;
    if (const uint32_t status = Complete(event, record); status != SM_STATUS_OK)
        return status;
    const bool written = WriteRecord(file.Get(), record, event.eventId);
    return file.Close() && written ? SM_STATUS_OK : SM_STATUS_LIMIT_REACHED;
}

// Moves a log away that the record would bring to its limit, and says so in the new one.
void BackUpIfFull(const char *path, const LogEvent &event, const Record &record, uint32_t limit)
{
    const size_t estimate =
        (size_t{event.dataSize / 16} * 83 + 1107 + record.sourceLength + record.descriptionLength) * 2;
    uint32_t size;
    if (SMGetSizeOfFile(path, &size) != SM_STATUS_OK || limit > estimate + size || BackUpLog(path) != SM_STATUS_OK)
        return;
    const LogEvent notice = {kNoticeType, kNoticeCategory, 1, event.source, kBackupNotice, nullptr, 0};
    (void)AppendToTextLog(path, notice, DefaultLogLimit());
}

struct RecordRelease {
    void operator()(Record *record) const
    {
        SMSSUCS2StrFree(&record->dump);
        std::free(record);
    }
};

} // namespace

uint32_t AppendToTextLog(const char *path, const LogEvent &event, uint32_t limit)
{
    const std::unique_ptr<Record, RecordRelease> record(static_cast<Record *>(std::calloc(1, sizeof(Record))));
    if (!record)
        return SM_STATUS_FAILED;
    if (const uint32_t status = ConvertTexts(event, *record); status != SM_STATUS_OK)
        return status;
    record->category = LogSourceName(event.category);
    if (record->category == nullptr)
        return SM_STATUS_OK; // the caller isn't told
    if (const uint32_t status = MakeLogDirectory(path); status != SM_STATUS_OK)
        return status;
    const mode_t mode = SMFileModeGet(path, kLogMode, kKeepSticky);
    BackUpIfFull(path, event, *record, limit);
    record->typeLine = TypeLineOf(event.type);
    if (record->typeLine == nullptr)
        return SM_STATUS_BAD_ARGUMENT; // the backup has happened
    return WriteUnderLock(path, event, *record, mode);
}

uint32_t SSUCS2StrCatHexDump(SMSSUCS2Str *record, const uint8_t *data, uint32_t size, uint32_t firstAddress)
{
    SMSSUTF8Str dump;
    if (SMSSUTF8StrAlloc(&dump, kDumpRoom) == nullptr)
        return SM_STATUS_NO_MEMORY;
    // Its failure, -1, is SM_STATUS_FAILED.
    auto status = static_cast<uint32_t>(SMXLTDumpToSizedString(&dump, data, size, firstAddress));
    if (status == SM_STATUS_OK && SSUCS2StrCatSSUTF8Str(record, &dump) == nullptr)
        status = SM_STATUS_FAILED;
    SMSSUTF8StrFree(&dump);
    return status;
}

} // namespace qzvest
