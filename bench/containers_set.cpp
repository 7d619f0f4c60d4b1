// std::set of the same pointers, ordered by the same callback.

#include <set>

#include "containers_data.h"

namespace bench {
namespace {

struct Less {
    bool operator()(Keyed *a, Keyed *b) const
    {
        return Compare(a, b) < 0;
    }
};

struct Set {
    using Element = Keyed;
    std::set<Keyed *, Less> elements;

    bool Insert(Element *element)
    {
        return elements.insert(element).second;
    }
    bool Find(Element *wanted)
    {
        return elements.find(wanted) != elements.end();
    }
    bool Erase(Element *wanted)
    {
        return elements.erase(wanted) == 1;
    }
    void Clear()
    {
        elements.clear();
    }
};

[[maybe_unused]] const bool kRegistered = Rows<Set>("std::set");

} // namespace
} // namespace bench
