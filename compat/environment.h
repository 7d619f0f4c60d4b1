// The bounded environment call of the C standard's annex K, which the C library lacks.
#ifndef COMPAT_ENVIRONMENT_H
#define COMPAT_ENVIRONMENT_H

#include <cstddef>

namespace qzvest {

// 0, or an errno value and an empty destination: ENOENT for a variable that is not set, ERANGE for a value that does
// not fit, EINVAL for a violated constraint. needed may be NULL; it becomes the bytes of the value, terminator
// included, and 0 where there is none to tell. A NULL value with a bound of 0 asks for that alone, and succeeds.
int getenv_s(size_t *needed, char *value, size_t bound, const char *name);

} // namespace qzvest

#endif
