/* INI files: settings in sections of key=value lines.
 *
 * Every call takes the file's lock, opens the file, scans it from the first line, closes it and gives the lock back.
 * Nothing is kept between calls, so that each sees what other processes have written by then.
 *
 * The file, as readers take it, is plain 8-bit text whose lines end in LF; CR has no meaning. A line of up to 8449
 * bytes is one line, and a longer one comes in pieces of that size, each taken as a line of its own. As text a line
 * ends at its first zero byte.
 *
 *   ; or # in the first column    a comment
 *   blanks (spaces, tabs), then [ a section header: the name is what stands up to the first "]", and may be empty;
 *                                 what follows is ignored. Without a "]", and with a name of 256 bytes or more, the
 *                                 header is malformed and ends the scan with SM_STATUS_INI_BAD_SECTION, even if
 *                                 what is looked for lies further on
 *   blanks, then text with a =    a key line: the key is what stands between the blanks and the first "=", blanks in
 *                                 front of the "=" included; the value is all that follows up to the LF, with
 *                                 its blanks, further "=" and a CR. It may be empty
 *   anything else                 is skipped, and so are key lines above the first header
 *
 * Names are compared byte for byte. Only the first section of a name is looked at, and in it the first line of a key.
 *
 * A change never edits in place: the file is copied with the change into a temporary file beside it (eight letters
 * and digits), and two renames swap them, the old file being PATH.bak in between. A crash leaves the old file or
 * the new one, whole; every call, reading or writing, first renames a PATH.bak that it finds back to PATH. So a
 * crash before the old file is removed loses the update. A crash while copying, and every failure of the copy, leaves
 * the temporary file there for good. What is appended, which is a new section or a new file, goes straight to the end:
 * a crash then leaves a header without a key, or a torn last line. Nothing is forced to the disk: the promise holds for
 * a process that dies, not for a machine that loses power.
 *
 * Writers see the lines of the section that they change in a way of their own, with losses that are part of the
 * contract; to write a blank line in front of each header but the first, as these calls do, avoids the first two:
 *
 *   - LF and CR are blanks too. A ";" or "#" after any blanks makes a comment, and a blank line counts as one. A
 *     line without "=" is a key line, whose key is its text up to the LF.
 *   - A key that is not there yet goes in front of the comments and blank lines that precede the next header. If there
 *     are none, that header is lost, and its keys fall into this section. Deleting a key that is not there
 *     loses it in the same way.
 *   - Where the section is the last of the file, comments and blank lines at its end are dropped by the same
 *     changes.
 *   - A section is deleted from its header to the next line with "[" or "#" in the first column: a header behind
 *     blanks does not end it, and a "#" comment ends it early, so that the rest falls to the section above.
 *   - Only the first line of a key is replaced or deleted; a second one stays.
 *   - A line feed in a value is written as it is and breaks the line.
 *   - Behind a last line without a line feed, as a crash may leave one, a new key is glued to that line; a new section
 *     ends it, but then has no blank line in front.
 *   - Names are written as they are. A section is found again if it has no "]" and no line feed, a key if it has no "="
 *     and no line feed and does not begin with a blank, ";", "#" or "[". A key with "[" in front makes a malformed
 *     header, and what lies behind it cannot be read any more.
 *
 * New files have mode 0644. The others keep theirs, without set-ID and execute bits; but for an append, a change makes
 * a new file, which belongs to the writer and takes the place of a link.
 *
 * Limits: a section or key name to be written has up to 255 bytes, a text value up to 8192, binary up to 1638.
 *
 * type is one of INIValueType (types.h), a set of its own. waitForLock is 1 to wait for the file's lock without
 * limit; with any other value a busy lock gives SM_STATUS_TIMEOUT. All calls give besides, from the lock:
 * SM_STATUS_ACCESS_DENIED and SM_STATUS_FAILED when its file in the IPC directory cannot be opened,
 * SM_STATUS_NO_MEMORY when its record cannot be made. Two spellings of one path are two locks.
 *
 * Threads: any thread, any time. Readers of several processes run at once; in one process, one call at a time on a
 * path. */
