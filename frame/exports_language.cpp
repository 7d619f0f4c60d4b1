#include <qzvest/language.h>

#include "text/language.h"

extern "C" {

uint32_t SMGetLocalLanguageID()
{
    return qzvest::SMGetLocalLanguageID();
}

} // extern "C"
