// What the INI calls are made of: one scan of an open file, one rewrite of it.
#ifndef CONFIG_INICORE_H
#define CONFIG_INICORE_H

#include <qzvest/status.h>

#include "config/linereader.h"

namespace qzvest {

constexpr uint32_t kININameRoom = 256;   // bytes of a section or key name with its terminator
constexpr uint32_t kINIValueRoom = 8193; // bytes of a value with its terminator
constexpr uint32_t kINIPathRoom = 256;

// Reads on to the header of a section. SM_STATUS_INI_NO_SECTION at the end of the file, SM_STATUS_INI_BAD_SECTION after
// a malformed header and after a read error; the reader then stands behind the last line that was looked at, which
// began at lineStart.
uint32_t FindSection(LineReader &reader, const char *section, int64_t &lineStart);

// Looks up one value, or with a NULL key the keys of the section, or with a NULL section the sections of the file.
uint32_t INIReadFile(int descriptor, const char *section, const char *key, char *dest, uint32_t *destSize);

// Writes the content of input to output with a key set, or deleted with a NULL value, or with a NULL key the section
// deleted. SM_STATUS_INI_NO_SECTION when there is none; nothing is written then.
uint32_t INIRewrite(int input, int output, const char *section, const char *key, const char *value);

// The path of a file below the ini directory of the default product; SM_STATUS_FAILED, SM_STATUS_BUFFER_TOO_SMALL,
// SM_STATUS_BAD_ARGUMENT for NULL.
uint32_t INIPathOf(const char *fileName, char (&path)[kINIPathRoom]);

struct INIReadResult {
    uint32_t status;
    bool defaulted; // the default is in the destination
};

// The road of every read. The size word as that of SMReadINIPathFileValue for text.
INIReadResult INIRead(const char *section, const char *key, char *dest, uint32_t *destSize, const char *defaultText,
                      uint32_t defaultSize, const char *path, int16_t wait);

// The road of every change: value is text of valueSize bytes with its terminator, or NULL.
uint32_t INIWrite(const char *section, const char *key, const char *value, uint32_t valueSize, const char *path,
                  int16_t wait);

} // namespace qzvest

#endif
