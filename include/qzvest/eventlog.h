/* The event log: one event, sent to the system log, to a text file in UTF-16 and to an XML file.
 *
 * logTargets is a mask of SM_LOG_SYSTEM, SM_LOG_TEXT and SM_LOG_XML; type is one of enum SMLogType, category one of
 * enum SMLogCategory. Texts are UTF-8. The files are "qzsys64.log" and "qzsys64.xml" in the directory "log" below the
 * log path of SM_PRODUCT_DEFAULT (product.h); xmllog.h tells the form of the latter, and writes it at any path.
 *
 * The text log is UTF-16, little-endian, with CR LF behind each line. A file of fewer than 256 bytes gets a block of
 * 256 bytes in front of its next record: the byte-order mark and four lines of comment. Each record is the lines
 * EventID, Source, Category, Type, Date and Time (local), Computer, Description with the text in the next line, and
 * "Data: Bytes in Hex" with a dump behind, of which each row holds 16 bytes and ends in LF.
 *
 * A log that a record would bring to its limit is moved to its one backup first, whose name has "_" in place of the
 * last character; the new log begins with a record that says so. The directory of a log is made, one level of it, with
 * mode 0755; a new log has mode 0664, and one behind a backup the mode of the old.
 *
 * Threads and processes: any number may write; each record is written under the log's file lock, which is waited for
 * without limit. The lock's statuses come with all calls that write or delete: SM_STATUS_ACCESS_DENIED and
 * SM_STATUS_FAILED when its file in the IPC directory cannot be opened, SM_STATUS_NO_MEMORY without a record of it. Two
 * writers that find a log full at the same time may both back it up: the second then replaces the backup by the first's
 * fresh log. */
#ifndef QZVEST_EVENTLOG_H
#define QZVEST_EVENTLOG_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMAppendToLog - send an event to each target of the mask.
 *   eventId      a number of the caller's
 *   source       who tells it: the identity in the system log. 1 to 1,023 UCS-2 units in the text log, up to 511 bytes
 *                in the XML log. Without one (NULL) the text log is passed over
 *   description  what happened: 1 to 1,023 units in the text log, up to 8,191 bytes in the XML log. Without one (NULL)
 * the text log is passed over, and the others have an empty text data         bytes that go with it, or NULL with a
 * dataSize of 0; not for the system log dataSize     at most 32,768 What went wrong in the system log is not told, and
 * in the text log only its path: a text too long, a type or category that there is not, and a failed write leave the
 * result as it is. Returns SM_STATUS_OK; SM_STATUS_BAD_ARGUMENT (an empty mask); SM_STATUS_FAILED (no memory for a
 * path); what SMGetPathByProductIDandType says of the log path; with SM_LOG_XML what SMAppendToXMLLog returned. */
SM_EXPORT uint32_t SMAppendToLog(uint8_t logTargets, uint16_t type, uint16_t category, uint32_t eventId,
                                 const char *source, const char *description, const void *data, uint32_t dataSize);

/* SMClearLog - delete the files of the mask, and begin each anew with a record that says so.
 *   category, source  of that record
 * Returns SM_STATUS_OK; SM_STATUS_BAD_ARGUMENT (an empty mask; source NULL for the text log, which is deleted by then);
 *   SM_STATUS_UNSUPPORTED (the mask names the system log: nothing is cleared); SM_STATUS_FAILED (a file cannot be
 *   deleted, as one that is not there; no memory for a path): the XML log is left alone then; what the path says; what
 *   the last append returned, of SM_LOG_TEXT as for SMAppendToXMLLog: SM_STATUS_BUFFER_TOO_SMALL and
 *   SM_STATUS_BAD_ARGUMENT (source too long, or empty), SM_STATUS_LIMIT_REACHED (a write failed); a category that there
 *   is not leaves no record in the text log, and is SM_STATUS_OK. */
SM_EXPORT uint32_t SMClearLog(uint8_t logTargets, uint16_t category, const char *source);

/* SMGetLogPathFileName - the path of a log; with both files in the mask, that of the XML log.
 *   dest      takes the path; NULL is too small
 *   destSize  in: bytes of dest, at least 256; out: bytes of the path with its terminator, or 256 after
 *             SM_STATUS_BUFFER_TOO_SMALL
 * Returns SM_STATUS_OK; SM_STATUS_BAD_ARGUMENT (no target with a file, destSize NULL); SM_STATUS_UNSUPPORTED (the mask
 *   names the system log); SM_STATUS_BUFFER_TOO_SMALL; what the log path says. */
SM_EXPORT uint32_t SMGetLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize);

/* SMGetBackupLogPathFileName - the path of a log's backup.
 *   destSize  in: bytes of dest; out: bytes of the path with its terminator, also when dest is too small or NULL, which
 *             is SM_STATUS_OK as well: compare the size
 * Returns as SMGetLogPathFileName, and SM_STATUS_NO_MEMORY. */
SM_EXPORT uint32_t SMGetBackupLogPathFileName(uint8_t logTargets, char *dest, uint32_t *destSize);

/* SMGetLogMaxSize, SMSetLogMaxSize - the limit of a log, in bytes, for this process.
 *   pathFileName  the log's path; two spellings are two logs. Up to 255 bytes for a limit of its own
 *   size          the default is 1,048,576, which is also the lowest, the highest 4,194,304; on a VMkernel the default
 *                 and lowest is 131,072
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER (the path NULL or empty, or too long to set a limit for; size NULL
 *   or out of range); SMSetLogMaxSize SM_STATUS_NO_MEMORY and SM_STATUS_FAILED (no memory for the limit). */
SM_EXPORT uint32_t SMGetLogMaxSize(const char *pathFileName, uint32_t *size);
SM_EXPORT uint32_t SMSetLogMaxSize(const char *pathFileName, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
