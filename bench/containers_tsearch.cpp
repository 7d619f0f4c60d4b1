// The C library's tree, with the same callback.

#include <search.h>

#include "containers_data.h"

namespace bench {
namespace {

struct TSearch {
    using Element = Keyed;
    void *root = nullptr;

    bool Insert(Element *element)
    {
        void *node = tsearch(element, &root, CompareConst);
        return node != nullptr && *static_cast<Element **>(node) == element;
    }
    bool Find(Element *wanted)
    {
        return tfind(wanted, &root, CompareConst) != nullptr;
    }
    bool Erase(Element *wanted)
    {
        return tdelete(wanted, &root, CompareConst) != nullptr;
    }
    void Clear()
    {
        tdestroy(root, [](void *) {});
        root = nullptr;
    }
};

[[maybe_unused]] const bool kRegistered = Rows<TSearch>("tsearch");

} // namespace
} // namespace bench
