// The grammar of property files, over open files: no locks, no names, no types.
#ifndef CONFIG_PROPERTYSCAN_H
#define CONFIG_PROPERTYSCAN_H

#include <cstdint>

namespace qzvest {

// The descriptors stay the caller's. Files are read from the descriptor's place on, which has to be their start.

// The text of the first entry that answers the key: it, if text has room for it with its terminator. size: in, the
// room; out, the need, unless there is no such entry. SM_STATUS_OK, SM_STATUS_BUFFER_TOO_SMALL, SM_STATUS_INI_NO_KEY,
// SM_STATUS_NO_MEMORY, SM_STATUS_FAILED after a read error.
uint32_t PropertyFind(int descriptor, const char *key, char *text, uint32_t *size);

// The keys of all entries as a multi-string, of which as much is given as there is room for; size as above, and 1
// without any key. The same statuses.
uint32_t PropertyList(int descriptor, char *keys, uint32_t *size);

// Copies the input with the first entry that answers the key replaced by the bytes of entry. Writes nothing at all, and
// succeeds, if there is none. SM_STATUS_OK, SM_STATUS_NO_MEMORY, SM_STATUS_FAILED where reading fails or copying before
// the entry, SM_STATUS_LIMIT_REACHED where writing fails from there on.
uint32_t PropertyReplace(int input, int output, const char *key, const char *entry, uint32_t entrySize);

} // namespace qzvest

#endif
