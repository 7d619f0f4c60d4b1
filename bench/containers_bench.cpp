// The tree as it is used. The peers stand in the containers_*.cpp files.

#include <qzvest/qzvest.h>

#include "containers_data.h"

namespace bench {
namespace {

struct Ours {
    using Element = Keyed;
    SMRedBlackTree root = nullptr;

    bool Insert(Element *element)
    {
        return SMRedBlackTreeDataInsert(&root, element, element, Compare) == SM_STATUS_OK;
    }
    bool Find(Element *wanted)
    {
        return SMRedBlackTreeDataWalk(root, wanted, Compare, SM_RBT_WALK_SEARCH) != nullptr;
    }
    bool Erase(Element *wanted)
    {
        return SMRedBlackTreeDataDelete(&root, wanted, Compare) == SM_STATUS_OK;
    }
    void Clear()
    {
        SMRedBlackTreeDelete(&root, nullptr, nullptr);
    }
};

[[maybe_unused]] const bool kRegistered = Rows<Ours>("ours");

} // namespace
} // namespace bench
