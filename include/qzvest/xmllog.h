/* XML logs: a file that is one document after every event.
 *
 * The document is UTF-8 without line breaks: the declaration, the root element EventLog, and in it one element LogEntry
 * for each event, the oldest first, with the children TimeStamp (seconds), DateTime (local), ComputerName, Type, ID,
 * Link, UserInfo, Source, Category, Description and Data (bytes as "0x%02X," without the last comma). All are always
 * there, an empty one as a pair of tags. Only Link is escaped: what else has markup in it goes into the file as it
 * stands, and the document is then not well formed.
 *
 * A new event overwrites the closing tag, and the tag is written again behind it. A process that dies between the two
 * writes leaves a document without its end, and no later event is taken then (SM_STATUS_BAD_FORMAT). Limit, backup,
 * modes, threads and processes are as in eventlog.h, whose front end writes the suite's own XML log. */
#ifndef QZVEST_XMLLOG_H
#define QZVEST_XMLLOG_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMAppendToXMLLog - append an event.
 *   pathFileName   the log's path; a missing file is made
 *   type           a number, not looked at; enum SMLogType
 *   category       one of enum SMLogCategory
 *   eventId        a number of the caller's
 *   userInfo       who was at work, source: who tells it; each NULL or 1 to 511 bytes
 *   description    what happened: NULL or 1 to 8,191 bytes
 *   link           where to read on, or NULL; references of XML in it are kept
 *   data, dataSize bytes that go with it, at most 32,768; NULL with 0
 *   maxSize        bytes at which the log is backed up, the event included
 * Returns SM_STATUS_OK; SM_STATUS_BAD_ARGUMENT (the path NULL, a text empty or too long, data NULL or too large);
 *   SM_STATUS_LIMIT_REACHED (a write failed: the document may have lost its end); SM_STATUS_BAD_FORMAT (no closing tag
 *   behind the declaration: the file stays as it is); SM_STATUS_NO_MEMORY; SM_STATUS_FAILED (unknown category; the
 *   directory cannot be made, the file not opened; data with a dataSize of 0; no memory for the event;
 *   where it lacks for the data alone, they are left empty, with SM_STATUS_OK). */
SM_EXPORT uint32_t SMAppendToXMLLog(const char *pathFileName, uint16_t type, uint16_t category, uint32_t eventId,
                                    const char *userInfo, const char *source, const char *description, const char *link,
                                    const void *data, uint32_t dataSize, uint32_t maxSize);

/* SMClearXMLLog - delete a log, and begin it anew with an event that says so.
 * Returns SM_STATUS_FAILED if there is no file to delete; SM_STATUS_NO_MEMORY also for a NULL path; else as
 *   SMAppendToXMLLog, whose arguments these are: an event that is refused leaves no file. */
SM_EXPORT uint32_t SMClearXMLLog(const char *pathFileName, uint16_t category, const char *userInfo, const char *source);

/* SMForceXMLLogExists - makes nothing: a log comes into being with its first event.
 *   pathFileName, flag  change nothing
 * Returns SM_STATUS_OK, always. */
SM_EXPORT uint32_t SMForceXMLLogExists(const char *pathFileName, int16_t flag);

/* SMGetBackupXMLLogPathFileName - the path of a log's backup: "_" in place of the last character.
 *   pathFileName  at least 2 bytes
 *   dest          takes the path; NULL is too small
 *   destSize      in: bytes of dest; out: bytes of the path with its terminator
 * Returns SM_STATUS_OK; SM_STATUS_BUFFER_TOO_SMALL; SM_STATUS_INVALID_PARAMETER (the path NULL or too short, destSize
 *   NULL). */
SM_EXPORT uint32_t SMGetBackupXMLLogPathFileName(const char *pathFileName, char *dest, uint32_t *destSize);

#ifdef __cplusplus
}
#endif

#endif
