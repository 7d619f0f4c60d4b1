// The macros of sys/tree.h. The elements hold their own links, so that nothing is allocated, and the comparison
// is compiled in: what a tree of pointers behind a callback cannot reach.

#include <bsd/sys/tree.h>

#include "containers_data.h"

namespace bench {
namespace {

struct Linked {
    uint32_t key;
    RB_ENTRY(Linked) links;
};

int CompareLinked(const Linked *a, const Linked *b)
{
    return a->key < b->key ? -1 : a->key > b->key;
}

RB_HEAD(LinkedTree, Linked);
RB_GENERATE_INTERNAL(LinkedTree, Linked, links, CompareLinked, [[maybe_unused]])

struct Bsd {
    using Element = Linked;
    LinkedTree head = RB_INITIALIZER(&head);

    bool Insert(Element *element)
    {
        return RB_INSERT(LinkedTree, &head, element) == nullptr;
    }
    bool Find(Element *wanted)
    {
        return RB_FIND(LinkedTree, &head, wanted) != nullptr;
    }
    bool Erase(Element *wanted)
    {
        Element *found = RB_FIND(LinkedTree, &head, wanted);
        return found != nullptr && RB_REMOVE(LinkedTree, &head, found) == found;
    }
    void Clear()
    {
        RB_INIT(&head);
    }
};

[[maybe_unused]] const bool kRegistered = Rows<Bsd>("sys/tree.h");

} // namespace
} // namespace bench
