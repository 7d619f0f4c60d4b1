// Red-black tree. Invariants between calls: the root is black, a red node has no red child, and every way from
// the root down to an absent child passes as many black nodes. There is no sentinel: an absent child is NULL
// and counts as black.

#include "containers/redblacktree.h"

#include <cstddef>
#include <cstdlib>

#include "frame/heap.h"

namespace qzvest {
namespace {

using Node = SMRedBlackTreeNode;

// A tree slot and a left word have the same form, and left comes first: to SMRedBlackTreeDelete a node's address is
// the slot of its left subtree. Who gives it that unbalances the tree, and may do no more than delete the rest.
static_assert(offsetof(Node, left) == 0 && offsetof(Node, right) == 8 && offsetof(Node, parent) == 16);
static_assert(offsetof(Node, data) == 24 && offsetof(Node, color) == 32 && sizeof(Node) == 40);

bool IsRed(const Node *node)
{
    return node != nullptr && node->color == SM_RBT_RED;
}

// The word that points to this node.
Node **LinkOf(SMRedBlackTree *tree, Node *node)
{
    Node *parent = node->parent;
    if (parent == nullptr)
        return tree;
    return parent->left == node ? &parent->left : &parent->right;
}

// Each side of the tree mirrors the other: `near` and `far` name the child words as seen from one of them. They
// are compiled in, so that each side is code of its own.
using Side = Node *Node::*;

constexpr Side OtherSide(Side side)
{
    return side == &Node::left ? &Node::right : &Node::left;
}

// Lets node sink to its `near` side and its child on the far side rise into its place.
template <Side near>
void Rotate(SMRedBlackTree *tree, Node *node)
{
    constexpr Side far = OtherSide(near);
    Node *riser = node->*far;
    *LinkOf(tree, node) = riser;
    riser->parent = node->parent;
    node->*far = riser->*near;
    if (node->*far != nullptr)
        (node->*far)->parent = node;
    riser->*near = node;
    node->parent = riser;
}

// Node and parent, its grandparent's child on the `near` side, are both red. Gives the node that may have a red
// parent now, or NULL when the rules hold again.
template <Side near>
Node *FixRedParent(SMRedBlackTree *tree, Node *node, Node *parent, Node *grandparent)
{
    constexpr Side far = OtherSide(near);
    Node *uncle = grandparent->*far;
    grandparent->color = SM_RBT_RED;
    if (IsRed(uncle)) {
        parent->color = SM_RBT_BLACK;
        uncle->color = SM_RBT_BLACK;
        return grandparent;
    }
    if (parent->*far == node) {
        Rotate<near>(tree, parent);
        parent = node;
    }
    parent->color = SM_RBT_BLACK;
    Rotate<far>(tree, grandparent);
    return nullptr;
}

void FixAfterInsert(SMRedBlackTree *tree, Node *node)
{
    while (node != nullptr && IsRed(node->parent)) {
        Node *parent = node->parent;
        Node *grandparent = parent->parent; // there is one: a red node is not the root
        node = grandparent->left == parent ? FixRedParent<&Node::left>(tree, node, parent, grandparent)
                                           : FixRedParent<&Node::right>(tree, node, parent, grandparent);
    }
    (*tree)->color = SM_RBT_BLACK;
}

// The way through parent's child on the `near` side lacks one black. Gives the node through which all ways lack
// it now, or NULL when the rules hold again.
template <Side near>
Node *FixLackOfBlack(SMRedBlackTree *tree, Node *parent)
{
    constexpr Side far = OtherSide(near);
    Node *sibling = parent->*far; // there is one: its side has the black that the other lacks
    if (IsRed(sibling)) {
        sibling->color = SM_RBT_BLACK;
        parent->color = SM_RBT_RED;
        Rotate<near>(tree, parent);
        sibling = parent->*far;
    }
    if (!IsRed(sibling->left) && !IsRed(sibling->right)) {
        sibling->color = SM_RBT_RED;
        return parent;
    }
    if (!IsRed(sibling->*far)) {
        (sibling->*near)->color = SM_RBT_BLACK;
        sibling->color = SM_RBT_RED;
        Rotate<far>(tree, sibling);
        sibling = parent->*far;
    }
    sibling->color = parent->color;
    parent->color = SM_RBT_BLACK;
    (sibling->*far)->color = SM_RBT_BLACK;
    Rotate<near>(tree, parent);
    return nullptr;
}

// The way through node, a child of parent that may be absent, lacks one black.
void FixAfterDelete(SMRedBlackTree *tree, Node *node, Node *parent)
{
    while (parent != nullptr && !IsRed(node)) {
        node = parent->left == node ? FixLackOfBlack<&Node::left>(tree, parent)
                                    : FixLackOfBlack<&Node::right>(tree, parent);
        if (node == nullptr)
            break;
        parent = node->parent;
    }
    if (node != nullptr)
        node->color = SM_RBT_BLACK;
    if (*tree != nullptr)
        (*tree)->color = SM_RBT_BLACK;
}

TreePlace FindByKey(SMRedBlackTree *tree, void *key, SMCompareCallback compare)
{
    return TreeFind(tree, [=](void *data) { return compare(key, data); });
}

template <Side first>
void *WalkInOrder(Node *node, void *context, SMVisitCallback visit)
{
    for (; node != nullptr; node = node->*OtherSide(first)) {
        if (void *selected = WalkInOrder<first>(node->*first, context, visit))
            return selected;
        if (visit(context, node->data) == 0)
            return node->data;
    }
    return nullptr;
}

void *WalkSteered(Node *node, void *context, SMVisitCallback visit)
{
    while (node != nullptr) {
        const int32_t side = visit(context, node->data);
        if (side == 0)
            return node->data;
        const Side first = side < 0 ? &Node::left : &Node::right;
        if (void *selected = WalkSteered(node->*first, context, visit))
            return selected;
        node = node->*OtherSide(first);
    }
    return nullptr;
}

} // namespace

Node *TreeInsertAt(SMRedBlackTree *tree, TreePlace place, void *data)
{
    Node *node = HeapRoom<Node>(1).release();
    if (node == nullptr)
        return nullptr;
    *node = {nullptr, nullptr, place.parent, data, SM_RBT_RED};
    *place.link = node;
    FixAfterInsert(tree, node);
    return node;
}

// A node with two children stays and takes over the data of its in-order successor, whose node goes instead.
void TreeRemoveAt(SMRedBlackTree *tree, TreePlace place)
{
    Node *const node = *place.link;
    Node *leaving = node;
    if (node->left != nullptr && node->right != nullptr) {
        leaving = node->right;
        while (leaving->left != nullptr)
            leaving = leaving->left;
        node->data = leaving->data;
    }
    Node *child = leaving->left != nullptr ? leaving->left : leaving->right;
    Node *parent = leaving->parent;
    *LinkOf(tree, leaving) = child;
    if (child != nullptr)
        child->parent = parent;
    if (leaving->color == SM_RBT_BLACK)
        FixAfterDelete(tree, child, parent);
    std::free(leaving);
}

void SMRedBlackTreeAttach(SMRedBlackTree *tree)
{
    if (tree != nullptr)
        *tree = nullptr;
}

void SMRedBlackTreeDetach(SMRedBlackTree *tree)
{
    if (tree != nullptr)
        *tree = nullptr;
}

uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root)
{
    return root == nullptr ? 1 : 0;
}

