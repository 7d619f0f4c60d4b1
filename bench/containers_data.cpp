#include "containers_data.h"

#include <algorithm>
#include <set>

namespace bench {
namespace {

int32_t Order(const void *key, const void *data)
{
    const uint32_t a = static_cast<const Keyed *>(key)->key;
    const uint32_t b = static_cast<const Keyed *>(data)->key;
    return a < b ? -1 : a > b;
}

} // namespace

int32_t Compare(void *key, void *data)
{
    return Order(key, data);
}

int CompareConst(const void *key, const void *data)
{
    return Order(key, data);
}

Keys::Keys(int64_t count) : random(static_cast<uint32_t>(count))
{
    std::set<uint32_t> different;
    while (different.size() < static_cast<size_t>(count))
        different.insert(static_cast<uint32_t>(random()));
    inserted.assign(different.begin(), different.end());
    wanted = inserted;
    Shuffle();
}

void Keys::Shuffle()
{
    std::shuffle(inserted.begin(), inserted.end(), random);
    std::shuffle(wanted.begin(), wanted.end(), random);
}

} // namespace bench