#ifndef QZVEST_INI_H
#define QZVEST_INI_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMReadINIPathFileValue - reads a key's value, or, with INI_TYPE_UTF8, lists names.
 *   section       NULL, with INI_TYPE_UTF8: lists the file's sections
 *   key           NULL, with INI_TYPE_UTF8: lists the section's keys
 *   dest          where the value goes; for a list the names, each with its terminator, then one terminator more
 *   destSize      in: bytes of dest. At least 1 for text and binary, 2 for a list and INI_TYPE_BOOL, 4 for 32 bits,
 *                 8 for 64 bits and INI_TYPE_DOUBLE. Out, for INI_TYPE_UTF8: bytes of the text or list with its
 *                 terminators, or those needed; for binary and UCS-2: bytes of the value. The other types leave it as
 *                 it is on success
 *   defaultValue  NULL, or what dest is to hold after a failure, of the same type; the status stays the failure's
 *   defaultSize   bytes of it. Binary and UCS-2 take what fits into dest, the other typed values need at least their
 *                 own size. A UCS-2 default must be as long as its text with terminator
 *   pathFileName  the file's path
 * How the text is converted
 *   - INI_TYPE_BOOL: TRUE and FALSE in any case, up to the first space, so that a CR spoils them
 *   - 32 bits: as sscanf does with %lu and %ld, of which the low 32 bits are kept
 *   - 64 bits: decimal digits after white space and a sign, with no test of overflow; "-" gives 0 where there are no
 *     negative numbers
 *   - INI_TYPE_DOUBLE: as strtod does
 *   - binary: groups of four characters with commas in between, each read as %x does; one that is no number ends it
 *   No digits give 0.
 * After a failure
 *   - INI_TYPE_UTF8: once the file is open, a default is copied up to destSize, the last byte copied becomes a
 *     terminator, and destSize is that count; without a default dest is empty and destSize 0. After
 *     SM_STATUS_BUFFER_TOO_SMALL, and where the file could not be opened, dest and destSize keep what they held
 *     (destSize is the need after the former). Lists have no default: one that does not fit holds the names that did,
 *     destSize being the need; after other failures dest is a list of the names up to there, and destSize is as it was.
 *   - other types: a default is copied, and destSize is its size as used; without one destSize is 0. Not after
 *     SM_STATUS_BAD_ARGUMENT, but for an empty path, nor where binary is too large for dest: destSize is then the bytes
 * of the value. SM_STATUS_OK: delivered. SM_STATUS_BAD_ARGUMENT: unknown type; dest, destSize or path NULL; path empty;
 * destSize below the least; a UCS-2 default whose size is not its text's. SM_STATUS_BUFFER_TOO_SMALL: dest is too
 * small; for types 4 to 9 the value in the file has more than 8192 bytes. SM_STATUS_INI_OPEN_FAILED: the file cannot be
 * opened for reading. SM_STATUS_INI_BAD_SECTION: a malformed header on the way, or the file cannot be read to its end.
 * SM_STATUS_INI_NO_SECTION, SM_STATUS_INI_NO_KEY: not there; for a list, no name at all.
 * SM_STATUS_INI_BAD_VALUE: INI_TYPE_BOOL has another word or none; binary without a byte.
 * SM_STATUS_FAILED: binary of a wrong length or with a group above 255; out of memory in a lookup.
 * SM_STATUS_NO_MEMORY: out of memory in a list, for binary, or for the lock's and the backup's names. */
SM_EXPORT uint32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *dest,
                                          uint32_t *destSize, const void *defaultValue, uint32_t defaultSize,
                                          const char *pathFileName, int16_t waitForLock);

/* SMReadINIFileValue - the same, for a file in the directory "ini" below the ini path of SM_PRODUCT_DEFAULT
 * (product.h).
 *   fileName  its bare name
 * Returns the same. Besides: SM_STATUS_FAILED: that product has no ini path. SM_STATUS_BUFFER_TOO_SMALL: the whole path
 * has more than 254 bytes. Neither touches dest or destSize. */
SM_EXPORT uint32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *dest,
                                      uint32_t *destSize, const void *defaultValue, uint32_t defaultSize,
                                      const char *fileName, int16_t waitForLock);

