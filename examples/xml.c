/* Writes a block as one XML document: an element for each object, array and value, nested as they are. */
#include "client.h"
#include "machine.h"

#include <qzvest/sdo.h>
#include <qzvest/xml.h>

#include <stdio.h>
#include <string.h>

enum { DOCUMENT_ROOM = 4096, ATTRIBUTES_ROOM = 128 }; /* bytes to begin with; both grow */

/* After the first failure nothing more is written, so that the walk ends with its status. */
typedef struct Document {
    SMXGBuf *text;
    SMXGBuf *attributes; /* of the next element */
    uint32_t status;
} Document;

static void BeginAttributes(Document *document)
{
    if (SMXGBufReAllocContent(document->attributes, ATTRIBUTES_ROOM, 0) == NULL) {
        document->status = SM_STATUS_NO_MEMORY;
    }
}

static void AddAttribute(Document *document, const char *name, const void *value, uint32_t size, uint8_t type)
{
    static const SMXGValueOptions escaped = {SMXLT_FORMAT_DEFAULT, 1};
    if (document->status == SM_STATUS_OK) {
        document->status = SMXGBufCatAttribute(document->attributes, name, value, size, type, &escaped);
    }
}

static void AddTextAttribute(Document *document, const char *name, const char *text)
{
    AddAttribute(document, name, text, (uint32_t)strlen(text) + 1, SMXLT_TYPE_UTF8);
}

/* The bytes of the character that a terminated text begins with; 0 where it is no character that XML has. */
static uint32_t CharacterSize(const char *text)
{
    static const uint32_t least[] = {0, ' ', 0x80, 0x800, 0x10000};
    const uint8_t lead = (uint8_t)text[0];
    const uint32_t size = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
    uint32_t character = size == 1 ? lead : lead & (0x7FU >> size);
    for (uint32_t i = 1; i < size; ++i) {
        if (((uint8_t)text[i] & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | ((uint8_t)text[i] & 0x3F);
    }
    const int excluded = (character >= 0xD800 && character <= 0xDFFF) || character == 0xFFFE || character == 0xFFFF;
    return character < least[size] || character > 0x10FFFF || excluded ? 0 : size;
}

/* A mount point may hold control characters, and bytes that are not UTF-8. */
static int CanBeText(const char *text, uint32_t size)
{
    if (size == 0 || memchr(text, '\0', size) != text + size - 1) {
        return 0;
    }
    while (*text != '\0') {
        const uint32_t step = CharacterSize(text);
        if (step == 0) {
            return 0;
        }
        text += step;
    }
    return 1;
}

static void AddValue(Document *document, uint8_t kind, const void *data, uint32_t size)
{
    static const SMXGValueOptions escaped = {SMXLT_FORMAT_DEFAULT, 1};
    uint8_t type = TypeOf(kind, size);
    if (type == SMXLT_TYPE_UTF8 && !CanBeText(data, size)) {
        type = SMXLT_TYPE_BYTES;
    }
    AddTextAttribute(document, "kind", KindName(kind, 0));
    if (type == SMXLT_TYPE_BYTES) {
        AddTextAttribute(document, "written", "hex");
    }
    if (document->status == SM_STATUS_OK) {
        document->status = SMXGBufCatNode(document->text, "value", document->attributes, data, size, type, &escaped);
    }
}

static void BeginElement(Document *document, int isArray, uint32_t count)
{
    const char *name = isArray ? "array" : "object";
    if (document->status == SM_STATUS_OK) {
        document->status = count == 0 ? SMXGBufCatEmptyNode(document->text, name, document->attributes)
                                      : SMXGBufCatBeginNode(document->text, name, document->attributes);
    }
}

/* The attributes of a nested block are those of the entry that holds it, which are there already; an element of an
 * array has its place instead. */
static uint32_t BeginBlock(void *context, uint64_t cookie, uint16_t isArray, uint32_t count, uint32_t arrayIndex,
                           const SMSDOBinary *block)
{
    Document *document = context;
    (void)cookie;
    (void)block;
    if (arrayIndex != SM_SDO_NO_INDEX) {
        BeginAttributes(document);
        AddAttribute(document, "index", &arrayIndex, sizeof arrayIndex, SMXLT_TYPE_UINT32);
    }
    BeginElement(document, isArray, count);
    return document->status;
}

static uint32_t AddEntry(void *context, uint64_t *childCookieOut, uint16_t id, uint8_t typeBits6And7, uint8_t typeBit5,
                         uint8_t typeBit4, uint8_t kind, uint32_t size, const void *data)
{
    static const int16_t yes = 1;
    Document *document = context;
    const char *label = LabelOf(id);
    (void)typeBits6And7; /* the vocabulary gives them no meaning */
    *childCookieOut = id;
    BeginAttributes(document);
    AddAttribute(document, "id", &id, sizeof id, SMXLT_TYPE_UINT16);
    if (label != NULL) {
        AddTextAttribute(document, "name", label);
    }
    if (typeBit5 != 0) {
        AddAttribute(document, "open", &yes, sizeof yes, SMXLT_TYPE_BOOL);
    }
    if (kind != SM_SDO_KIND_FLAT) {
        AddValue(document, kind, data, size);
    } else if (SMSDOBinaryGetCount(data, NULL) == 0) { /* the walk does not tell of an empty block */
        BeginElement(document, typeBit4, 0);
    }
    return document->status;
}

static uint32_t EndBlock(void *context, uint64_t cookie, uint16_t isArray)
{
    Document *document = context;
    (void)cookie;
    return SMXGBufCatEndNode(document->text, isArray ? "array" : "object");
}

static uint32_t Write(Document *document, const SMSDOBinary *block)
{
    if (document->text == NULL || document->attributes == NULL) {
        return SM_STATUS_NO_MEMORY;
    }
    AddTextAttribute(document, "name", "machine");
    if (document->status != SM_STATUS_OK) {
        return document->status;
    }
    if (SMSDOBinaryGetCount(block, NULL) == 0) {
        BeginElement(document, 0, 0);
        return document->status;
    }
    return SMSDOBinaryWalk(block, document, BeginBlock, AddEntry, NULL, EndBlock, 1);
}

int PrintXML(const SMSDOBinary *block)
{
    Document document = {SMXGBufAlloc(DOCUMENT_ROOM, 1), SMXGBufAlloc(ATTRIBUTES_ROOM, 0), SM_STATUS_OK};
    const uint32_t status = Write(&document, block);
    if (status == SM_STATUS_OK) {
        (void)fwrite(document.text->text, 1, document.text->length, stdout); /* main looks for errors */
        putchar('\n');
    }
    SMXGBufFree(document.text);
    SMXGBufFree(document.attributes);
    return status == SM_STATUS_OK || ClientFailed("writing the XML document", status);
}
