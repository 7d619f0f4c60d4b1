// The library's one ordered map: a red-black tree of caller pointers, without keys of its own.
#ifndef CONTAINERS_REDBLACKTREE_H
#define CONTAINERS_REDBLACKTREE_H

#include <qzvest/status.h>
#include <qzvest/types.h>

#include <cstdlib>

namespace qzvest {

void SMRedBlackTreeAttach(SMRedBlackTree *tree);
void SMRedBlackTreeDetach(SMRedBlackTree *tree);
uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root);
uint32_t SMRedBlackTreeDataInsert(SMRedBlackTree *tree, void *data, void *key, SMCompareCallback compare);
void *SMRedBlackTreeDataReplace(SMRedBlackTree *tree, void *newData, void *key, SMCompareCallback compare);
uint32_t SMRedBlackTreeDataDelete(SMRedBlackTree *tree, void *key, SMCompareCallback compare);
void SMRedBlackTreeDelete(SMRedBlackTree *tree, void *context, SMReleaseCallback release);
void *SMRedBlackTreeDataWalk(SMRedBlackTree root, void *context, SMVisitCallback visit, int32_t walkType);

// For users inside the library whose order can be compiled in: search, insert and walk without callbacks.

// Where an element is (*link is its node) or would go (*link is NULL). Good until the tree changes.
struct TreePlace {
    SMRedBlackTreeNode *parent;
    SMRedBlackTreeNode **link;
};

// order(data) tells on which side of data the wanted element lies, as a compare callback does.
template <typename Order>
inline TreePlace TreeFind(SMRedBlackTree *tree, Order order)
{
    TreePlace place{nullptr, tree};
    SMRedBlackTreeNode *node = *tree;
    while (node != nullptr) {
        // Both ways down are asked for before it is known which one it will be.
        SMRedBlackTreeNode *left = node->left;
        SMRedBlackTreeNode *right = node->right;
        __builtin_prefetch(left);
        __builtin_prefetch(right);
        const int32_t side = order(node->data);
        if (side == 0)
            break;
        place.parent = node;
        place.link = side < 0 ? &node->left : &node->right;
        node = side < 0 ? left : right;
    }
    return place;
}

// Puts data into an empty place of this tree. Gives its node, or NULL when memory runs out.
SMRedBlackTreeNode *TreeInsertAt(SMRedBlackTree *tree, TreePlace place, void *data);

// Takes the element of an occupied place out; what it points to stays.
void TreeRemoveAt(SMRedBlackTree *tree, TreePlace place);

// The element of a place, or NULL.
template <typename T>
inline T *TreeDataAt(TreePlace place)
{
    return *place.link != nullptr ? static_cast<T *>((*place.link)->data) : nullptr;
}

// The walk in ascending order: for (node = TreeFirst(root); node != nullptr; node = TreeNext(node)).
inline SMRedBlackTreeNode *TreeFirst(SMRedBlackTree root)
{
    if (root == nullptr)
        return nullptr;
    while (root->left != nullptr)
        root = root->left;
    return root;
}

// The node that follows in ascending order, or NULL.
inline SMRedBlackTreeNode *TreeNext(SMRedBlackTreeNode *node)
{
    if (node->right != nullptr)
        return TreeFirst(node->right);
    SMRedBlackTreeNode *parent = node->parent;
    while (parent != nullptr && parent->right == node) {
        node = parent;
        parent = node->parent;
    }
    return parent;
}

// The node of the highest element, or NULL.
inline SMRedBlackTreeNode *TreeLast(SMRedBlackTree root)
{
    while (root != nullptr && root->right != nullptr)
        root = root->right;
    return root;
}

// Empties the tree, or the subtree in this slot: right subtree, left subtree, then release(data) and the node itself.
template <typename Release>
inline void TreeClear(SMRedBlackTree *tree, Release release)
{
    SMRedBlackTreeNode *const top = *tree;
    SMRedBlackTreeNode *node = top;
    while (node != nullptr) {
        if (SMRedBlackTreeNode *below = node->right != nullptr ? node->right : node->left) {
            node = below;
            continue;
        }
        SMRedBlackTreeNode *above = node != top ? node->parent : nullptr;
        release(node->data);
        std::free(node);
        if (above == nullptr)
            *tree = nullptr;
        else if (above->right != nullptr) // the right subtree goes first: as long as there is one, it was that
            above->right = nullptr;
        else
            above->left = nullptr;
        node = above;
    }
}

} // namespace qzvest

#endif
