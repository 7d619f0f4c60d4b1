#include "compat/environment.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "compat/string.h"

namespace qzvest {

int getenv_s(size_t *needed, char *value, size_t bound, const char *name)
{
    size_t unasked;
    size_t &size = needed != nullptr ? *needed : unasked;
    size = 0;
    const bool usable = UsableRoom(value, bound);
    if (usable)
        *value = '\0';
    else if (value != nullptr || bound != 0)
        return EINVAL;
    if (name == nullptr)
        return EINVAL;
    const char *text = std::getenv(name);
    if (text == nullptr)
        return ENOENT;
    size = std::strlen(text) + 1;
    if (!usable)
        return 0;
    return strcpy_s(value, bound, text);
}

} // namespace qzvest
