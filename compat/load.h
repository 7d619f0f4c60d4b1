// Values that may lie at any address, copied in and out.
#ifndef COMPAT_LOAD_H
#define COMPAT_LOAD_H

#include <cstring>

namespace qzvest {

template <typename T>
inline T LoadAs(const void *from)
{
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <typename T>
inline void StoreAs(void *to, const T &value)
{
    std::memcpy(to, &value, sizeof value);
}

} // namespace qzvest

#endif
