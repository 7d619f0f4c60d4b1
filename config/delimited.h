// Lists of texts with one separator turned into lists with another.
#ifndef CONFIG_DELIMITED_H
#define CONFIG_DELIMITED_H

#include <cstdint>

namespace qzvest {

char *SMUTF8ConvertXSVToYSV(const char *source, char fromDelimiter, char toDelimiter, uint32_t *count, uint32_t *size);

} // namespace qzvest

#endif
