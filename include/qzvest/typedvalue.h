/* Typed values: numbers, booleans, languages, times, bytes, texts and addresses as text, and back.
 *
 * typeAndFormat is a type (SMXLTType) or'ed with a format (SMXLT_FORMAT_...); the upper half is ignored. Values are in
 * host byte order and may lie at any address, UCS-2 text at an even one.
 *
 *   type      bytes  text
 *   BOOL      2      "true" or "false"; read in any case
 *   INT8      1      decimal, read with a sign. Octal and hexadecimal ("0x" before it is optional when read, at most
 *   INT16     2      8 digits) are without a sign, and so is base 2, which is written only: they show a negative
 *   INT32     4      value as 32 bits
 *   INT64     8      decimal; digits beyond 64 bits wrap when read
 *   UINT8     1      as INT8; a minus sign wraps the number into 32 bits before its range is tested
 *   UINT16    2
 *   UINT32    4
 *   UINT64    8      decimal, as INT64, where a negative number reads as 0; hexadecimal with at most 16 digits
 *                    when read
 *   DOUBLE    8      three decimals; read as strtod (C) does, in the current locale, but a decimal integer as INT64
 *   LANGUAGE  4      a name of language.h
 *   TIME      8      that of ctime (C) without its line feed; not read
 *   BYTES     any    default: two upper-case digits for each byte; SMXLT_FORMAT_HEX: "0x0A,0xFF";
 *                    SMXLT_FORMAT_BINARY, written only: a dump, in lines of 80 characters for 16 bytes each:
 *                    address, digits, characters from space to "z"
 *   UTF8      any    the same
 *   UCS2      any    transcoded as in transcode.h
 *   IPV4      4      dotted quad, as in netaddress.h
 *   HEX       any    two upper-case digits for each byte, whatever the format; at most 63 bytes are written
 *
 * Threads: no state is shared; any number may call, each with its own memory. */
#ifndef QZVEST_TYPEDVALUE_H
#define QZVEST_TYPEDVALUE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMXLTUTF8ToTypeValue - the value that a text stands for.
 *   text       NUL-terminated. A comma list of BYTES loses its commas to terminators, also in a sizing call and in
 *              one that fails: give a copy
 *   value      takes the value; as it was after a failure, but UCS2 may have begun. NULL asks for the size. It may
 *              overlap text for UTF8
 *   sizeInOut  in: bytes at value; must be 0 without value. Out: bytes of the value, for types of a fixed size also
 *              after a failure; 0 for text that is no BYTES or HEX, for TIME and for an unknown type; for UCS2 it
 *              stays after a failure
 * Returns
 *   SM_STATUS_OK                 stored; for UCS2 also the answer of a sizing call
 *   SM_STATUS_UNSUPPORTED        octal for INT64 or UINT64, hexadecimal for INT64
 *   SM_STATUS_BAD_ARGUMENT       unknown type; TIME; a format that BYTES can't be read in (sizeInOut: bytes of the
 *                                text)
 *   SM_STATUS_BUFFER_TOO_SMALL   value is NULL or has too little room; sizeInOut has the needed bytes
 *   SM_STATUS_NOT_ATTACHED       IPV4: no network state
 *   SM_STATUS_BAD_FORMAT         UCS2: malformed text
 *   SM_STATUS_INVALID_PARAMETER  text or sizeInOut is NULL; a sizing call with sizeInOut not 0; no number of the
 *                                format, no BOOL
 *   SM_STATUS_NO_MEMORY          IPV4: memory ran out
 *   SM_STATUS_VALUE_TOO_LARGE    a number above the range of a type of 8 or 16 bits
 *   SM_STATUS_VALUE_TOO_SMALL    and below it. A number beyond 32 bits but within 64 is cut to 32 before this, and
 *                                no failure
 *   SM_STATUS_FAILED             no LANGUAGE, IPV4, BYTES or HEX; memory ran out for BYTES or HEX. A comma list
 *                                whose bytes, terminator included, are no multiple of 5 leaves sizeInOut as it is
 * DOUBLE never fails: text without a number is 0.0, and what follows a number is ignored. */
SM_EXPORT uint32_t SMXLTUTF8ToTypeValue(char *text, void *value, uint32_t *sizeInOut, uint32_t typeAndFormat);

/* SMXLTTypeValueToUTF8 - the text of a value. A format that a number does not have acts as the default.
 *   value      not NULL
 *   valueSize  bytes at value; looked at for BYTES, UTF8 and HEX only
 *   text       takes the text with its terminator; as it was after a failure, but UCS2 may have begun. NULL, with
 *              sizeInOut 0, asks for the size
 *   sizeInOut  in: bytes at text. Out: bytes of the text with its terminator; as it was after other failures than
 *              SM_STATUS_BUFFER_TOO_SMALL
 * The needed size is a worst case for numbers, and must be there however short the text is: 17 for INT8 to INT32, 16
 * for UINT8 to UINT32, 33 for all six in base 2; 33 for INT64, 32 for UINT64 and DOUBLE, 16 for LANGUAGE, 64 for
 * TIME. A DOUBLE whose text is longer than sizeInOut is cut. UTF8 needs valueSize bytes and copies them all. BYTES of
 * no bytes have no text but for the dump, which is empty.
 * Returns
 *   SM_STATUS_OK                 written
 *   SM_STATUS_BAD_ARGUMENT       unknown type; a format that BYTES don't have; IPV4 without text
 *   SM_STATUS_BUFFER_TOO_SMALL   text is NULL or has too little room; sizeInOut has the needed bytes, but for UCS2
 *                                with a text, where it stays
 *   SM_STATUS_NOT_ATTACHED       IPV4: no network state
 *   SM_STATUS_BAD_FORMAT         UCS2: a surrogate in a value that begins with one but not with a pair
 *   SM_STATUS_INVALID_PARAMETER  value or sizeInOut is NULL
 *   SM_STATUS_NO_MEMORY          HEX: memory ran out
 *   SM_STATUS_FAILED             a TIME that has no text; BYTES of no bytes; memory ran out for BYTES; IPV4: the C
 *                                library gave no text */
SM_EXPORT uint32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *sizeInOut,
                                        uint32_t typeAndFormat);

#ifdef __cplusplus
}
#endif

#endif
