#include "compat/string.h"

#include <cerrno>
#include <cstring>

namespace qzvest {
namespace {

constexpr size_t kTimeText = 26; // with its terminator

} // namespace

int strcpy_s(char *destination, size_t bound, const char *source)
{
    if (!UsableRoom(destination, bound))
        return EINVAL;
    if (source == nullptr) {
        *destination = '\0';
        return EINVAL;
    }
    const size_t length = strnlen(source, bound);
    if (length == bound) {
        *destination = '\0';
        return ERANGE;
    }
    std::memcpy(destination, source, length + 1);
    return 0;
}

int strcat_s(char *destination, size_t bound, const char *source)
{
    if (!UsableRoom(destination, bound))
        return EINVAL;
    const size_t length = strnlen(destination, bound);
    const int error = length == bound ? EINVAL : strcpy_s(destination + length, bound - length, source);
    if (error != 0)
        *destination = '\0';
    return error;
}

int ctime_s(char *destination, size_t bound, const time_t *time)
{
    if (!UsableRoom(destination, bound))
        return EINVAL;
    *destination = '\0';
    if (time == nullptr || bound < kTimeText)
        return EINVAL;
    tzset(); // as the plain call does: the time zone may have changed
    tm local{};
    if (localtime_r(time, &local) == nullptr)
        return EOVERFLOW;
    if (local.tm_year < -1900 || local.tm_year > 9999 - 1900)
        return EINVAL;
    char text[kTimeText];
    if (asctime_r(&local, text) == nullptr)
        return EINVAL;
    return strcpy_s(destination, bound, text);
}

} // namespace qzvest
