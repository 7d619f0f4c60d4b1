/* XML generator: a document (XML 1.0) written as text, forward only, into a growing buffer.
 *
 * An SMXGBuf is a document in the making, or a list of attributes for one tag: text is what has been written,
 * length its bytes. Calls append in document order; nothing is parsed, nesting is not checked, and no line break or
 * indentation is written. Names and attribute lists go in as they are, values by their type.
 *
 * Appends to the buffer report no failure: when memory runs out the piece is missing and the status stays
 * SM_STATUS_OK. A value that fails leaves in the buffer what came before it.
 *
 * Threads: a buffer has no lock and belongs to one thread at a time; the calls keep no state of their own. */
#ifndef QZVEST_XML_H
#define QZVEST_XML_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMXGBufAlloc - a new buffer.
 *   size    bytes of the first text buffer; below 64 it is 64
 *   header  1: the text begins with <?xml version="1.0" encoding="UTF-8"?>; any other value: it is empty
 * Returns the buffer, for SMXGBufFree or SMXGBufFreeGetContent, or NULL when memory runs out. */
SM_EXPORT SMXGBuf *SMXGBufAlloc(uint32_t size, int16_t header);

/* SMXGBufReAllocContent - free the text and start again in the same buffer.
 *   buffer  or NULL, which does nothing
 *   size    bytes of the new text buffer, with no minimum
 *   header  as above
 * Returns the new text, the buffer's. NULL for a NULL buffer, size 0, or when memory runs out: the buffer then has no
 *   text, and appends do nothing until this call gives it one. */
SM_EXPORT char *SMXGBufReAllocContent(SMXGBuf *buffer, uint32_t size, int16_t header);

/* SMXGBufFree - free a buffer with its text. NULL does nothing. Returns NULL. */
SM_EXPORT SMXGBuf *SMXGBufFree(SMXGBuf *buffer);

/* SMXGBufFreeGetContent - free a buffer but not its text.
 * Returns the text, which is now the caller's, for SMXGBufFreeContent or SMFreeGeneric; NULL for NULL. */
SM_EXPORT char *SMXGBufFreeGetContent(SMXGBuf *buffer);

/* SMXGBufFreeContent - free a text of SMXGBufFreeGetContent or SMXGEscapeXMLUTF8Str. NULL does nothing. */
SM_EXPORT void SMXGBufFreeContent(char *text);

/* SMXGBufCatBeginNode, SMXGBufCatEndNode, SMXGBufCatEmptyNode - append <name ...>, </name> or <name ... />.
 *   attributes  a list that SMXGBufCatAttribute has filled, the caller's to free; NULL or an empty one: no attributes.
 *               It is taken up to its first zero byte
 * Returns SM_STATUS_OK, SM_STATUS_INVALID_PARAMETER (buffer or name NULL; nothing is appended). */
SM_EXPORT uint32_t SMXGBufCatBeginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes);
SM_EXPORT uint32_t SMXGBufCatEndNode(SMXGBuf *buffer, const char *name);
SM_EXPORT uint32_t SMXGBufCatEmptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes);

/* SMXGBufCatNodeValue - append a value as text.
 *   value      the binary form; a text of SMXLT_TYPE_UTF8 or SMXLT_TYPE_UCS2 itself; for the types 48 and 50 a pointer
 *              to UTF-8 text, for 49 a pointer to UCS-2 text
 *   valueSize  bytes at value; looked at for SMXLT_TYPE_BYTES, and for UTF-8 text, where it counts the terminator:
 *              without an escape valueSize - 1 bytes are taken, whatever they are, and with 0 the whole text
 *   type       one of SMXLTType but SMXLT_TYPE_IPV4 and SMXLT_TYPE_HEX, or 48 to 50
 *   options    or NULL for the default format and no escape. format is or'ed into the type that
 *              SMXLTTypeValueToUTF8 is asked for. With an escapeDepth text goes through SMXGEscapeXMLUTF8Str, whole,
 *              with valueSize - 1 as the estimate for UTF-8 text; where that gives NULL, as with a valueSize of 0 or 1,
 *              the text goes in as without an escape
 * Integers of 8 to 32 bits in SMXLT_FORMAT_BINARY, and a dump of at least one byte, are appended WITH their terminator:
 * the document goes on behind a zero byte.
 * Returns SM_STATUS_OK, SM_STATUS_INVALID_PARAMETER (buffer NULL), SM_STATUS_NOT_FOUND (value NULL),
 *   SM_STATUS_NO_MEMORY (for the text of a value that is no text), SM_STATUS_BAD_ARGUMENT (the format is none of the
 *   type's, or type is 33 to 35 or 37 to 40), SM_STATUS_FAILED (any other type; UCS-2 text that cannot be converted,
 *   or no memory for it; a NULL pointer at value; no bytes, but
 *   for a dump), or what SMXLTTypeValueToUTF8 returned. */
SM_EXPORT uint32_t SMXGBufCatNodeValue(SMXGBuf *buffer, const void *value, uint32_t valueSize, uint8_t type,
                                       const SMXGValueOptions *options);

/* SMXGBufCatAttribute - append name="value" to a list of attributes, behind a space if the list holds something.
 *   the rest  as above; text needs an escapeDepth if it may hold a quote
 * Returns SM_STATUS_INVALID_PARAMETER (attributes, name or value NULL; nothing is appended), else what
 *   SMXGBufCatNodeValue gives for the value; both quotes are there in any case. */
SM_EXPORT uint32_t SMXGBufCatAttribute(SMXGBuf *attributes, const char *name, const void *value, uint32_t valueSize,
                                       uint8_t type, const SMXGValueOptions *options);

/* SMXGBufCatNode - append <name ...>value</name>.
 *   value     NULL: the two tags alone
 *   the rest  as above
 * Returns SM_STATUS_OK, SM_STATUS_INVALID_PARAMETER (buffer or name NULL; nothing is appended), or what
 *   SMXGBufCatNodeValue gives for a value that is not NULL: if that fails the end tag is missing. */
SM_EXPORT uint32_t SMXGBufCatNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value,
                                  uint32_t valueSize, uint8_t type, const SMXGValueOptions *options);

/* SMXGEscapeXMLUTF8Str - text with the five special characters of XML replaced by &quot; &apos; &lt; &gt; &amp;. An
 * ampersand that begins one of these references is kept; one of a numeric reference is replaced.
 *   text       UTF-8, not checked
 *   sizeInOut  in: an estimate of the result's bytes, above 0; out: its bytes, without the terminator
 *   passes     how often to go over the text, at most 16. Passes after the first change nothing, but that an empty
 *              result becomes NULL
 * Returns the result, the caller's, for SMXGBufFreeContent. NULL when text or sizeInOut is NULL or passes is 0 (the
 *   size stays as it is), and when the estimate is 0 or there is no memory for it (the size becomes 0). When memory
 *   runs out later pieces of the result are missing. */
SM_EXPORT char *SMXGEscapeXMLUTF8Str(const char *text, uint32_t *sizeInOut, uint32_t passes);

#ifdef __cplusplus
}
#endif

#endif
