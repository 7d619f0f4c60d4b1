/* Property files: keys and values without sections, typed as in typedvalue.h.
 *
 * Lines end at a line feed, and as text at a zero byte before it; of more than 8,449 bytes, each 8,449 count as a line.
 *
 *   key = value       The key runs to the first "=", ":" or white space (tab, line feed, carriage return, blank), and
 *                     the value begins behind all of these that follow. One byte of white space at its end is dropped,
 *                     one alone. White space in front of a key is skipped.
 *   key               an empty value
 *   value\            A value of at least 2 bytes, and a continuation line of as many, goes on with the next line if it
 *   more              ends in one backslash, or is nothing but two; a line feed takes the place of the last backslash.
 *                     A continuation line belongs to the value from its first byte on; one byte of white space at its
 *                     end is dropped too.
 *   ; # ! //          a comment, also behind white space. Lines of one character and lines without a key are skipped.
 *
 * A key of the file answers every key that begins with it, and the first one in the file that does so is taken. Case
 * counts.
 *
 * Each call holds the file's lock from its beginning to its end, readers against writers, in this process and others.
 * A swap that a crash cut short is not repaired here: the file is missing until its backup, path with ".bak" behind it,
 * is put back.
 *
 *   waitForLock  1: wait for the lock without limit; any other value: try once
 *
 * Threads: any number may call; a thread waits for the others at the same path. */
#ifndef QZVEST_PROPERTY_H
#define QZVEST_PROPERTY_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMPropertyFileReadValue - the value of a key, or the keys of the file.
 *   key            NULL with SMXLT_TYPE_UTF8: the keys in the order of the file, as a multi-string. NULL with anything
 *                  else: success, and nothing is delivered
 *   typeAndFormat  type and format of the value, as in typedvalue.h
 *   dest           takes the value; NULL asks for its size, with *destSize 0
 *   destSize       in: bytes at dest; out: as SMXLTUTF8ToTypeValue says; for the keys the bytes of all, 1 for none;
 *                  unchanged when the key is missing
 *   defaultValue   goes to dest as it is after any failure but one of the lock, if defaultSize bytes fit there;
 *                  *destSize is then defaultSize. The status stays that of the failure. May be NULL; not in dest
 *                  itself, which a list or text that does not fit may have changed
 * Status
 *   SM_STATUS_OK                 delivered; SMXLTUTF8ToTypeValue passes its own on too
 *   SM_STATUS_BUFFER_TOO_SMALL   dest is too small, or NULL; *destSize has the need, unless the default took its place,
 *                                and but for SMXLT_TYPE_UCS2 (typedvalue.h). Of the keys, those are there that fit
 *   SM_STATUS_INI_OPEN_FAILED    the file can't be opened
 *   SM_STATUS_INI_NO_KEY         no such key; no keys at all
 *   SM_STATUS_INVALID_PARAMETER  destSize or pathFileName is NULL
 *   SM_STATUS_NO_MEMORY          memory ran out, or the lock's record can't be made: the path is empty, or the IPC
 *                                directory's has more than 213 bytes
 *   SM_STATUS_TIMEOUT            the lock is held by another
 *   SM_STATUS_ACCESS_DENIED      the lock file can't be opened for lack of permission
 *   SM_STATUS_FAILED             the lock file can't be opened for any other reason; the file can't be read to the end
 *                                of what was asked for */
SM_EXPORT uint32_t SMPropertyFileReadValue(const char *key, uint32_t typeAndFormat, void *dest, uint32_t *destSize,
                                           const void *defaultValue, uint32_t defaultSize, const char *pathFileName,
                                           int16_t waitForLock);

/* SMPropertyFileWriteValue - replace the value of a key that is in the file.
 *   key            written as given, also where a shorter key of the file answers it
 *   typeAndFormat  type and format of the value, as in typedvalue.h; SMXLT_TYPE_IPV4 can't be written
 *   value          the value, of valueSize bytes where the type does not say how many
 * The first line that answers the key, and its continuation lines, make room for one line; all else is kept as it is.
 * A KEY THAT IS NOT THERE EMPTIES THE FILE, with SM_STATUS_OK: make sure that it is. A value's line feeds and
 * backslashes are written as they are: what follows a line feed becomes a line of its own. A double of more than 31
 * characters is cut (typedvalue.h).
 *
 * The new version is written to a file with a name of eight letters and digits in the same directory, in the root
 * directory for a path without one, and swapped into place with the mode of the old one. After a failure the file is as
 * it was, but see SM_STATUS_ALREADY_EXISTS, and the temporary file may stay behind. That status comes with each write
 * to a path without a directory, where the current directory is in another file system than the root directory.
 * Status
 *   SM_STATUS_OK                 done
 *   SM_STATUS_FILE_NOT_FOUND     the temporary file can't be opened
 *   SM_STATUS_LIMIT_REACHED      a write failed, from the new line on
 *   SM_STATUS_ALREADY_EXISTS     the new version can't be put in place; the old one has ".bak" behind its name
 *   SM_STATUS_INI_OPEN_FAILED    the file can't be opened: none is made here
 *   SM_STATUS_ACCESS_DENIED      done, but the old version can't be removed; or the lock file can't be opened for lack
 *                                of permission
 *   SM_STATUS_INVALID_PARAMETER  key, value or pathFileName is NULL
 *   SM_STATUS_NO_MEMORY          as for the read
 *   SM_STATUS_TIMEOUT            the lock is held by another
 *   SM_STATUS_FAILED             no name for the temporary file; reading failed, or copying before the new line; the old
 *                                version can't be moved away; the lock file can't be opened
 * and those of SMXLTTypeValueToUTF8. */
SM_EXPORT uint32_t SMPropertyFileWriteValue(const char *key, uint32_t typeAndFormat, const void *value,
                                            uint32_t valueSize, const char *pathFileName, int16_t waitForLock);

#ifdef __cplusplus
}
#endif

#endif
