// The XML log: one document, into which each event is put in front of the closing tag.
#ifndef LOG_XMLLOG_H
#define LOG_XMLLOG_H

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "log/logfile.h"

namespace qzvest {

uint32_t SMAppendToXMLLog(const char *pathFileName, uint16_t type, uint16_t category, uint32_t eventId,
                          const char *userInfo, const char *source, const char *description, const char *link,
                          const void *data, uint32_t dataSize, uint32_t maxSize);
// SMAppendToXMLLog of an event in one piece.
uint32_t AppendToXMLLog(const char *path, const LogEvent &event, uint32_t limit);

uint32_t SMClearXMLLog(const char *pathFileName, uint16_t category, const char *userInfo, const char *source);
uint32_t SMForceXMLLogExists(const char *pathFileName, int16_t flag);
uint32_t SMGetBackupXMLLogPathFileName(const char *pathFileName, char *dest, uint32_t *destSize);

} // namespace qzvest

#endif
