// What the text log and the XML log have in common.
#ifndef LOG_LOGFILE_H
#define LOG_LOGFILE_H

#include <sys/stat.h>

#include <cstddef>

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

constexpr mode_t kLogMode = 0664; // of a log that is not there yet
constexpr uint32_t kMostLogData = 32768;
constexpr uint16_t kNoticeType = SM_LOG_TYPE_INFORMATION; // of the events that the logs write about themselves
constexpr uint16_t kNoticeCategory = SM_LOG_RECORD_BROKER;
constexpr const char *kBackupNotice = "Log backup created";
constexpr const char *kClearNotice = "Log was cleared";

// An event on its way to a log. The text log has no use for the user and the link.
struct LogEvent {
    uint16_t type;
    uint16_t category;
    uint32_t eventId;
    const char *source;
    const char *description;
    const void *data;
    uint32_t dataSize;
    const char *userInfo = nullptr;
    const char *link = nullptr;
};

// The directory of a log, one level. SM_STATUS_FAILED, SM_STATUS_NO_MEMORY.
uint32_t MakeLogDirectory(const char *path);

// The path of a log's backup: size bytes of path, terminator included, with an underscore for the last character.
void PutBackupPath(char *backup, const char *path, size_t size);

// Moves a log to its backup, whose name ends in an underscore instead of the last character. The backup before it goes.
uint32_t BackUpLog(const char *path);

uint32_t DeleteLog(const char *path);

} // namespace qzvest

#endif
