/* Text that configuration holds: lists of texts with a separator, and the names file of PCI devices.
 *
 * A multi-string is a row of texts, each with its NUL, closed by one NUL more.
 *
 * Threads: no shared state, any call at any time. No file lock is taken. */
#ifndef QZVEST_DELIMITED_H
#define QZVEST_DELIMITED_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMUTF8ConvertXSVToYSV - turn a list with one separator into a list with another.
 *   source         text, or with a fromDelimiter of 0 a multi-string
 *   fromDelimiter  one byte; runs of it count as one. 0: source is a multi-string
 *   toDelimiter    one byte. 0: the result is a multi-string
 *   count          out, may be NULL
 *   size           out, may be NULL: bytes of the result
 * From text, each item loses the tabs, line feeds, carriage returns and blanks at its ends, and what is then empty is
 * dropped. Each item of the result is followed by toDelimiter, the last one too. count is the number of items, size
 * the bytes with the closing NUL: without any item the empty text, 0 and 1.
 * From a multi-string, its texts are joined as they are by toDelimiter, with none behind the last: count is the number
 * of delimiters, one less than the texts, and size the bytes with the terminator of the last text. One NUL more lies
 * behind it, not counted.
 * Returns the list, the caller's, to be freed with SMFreeMem. NULL, count and size 0, for a NULL source, for a
 * multi-string without texts, for a list of 4 GiB or more, and when memory runs out. */
SM_EXPORT char *SMUTF8ConvertXSVToYSV(const char *source, char fromDelimiter, char toDelimiter, uint32_t *count,
                                      uint32_t *size);

/* SMReadPCIDevFile - the names of a PCI device and of its vendor.
 *   vendorId, deviceId        the device
 *   subVendorId, subDeviceId  its subsystem; 65535 for a subVendorId also stands for the place before any "O" line
 *   pathFileName              the names file
 *   vendorName, deviceName    buffers. A name is cut at the buffer's size less one byte; the buffer's last byte is
 *                             cleared with any name
 *   vendorNameSize, deviceNameSize  in: bytes of the buffers. Out: length of the whole name without terminator, which
 *                             may be more than the buffer holds; 0 without a name
 *
 * The file holds one record a line: a kind, an ID in up to four hexadecimal digits and a name, split by tabs, of which
 * several count as one. What follows the third field is not looked at; ";" begins a comment anywhere. Lines of fewer
 * fields, of another kind or without an ID are skipped, but a "V" or "D" line without one may end the search; a line of
 * more than 8,449 bytes counts as several. Kinds, in capitals or small letters, in the order of the file: V  a vendor
 *   D  a device of the vendor above
 *   O  a sub-vendor of the device above
 *   S  a subsystem of the sub-vendor above
 * The search ends at the "V" line after the vendor's and at the "D" line after the device's. An "O" line that matches
 * replaces the name of the device, and so does an "S" line: the last one stays.
 *
 * Status: SM_STATUS_OK when vendor and device were found. SM_STATUS_INVALID_PARAMETER for a NULL, then nothing changes;
 * for a size of 0, and for an empty path, which makes both names empty. SM_STATUS_NO_MEMORY. SM_STATUS_FILE_NOT_FOUND
 * when the file cannot be opened or has no line of the vendor or no "D" line of the device; names that were found on
 * the way stay. After every failure but that of a NULL the sizes tell the names' lengths, 0 where there is none. */
SM_EXPORT uint32_t SMReadPCIDevFile(uint16_t vendorId, uint16_t deviceId, uint16_t subVendorId, uint16_t subDeviceId,
                                    const char *pathFileName, char *vendorName, uint32_t *vendorNameSize,
                                    char *deviceName, uint32_t *deviceNameSize);

#ifdef __cplusplus
}
#endif

#endif
