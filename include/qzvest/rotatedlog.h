/* Rotated logs: plain text in a file of the caller's, with a size limit and numbered older generations.
 *
 * The generations are the path itself, the path with ".1" behind it, and so on. Nothing is kept between calls, and
 * limit and generations may differ from call to call. A name that with its number has more than 255 bytes is passed
 * over.
 *
 * Threads and processes: no lock. A message is one write to a file opened for appending, so that lines of several
 * writers stay whole; two that rotate at the same time may lose a generation. */
#ifndef QZVEST_ROTATEDLOG_H
#define QZVEST_ROTATEDLOG_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMFileLogMsgToRotatedLog - append a message, behind a rotation if the file has grown beyond its limit.
 *   message      text, written as it is
 *   pathFileName the log
 *   maxSize      bytes; a file of just so many is not rotated yet
 *   generations  how many older files are kept; with 0 the file is deleted instead
 *   flags        SM_ROTATED_TIME puts "[%b %d %Y %H:%M:%S] " (strftime) in front, SM_ROTATED_THREAD behind that process
 *                and thread number as "[%u:%llu] ", SM_ROTATED_LINE_FEED a line feed behind
 * The file, new or not, gets the mode of the one that was there, without execute and set-ID bits; 0644 if there was
 * none. Returns SM_STATUS_OK, also when the write failed; SM_STATUS_INVALID_PARAMETER (message or path NULL);
 *   SM_STATUS_FAILED (the file cannot be opened). */
SM_EXPORT uint32_t SMFileLogMsgToRotatedLog(const char *message, const char *pathFileName, uint32_t maxSize,
                                            uint32_t generations, uint32_t flags);

/* SMFileRotateCheck - the rotation alone, if the file has more than maxSize bytes: each older generation up by one, and
 * the file to number 1. A number that is missing is passed over. Nothing for a NULL path and for no file. */
SM_EXPORT void SMFileRotateCheck(const char *pathFileName, uint32_t maxSize, uint32_t generations);

/* SMFileDeleteRotated - delete a log.
 *   pathFileName       NULL does nothing
 *   deleteGenerations  1: its older generations too
 *   generations        the highest number of those */
SM_EXPORT void SMFileDeleteRotated(const char *pathFileName, uint16_t deleteGenerations, uint32_t generations);

#ifdef __cplusplus
}
#endif

#endif