/* SMReadINISectionKeyUTF8Value - the text of a key, or a list of names, as a heap copy.
 *   section, key  as above, NULL for lists
 *   defaultText   NULL, or what to give a copy of, up to 8192 bytes, when the file is there but not the key
 *   outSize       NULL, or gets the bytes of the result with its terminators; 0 without a result
 *   pathFileName  the file's path
 * Returns the text, to be freed with SMFreeGeneric, or NULL: not found and no default; and whatever the default, path
 * NULL or empty, the file cannot be opened or locked, more than 32768 bytes, out of memory. */
SM_EXPORT char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultText,
                                             uint32_t *outSize, const char *pathFileName, int16_t waitForLock);

/* SMReadINIEnums32Value - the value that a key's text stands for, letter case aside.
 *   table       tableCount rows, at least 2. Row 0 is never searched: its value answers for unknown words. Row 1's is
 *               the default too, when the key cannot be read
 *   multiple    1: the text is a list separated by ",", blanks around the items aside; the values of those known are
 *               combined with OR, unknown items add nothing. Else the whole text is one word
 * Returns the value, or SM_ENUM_UNREADABLE: section, key, table or path NULL, fewer than 2 rows, or no memory to split
 * a list. */
SM_EXPORT uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMINIEnumEntry *table,
                                         int32_t tableCount, uint16_t multiple, const char *pathFileName,
                                         int16_t waitForLock);

/* SMWriteINIPathFileValue - sets or deletes a key, or deletes a section.
 *   section       the section, which is appended when it is missing; never NULL
 *   key           the key; NULL, with INI_TYPE_UTF8: deletes the section
 *   value         NULL, with valueSize 0, for INI_TYPE_UTF8, UCS2 and BINARY: deletes the key. Else data of the type
 *   valueSize     bytes of it. For text the terminator counts and the size has to be exact; binary 1 to 2048, of
 *                 which 1638 can be written; the other types need at least their own size
 *   pathFileName  the file, which is made when it is missing. The last directory on the way to it is made too, with
 *                 mode 0755. The temporary file of a path without "/", and of one straight below "/", lies in the
 *                 current directory
 * To delete a key that is not in the section succeeds. After a failure the file is as it was, unless an append was
 * cut short, or the swap: see SM_STATUS_ALREADY_EXISTS and SM_STATUS_ACCESS_DENIED.
 * SM_STATUS_OK: done.
 * SM_STATUS_BAD_ARGUMENT: unknown type; a required pointer NULL; path empty or without a file name; a name of more than
 * 255 bytes; no key, but a value, where the section is missing.
 * SM_STATUS_INI_BAD_VALUE: valueSize is not the value's or is beyond the limits; NULL with a size; NULL for a type that
 * cannot be deleted by; nothing to delete from, since the section or the file is missing.
 * SM_STATUS_FILE_NOT_FOUND: the temporary file, or the file to append to, cannot be opened.
 * SM_STATUS_LIMIT_REACHED: a write failed.
 * SM_STATUS_NOT_ATTACHED: going back to the comments before the next header failed.
 * SM_STATUS_INI_OPEN_FAILED: the file cannot be opened for reading.
 * SM_STATUS_INI_BAD_SECTION: a malformed header in front of the section, or reading failed.
 * SM_STATUS_ALREADY_EXISTS: the new file could not be renamed; the next call brings the old one back.
 * SM_STATUS_ACCESS_DENIED: the change is made but the backup cannot be removed; the next call undoes the change if it
 * can rename it.
 * SM_STATUS_INVALID_PARAMETER: the places of the comments to be kept are out of order.
 * SM_STATUS_FAILED: the directory cannot be made; no free temporary name in 100 tries; the file cannot be renamed to
 * its backup; copying comments failed; binary could not be turned into text.
 * SM_STATUS_NO_MEMORY: memory ran out. */
SM_EXPORT uint32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                           uint32_t valueSize, const char *pathFileName, int16_t waitForLock);

/* SMWriteINIFileValue - the same, for a bare file name as in SMReadINIFileValue.
 * Returns the same, and the two statuses of that call. */
SM_EXPORT uint32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                       uint32_t valueSize, const char *fileName, int16_t waitForLock);

#ifdef __cplusplus
}
#endif

#endif