uint32_t SMRedBlackTreeDataInsert(SMRedBlackTree *tree, void *data, void *key, SMCompareCallback compare)
{
    if (tree == nullptr || data == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const TreePlace place = FindByKey(tree, key, compare);
    if (*place.link != nullptr)
        return SM_STATUS_ALREADY_EXISTS;
    return TreeInsertAt(tree, place, data) != nullptr ? SM_STATUS_OK : SM_STATUS_NO_MEMORY;
}

void *SMRedBlackTreeDataReplace(SMRedBlackTree *tree, void *newData, void *key, SMCompareCallback compare)
{
    if (tree == nullptr || newData == nullptr || key == nullptr || compare == nullptr)
        return nullptr;
    Node *node = *FindByKey(tree, key, compare).link;
    if (node == nullptr)
        return nullptr;
    void *oldData = node->data;
    node->data = newData;
    return oldData;
}

uint32_t SMRedBlackTreeDataDelete(SMRedBlackTree *tree, void *key, SMCompareCallback compare)
{
    if (tree == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const TreePlace place = FindByKey(tree, key, compare);
    if (*place.link == nullptr)
        return SM_STATUS_NOT_FOUND;
    TreeRemoveAt(tree, place);
    return SM_STATUS_OK;
}

void SMRedBlackTreeDelete(SMRedBlackTree *tree, void *context, SMReleaseCallback release)
{
    if (tree == nullptr)
        return;
    TreeClear(tree, [=](void *data) {
        if (release != nullptr)
            (void)release(context, data); // nothing can be done about a release that fails
    });
}

void *SMRedBlackTreeDataWalk(SMRedBlackTree root, void *context, SMVisitCallback visit, int32_t walkType)
{
    if (root == nullptr || context == nullptr || visit == nullptr)
        return nullptr;
    switch (walkType) {
    case SM_RBT_WALK_ROOT:
        return visit(context, root->data) == 0 ? root->data : nullptr;
    case SM_RBT_WALK_ASCENDING:
        return WalkInOrder<&Node::left>(root, context, visit);
    case SM_RBT_WALK_DESCENDING:
        return WalkInOrder<&Node::right>(root, context, visit);
    case SM_RBT_WALK_SEARCH:
        return TreeDataAt<void>(TreeFind(&root, [=](void *data) { return visit(context, data); }));
    case SM_RBT_WALK_STEERED:
        return WalkSteered(root, context, visit);
    default:
        return nullptr;
    }
}

} // namespace qzvest
