/* Messages of the suite by number and language.
 *
 * A table of messages is an INI file with two sections. "ASCII EN_US DEFAULT STRING ID SECTION" has the default texts,
 * under keys of the form 0:ID; "MISCELLANEOUS STRING ID SECTION" those of other languages, under LANGUAGE:ID. The
 * numbers are in upper-case hexadecimal without leading zeros. A text ends at its first carriage return or line feed.
 * Languages are those of language.h; 0, 437 and 1033 are the default texts.
 *
 *   stringId    the number
 *   languageId  in: the language; out: 0 if the default text was looked up, else unchanged. NULL: the default text
 *
 * There is no status: 0 says that nothing was delivered.
 *
 * Threads: any number may call. The file is read under its lock, which is waited for without limit. */
#ifndef QZVEST_STRINGID_H
#define QZVEST_STRINGID_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMGetUTF8StrFromIDPathFile - a text of a table, of at most 2,047 bytes.
 *   pathFileName  the table; NULL delivers "Invalid Path File Name" as the text
 *   dest          takes the text; may be NULL
 *   destSize      in: bytes at dest; out: bytes delivered. May be NULL
 * When memory runs out for its own buffers, "Failed to allocate memory" is delivered as the text.
 * Returns the bytes of the text with its terminator, which dest holds; with both dest and destSize NULL those that it
 * would need. 0, also in *destSize, if there is no such text, the table cannot be read (its file, its lock or memory
 * for them is not to be had), dest is too small, or just one of the two is NULL. */
SM_EXPORT uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringId, uint32_t *languageId, const char *pathFileName,
                                              char *dest, uint32_t *destSize);

/* SMGetUCS2StrFromID - a text of the suite's own table, of at most 1,023 bytes in UTF-8, as UCS-2.
 *   stringId  ids from "BaseID" (2304) to "BaseID" + "oemRange" (32), both included, have "offset" (0) added. The three
 *             are in the section "OEM Configuration" of qzisdy64.ini, beside the table; they are read once, but again
 *             in each call while "BaseID" is 0
 *   dest      takes the text; may be NULL
 *   destSize  in: bytes at dest; out: what is returned. May be NULL
 * The table is qzsdst64.ini in the directory ini below the ini path of product SM_PRODUCT_DEFAULT.
 * Returns the bytes delivered, with the terminator. A text that is not there, or is too long, delivers the empty text:
 * 2. If twice the bytes of the text in UTF-8 is more than *destSize, that need, with dest left alone: compare before
 * use.
 * Without dest or without destSize, the bytes of the text in UTF-8.
 * When memory runs out, the text is "Failed to allocate memory" or empty.
 * 0 if the table's place is not known or finds no memory, *destSize is below 2 for a text that is not there, or the
 * text is not valid UTF-8: dest may then hold the beginning of it, without a terminator. */
SM_EXPORT uint32_t SMGetUCS2StrFromID(uint32_t stringId, uint32_t *languageId, uint16_t *dest, uint32_t *destSize);

#ifdef __cplusplus
}
#endif

#endif
