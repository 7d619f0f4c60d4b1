// Logs of a caller's own: plain text with a size limit and numbered older generations. No lock.
#ifndef LOG_ROTATED_H
#define LOG_ROTATED_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

uint32_t SMFileLogMsgToRotatedLog(const char *message, const char *pathFileName, uint32_t maxSize, uint32_t generations,
                                  uint32_t flags);
void SMFileRotateCheck(const char *pathFileName, uint32_t maxSize, uint32_t generations);
void SMFileDeleteRotated(const char *pathFileName, uint16_t deleteGenerations, uint32_t generations);

} // namespace qzvest

#endif
