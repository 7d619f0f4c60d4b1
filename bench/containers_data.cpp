#include "containers_data.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace bench {
namespace {

Keys MakeKeys(int64_t count)
{
    std::mt19937 random(static_cast<uint32_t>(count));
    std::set<uint32_t> different;
    while (different.size() < static_cast<size_t>(count))
        different.insert(static_cast<uint32_t>(random()));
    Keys keys{{different.begin(), different.end()}, {different.begin(), different.end()}};
    std::shuffle(keys.inserted.begin(), keys.inserted.end(), random);
    std::shuffle(keys.wanted.begin(), keys.wanted.end(), random);
    return keys;
}

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

const Keys &KeysOf(int64_t count)
{
    static std::map<int64_t, Keys> made;
    const auto found = made.find(count);
    return found != made.end() ? found->second : made.emplace(count, MakeKeys(count)).first->second;
}

} // namespace bench
