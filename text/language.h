// Which language the process speaks.
#ifndef TEXT_LANGUAGE_H
#define TEXT_LANGUAGE_H

#include <cstdint>

namespace qzvest {

// The language that "LANG" names, read anew each time; 1033 when it names none of the table.
uint32_t SMGetLocalLanguageID();

// found: 0 when the name is in the table, else -1 and the default's ID.
uint32_t LanguageNameToID(const char *name, int32_t *found);

// "en_US" for an ID that is not in the table.
const char *LanguageIDToName(uint32_t id);

// The local language's name on the heap, the caller's; NULL when memory runs out.
char *LocalLanguageNameDup();

} // namespace qzvest

#endif
