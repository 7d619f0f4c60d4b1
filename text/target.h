// Where a conversion writes to.
#ifndef TEXT_TARGET_H
#define TEXT_TARGET_H

#include <cstddef>
#include <cstdint>

namespace qzvest {

// Without kWrites nothing is written and only the length counts; next is then NULL and room without end. Units are
// those of the destination: bytes of UTF-8, or UCS-2 units.
template <bool kWrites, typename Unit>
struct Target {
    Unit *next;
    size_t room;
    size_t total = 0;

    void Advance(size_t count)
    {
        total += count;
        if constexpr (kWrites) {
            next += count;
            room -= count;
        }
    }
};

} // namespace qzvest

#endif
