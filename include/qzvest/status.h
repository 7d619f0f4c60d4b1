/* Statuses of libqzvest: what a call returns as uint32_t. Each call's own comment says which it gives. */
#ifndef QZVEST_STATUS_H
#define QZVEST_STATUS_H

#include <stdint.h>

/* General failure: one of the operating system, or an inconsistency, that has no status of its own. */
#define SM_STATUS_FAILED UINT32_C(0xFFFFFFFF)
/* Done. */
#define SM_STATUS_OK UINT32_C(0)
/* The requested radix does not exist for the type; the log mask asks for the system log, which has no file. */
#define SM_STATUS_UNSUPPORTED UINT32_C(1)
/* Bad argument of the older families; unknown type code or format. */
#define SM_STATUS_BAD_ARGUMENT UINT32_C(2)
/* A wait ran out, or a lock is busy. */
#define SM_STATUS_TIMEOUT UINT32_C(3)
/* File or directory not found. */
#define SM_STATUS_FILE_NOT_FOUND UINT32_C(7)
/* The file's status could not be read. */
#define SM_STATUS_FILE_STAT_FAILED UINT32_C(9)
/* Index at or beyond the count, or ID not in use. */
#define SM_STATUS_NOT_IN_USE UINT32_C(12)
/* Destination missing or too small; the size word, where there is one, holds the needed size unless the call says
 * otherwise. */
#define SM_STATUS_BUFFER_TOO_SMALL UINT32_C(16)
/* Network state not attached. */
#define SM_STATUS_NOT_ATTACHED UINT32_C(17)
/* No entry found. */
#define SM_STATUS_NO_ENTRY UINT32_C(18)
/* A fixed capacity is full: bytes or entries of a data object, a counter at its maximum, disk space. */
#define SM_STATUS_LIMIT_REACHED UINT32_C(19)
/* The file exists. */
#define SM_STATUS_FILE_EXISTS UINT32_C(20)
/* No such ID, key or item; also directory not found. */
#define SM_STATUS_NOT_FOUND UINT32_C(256)
/* Data or handle of the wrong kind: bad magic, ID beyond a table, handle of another kind, directory not empty. */
#define SM_STATUS_BAD_FORMAT UINT32_C(257)
/* The key or ID is already present; also rename of a new file failed. */
#define SM_STATUS_ALREADY_EXISTS UINT32_C(258)
/* A configuration file cannot be opened for reading. */
#define SM_STATUS_INI_OPEN_FAILED UINT32_C(260)
/* A malformed section header was met on the way. */
#define SM_STATUS_INI_BAD_SECTION UINT32_C(261)
/* Section not found, or no section at all in a section list. */
#define SM_STATUS_INI_NO_SECTION UINT32_C(262)
/* Key not found, or no key in a key list. */
#define SM_STATUS_INI_NO_KEY UINT32_C(263)
/* A value's text cannot be converted. */
#define SM_STATUS_INI_BAD_VALUE UINT32_C(264)
/* Access denied. */
#define SM_STATUS_ACCESS_DENIED UINT32_C(270)
/* Invalid argument. */
#define SM_STATUS_INVALID_PARAMETER UINT32_C(271)
/* Memory exhausted. */
#define SM_STATUS_NO_MEMORY UINT32_C(272)
/* Value above the range of the type. */
#define SM_STATUS_VALUE_TOO_LARGE UINT32_C(290)
/* Value below the range of the type. */
#define SM_STATUS_VALUE_TOO_SMALL UINT32_C(291)

/* What the readers of enumerations return in place of a status when they cannot be asked at all. */
#define SM_ENUM_UNREADABLE UINT32_C(0x80000000)

#endif
