#include "text/language.h"

#include <cstdlib>
#include <cstring>

#include "text/utf8.h"

namespace qzvest {
namespace {

struct Language {
    const char *name;
    uint32_t id;
};

constexpr Language kDefault = {"en_US", 1033};

// clang-format off
constexpr Language kLanguages[] = {
    {"es", 1034},
    {"de", 1031},
    kDefault,
    {"en_GB", 2057},
    {"fr", 1036},
    {"ja", 1041},
    {"ko", 2066}, // not the 1042 that one would expect: stored settings hold this number
    {"pt_BR", 1046},
    {"zh", 2052},
    {"zh_TW", 1028},
};
// clang-format on

} // namespace

uint32_t LanguageNameToID(const char *name, int32_t *found)
{
    for (const Language &language : kLanguages) {
        if (std::strcmp(language.name, name) == 0) {
            *found = 0;
            return language.id;
        }
    }
    *found = -1;
    return kDefault.id;
}

const char *LanguageIDToName(uint32_t id)
{
    for (const Language &language : kLanguages) {
        if (language.id == id)
            return language.name;
    }
    return kDefault.name;
}

// The value counts whole: a character set behind the name, or a region that is not in the table, makes it unknown.
uint32_t SMGetLocalLanguageID()
{
    const char *name = std::getenv("LANG");
    int32_t found;
    return name != nullptr ? LanguageNameToID(name, &found) : kDefault.id;
}

char *LocalLanguageNameDup()
{
    return SMUTF8Strdup(LanguageIDToName(SMGetLocalLanguageID()));
}

} // namespace qzvest
