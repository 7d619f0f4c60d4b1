#include "log/eventlog.h"

#include <cstring>

#include "compat/print.h"
#include "config/product.h"
#include "frame/heap.h"
#include "log/limits.h"
#include "log/logfile.h"
#include "log/textlog.h"
#include "log/xmllog.h"
#include "os/system.h"

namespace qzvest {
namespace {

constexpr uint32_t kPathRoom = 256;
constexpr uint32_t kDirectoryRoom = 239; // so that the whole path fits its room
constexpr const char *kTextLog = "qzsys64.log";
constexpr const char *kXMLLog = "qzsys64.xml";
constexpr const char *kLocalUser = "Local System";

uint32_t PathOfLog(const char *fileName, char *path)
{
    char directory[kDirectoryRoom];
    uint32_t size = sizeof directory;
    const uint32_t status = SMGetPathByProductIDandType(SM_PRODUCT_DEFAULT, SM_PATH_LOG, directory, &size);
    if (status == SM_STATUS_OK)
        (void)sprintf_s(path, kPathRoom, "%s/log/%s", directory, fileName);
    return status;
}

// Of the targets that have a file. SM_STATUS_BAD_ARGUMENT for none, SM_STATUS_UNSUPPORTED for the system log.
uint32_t PathOfTarget(uint8_t logTargets, char *path)
{
    if ((logTargets & SM_LOG_SYSTEM) != 0)
        return SM_STATUS_UNSUPPORTED;
    if ((logTargets & (SM_LOG_TEXT | SM_LOG_XML)) == 0)
        return SM_STATUS_BAD_ARGUMENT;
    return PathOfLog((logTargets & SM_LOG_XML) != 0 ? kXMLLog : kTextLog, path);
}

uint32_t LimitOf(const char *path)
{
    uint32_t limit = DefaultLogLimit();
    (void)SMGetLogMaxSize(path, &limit);
    return limit;
}

// A failure shows for the path alone.
uint32_t AppendText(const LogEvent &event, char *path)
{
    if (const uint32_t status = PathOfLog(kTextLog, path); status != SM_STATUS_OK)
        return status;
    const uint32_t limit = LimitOf(path);
    if (event.source != nullptr && event.dataSize <= kMostLogData && (event.data != nullptr || event.dataSize == 0))
        (void)AppendToTextLog(path, event, limit);
    return SM_STATUS_OK;
}

uint32_t AppendXML(const LogEvent &event, char *path)
{
    if (const uint32_t status = PathOfLog(kXMLLog, path); status != SM_STATUS_OK)
        return status;
    return AppendToXMLLog(path, event, LimitOf(path));
}

uint32_t DeleteText(char *path)
{
    const uint32_t status = PathOfLog(kTextLog, path);
    return status == SM_STATUS_OK ? DeleteLog(path) : status;
}

uint32_t ClearXML(uint16_t category, const char *source, char *path)
{
    const uint32_t status = PathOfLog(kXMLLog, path);
    return status == SM_STATUS_OK ? SMClearXMLLog(path, category, kLocalUser, source) : status;
}

} // namespace

uint32_t SMAppendToLog(uint8_t logTargets, uint16_t type, uint16_t category, uint32_t eventId, const char *source,
                       const char *description, const void *data, uint32_t dataSize)
{
    if (logTargets == 0)
        return SM_STATUS_BAD_ARGUMENT;
    if ((logTargets & SM_LOG_SYSTEM) != 0)
        (void)SMAppendToOSSysLog(type, category, eventId, source, description);
    const HeapPtr<char> path = HeapRoom<char>(kPathRoom);
    if (!path)
        return SM_STATUS_FAILED;
    const LogEvent event = {type, category, eventId, source, description, data, dataSize};
    uint32_t status = SM_STATUS_OK;
    if ((logTargets & SM_LOG_TEXT) != 0)
        status = AppendText(event, path.get());
    if (status == SM_STATUS_OK && (logTargets & SM_LOG_XML) != 0)
        status = AppendXML(event, path.get());
    return status;
}

uint32_t SMClearLog(uint8_t logTargets, uint16_t category, const char *source)
{
    if (logTargets == 0)
        return SM_STATUS_BAD_ARGUMENT;
    if ((logTargets & SM_LOG_SYSTEM) != 0)
        return SM_STATUS_UNSUPPORTED; // refused whole
    const HeapPtr<char> path = HeapRoom<char>(kPathRoom);
    if (!path)
        return SM_STATUS_FAILED;
    uint32_t status = SM_STATUS_OK;
    if ((logTargets & SM_LOG_TEXT) != 0) {
        status = DeleteText(path.get());
        if (status == SM_STATUS_OK && source == nullptr)
            status = SM_STATUS_BAD_ARGUMENT;
        if (status != SM_STATUS_OK)
            return status;
        const LogEvent notice = {kNoticeType, category, 0, source, kClearNotice, nullptr, 0};
        status = AppendToTextLog(path.get(), notice, DefaultLogLimit());
    }
    if ((logTargets & SM_LOG_XML) != 0) // also when the notice could not be written
        status = ClearXML(category, source, path.get());
    return status;
}

uint32_t SMGetLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize)
{
    if (logTargets == 0 || destSize == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if ((logTargets & SM_LOG_SYSTEM) != 0)
        return SM_STATUS_UNSUPPORTED;
    if (dest == nullptr || *destSize < kPathRoom) {
        *destSize = kPathRoom;
        return SM_STATUS_BUFFER_TOO_SMALL;
    }
    const uint32_t status = PathOfTarget(logTargets, dest);
    if (status == SM_STATUS_OK)
        *destSize = static_cast<uint32_t>(std::strlen(dest) + 1);
    return status;
}

// Success also where the name does not fit: who calls compares the size.
uint32_t SMGetBackupLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize)
{
    const HeapPtr<char> path = HeapRoom<char>(kPathRoom);
    if (!path)
        return SM_STATUS_NO_MEMORY;
    if (logTargets == 0 || destSize == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (const uint32_t status = PathOfTarget(logTargets, path.get()); status != SM_STATUS_OK)
        return status;
    const auto need = static_cast<uint32_t>(std::strlen(path.get()) + 1);
    if (dest != nullptr && *destSize >= need)
        PutBackupPath(dest, path.get(), need);
    *destSize = need;
    return SM_STATUS_OK;
}

} // namespace qzvest
