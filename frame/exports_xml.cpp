#include <qzvest/xml.h>

#include "text/xml.h"
#include "text/xmlescape.h"

extern "C" {

SMXGBuf *SMXGBufAlloc(uint32_t size, int16_t header)
{
    return qzvest::SMXGBufAlloc(size, header);
}

char *SMXGBufReAllocContent(SMXGBuf *buffer, uint32_t size, int16_t header)
{
    return qzvest::SMXGBufReAllocContent(buffer, size, header);
}

SMXGBuf *SMXGBufFree(SMXGBuf *buffer)
{
    return qzvest::SMXGBufFree(buffer);
}

char *SMXGBufFreeGetContent(SMXGBuf *buffer)
{
    return qzvest::SMXGBufFreeGetContent(buffer);
}

void SMXGBufFreeContent(char *text)
{
    qzvest::SMXGBufFreeContent(text);
}

uint32_t SMXGBufCatBeginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes)
{
    return qzvest::SMXGBufCatBeginNode(buffer, name, attributes);
}

uint32_t SMXGBufCatEndNode(SMXGBuf *buffer, const char *name)
{
    return qzvest::SMXGBufCatEndNode(buffer, name);
}

uint32_t SMXGBufCatEmptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes)
{
    return qzvest::SMXGBufCatEmptyNode(buffer, name, attributes);
}

uint32_t SMXGBufCatNodeValue(SMXGBuf *buffer, const void *value, uint32_t valueSize, uint8_t type,
                             const SMXGValueOptions *options)
{
    return qzvest::SMXGBufCatNodeValue(buffer, value, valueSize, type, options);
}

uint32_t SMXGBufCatAttribute(SMXGBuf *attributes, const char *name, const void *value, uint32_t valueSize, uint8_t type,
                             const SMXGValueOptions *options)
{
    return qzvest::SMXGBufCatAttribute(attributes, name, value, valueSize, type, options);
}

uint32_t SMXGBufCatNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value,
                        uint32_t valueSize, uint8_t type, const SMXGValueOptions *options)
{
    return qzvest::SMXGBufCatNode(buffer, name, attributes, value, valueSize, type, options);
}

char *SMXGEscapeXMLUTF8Str(const char *text, uint32_t *sizeInOut, uint32_t passes)
{
    return qzvest::SMXGEscapeXMLUTF8Str(text, sizeInOut, passes);
}

} // extern "C"
