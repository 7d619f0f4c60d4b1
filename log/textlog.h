// The text log: records of lines in UTF-16, little-endian.
#ifndef LOG_TEXTLOG_H
#define LOG_TEXTLOG_H

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "log/logfile.h"

namespace qzvest {

// Appends a record, behind a backup when the log would reach its limit by it.
uint32_t AppendToTextLog(const char *path, const LogEvent &event, uint32_t limit);

// Appends a dump of the data. SM_STATUS_NO_MEMORY, SM_STATUS_FAILED when the record has no buffer or the dump fails; an
// append for which memory runs out is not told and leaves the record as it was.
uint32_t SSUCS2StrCatHexDump(SMSSUCS2Str *record, const uint8_t *data, uint32_t size, uint32_t firstAddress);

} // namespace qzvest

#endif
