#include <qzvest/xmllog.h>

#include "log/xmllog.h"

extern "C" {

uint32_t SMAppendToXMLLog(const char *pathFileName, uint16_t type, uint16_t category, uint32_t eventId,
                          const char *userInfo, const char *source, const char *description, const char *link,
                          const void *data, uint32_t dataSize, uint32_t maxSize)
{
    return qzvest::SMAppendToXMLLog(pathFileName, type, category, eventId, userInfo, source, description, link, data,
                                    dataSize, maxSize);
}

uint32_t SMClearXMLLog(const char *pathFileName, uint16_t category, const char *userInfo, const char *source)
{
    return qzvest::SMClearXMLLog(pathFileName, category, userInfo, source);
}

uint32_t SMForceXMLLogExists(const char *pathFileName, int16_t flag)
{
    return qzvest::SMForceXMLLogExists(pathFileName, flag);
}

uint32_t SMGetBackupXMLLogPathFileName(const char *pathFileName, char *dest, uint32_t *destSize)
{
    return qzvest::SMGetBackupXMLLogPathFileName(pathFileName, dest, destSize);
}

} // extern "C"
