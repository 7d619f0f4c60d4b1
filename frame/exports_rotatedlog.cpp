#include <qzvest/rotatedlog.h>

#include "log/rotated.h"

extern "C" {

uint32_t SMFileLogMsgToRotatedLog(const char *message, const char *pathFileName, uint32_t maxSize, uint32_t generations,
                                  uint32_t flags)
{
    return qzvest::SMFileLogMsgToRotatedLog(message, pathFileName, maxSize, generations, flags);
}

void SMFileRotateCheck(const char *pathFileName, uint32_t maxSize, uint32_t generations)
{
    qzvest::SMFileRotateCheck(pathFileName, maxSize, generations);
}

void SMFileDeleteRotated(const char *pathFileName, uint16_t deleteGenerations, uint32_t generations)
{
    qzvest::SMFileDeleteRotated(pathFileName, deleteGenerations, generations);
}

} // extern "C"
