// XML written forward into a growable text, with typed values turned into text on the way.
#ifndef TEXT_XML_H
#define TEXT_XML_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

SMXGBuf *SMXGBufAlloc(uint32_t size, int16_t header);
char *SMXGBufReAllocContent(SMXGBuf *buffer, uint32_t size, int16_t header);
SMXGBuf *SMXGBufFree(SMXGBuf *buffer);
char *SMXGBufFreeGetContent(SMXGBuf *buffer);
void SMXGBufFreeContent(char *text);

uint32_t SMXGBufCatBeginNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes);
uint32_t SMXGBufCatEndNode(SMXGBuf *buffer, const char *name);
uint32_t SMXGBufCatEmptyNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes);
uint32_t SMXGBufCatNodeValue(SMXGBuf *buffer, const void *value, uint32_t valueSize, uint8_t type,
                             const SMXGValueOptions *options);
uint32_t SMXGBufCatAttribute(SMXGBuf *attributes, const char *name, const void *value, uint32_t valueSize, uint8_t type,
                             const SMXGValueOptions *options);
uint32_t SMXGBufCatNode(SMXGBuf *buffer, const char *name, const SMXGBuf *attributes, const void *value,
                        uint32_t valueSize, uint8_t type, const SMXGValueOptions *options);

} // namespace qzvest

#endif
