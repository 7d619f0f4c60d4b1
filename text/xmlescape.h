// Text made safe for the inside of an XML element or attribute.
#ifndef TEXT_XMLESCAPE_H
#define TEXT_XMLESCAPE_H

#include <cstdint>

namespace qzvest {

char *SMXGEscapeXMLUTF8Str(const char *text, uint32_t *sizeInOut, uint32_t passes);

} // namespace qzvest

#endif
