// The tree against std::map, with the red-black rules checked after every step. An element is one heap block.

#include <gtest/gtest.h>
#include <qzvest/redblacktree.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <vector>

#include "support/faults.h"

namespace {

using Node = SMRedBlackTreeNode;
using Keys = std::vector<int>;
using Answer = std::function<int32_t(int key)>;

// The data of an element is the address of its key.
int KeyOf(const void *data)
{
    return *static_cast<const int *>(data);
}

int32_t Compare(void *key, void *data)
{
    return KeyOf(key) < KeyOf(data) ? -70000 : KeyOf(key) > KeyOf(data); // any negative or positive number
}

struct Visits {
    Answer answer;
    Keys seen = {};
};

int32_t Visit(void *context, void *data)
{
    auto *visits = static_cast<Visits *>(context);
    visits->seen.push_back(KeyOf(data));
    return visits->answer(KeyOf(data));
}

// The black height of a tree that keeps the rules. The order of the keys is seen in the ascending walk.
int BlackHeight(const Node *node, const Node *parent)
{
    if (node == nullptr)
        return 1;
    const int left = BlackHeight(node->left, node);
    const bool isRed = node->color == SM_RBT_RED;
    EXPECT_EQ(node->parent, parent);
    EXPECT_LE(node->color, SM_RBT_RED);
    EXPECT_FALSE(isRed && (parent == nullptr || parent->color == SM_RBT_RED)) << "red root, or red below red";
    EXPECT_EQ(left, BlackHeight(node->right, node));
    return left + !isRed;
}

// What the calls that follow the shape should do, written as they are described: a steered walk turns back.
bool ShapeModel(const Node *node, bool isSteered, Visits &visits)
{
    if (node == nullptr)
        return false;
    const int32_t side = Visit(&visits, node->data);
    return side == 0 || ShapeModel(side < 0 ? node->left : node->right, isSteered, visits) ||
           (isSteered && ShapeModel(side < 0 ? node->right : node->left, true, visits));
}

void ReleaseModel(const Node *node, Keys *order)
{
    for (const Node *child : {node->right, node->left})
        if (child != nullptr)
            ReleaseModel(child, order);
    order->push_back(KeyOf(node->data));
}

class RedBlackTree : public testing::Test {
protected:
    void SetUp() override
    {
        SMRedBlackTreeAttach(&tree);
        Check();
    }

    void TearDown() override
    {
        SMRedBlackTreeDelete(&tree, nullptr, nullptr);
        EXPECT_EQ(tree, nullptr);
        EXPECT_EQ(LiveBlocks(), blocksBefore);
    }

    void Insert(int key)
    {
        int *data = &keys.emplace_back(key);
        EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, data, &key, Compare),
                  model.emplace(key, data).second ? SM_STATUS_OK : SM_STATUS_ALREADY_EXISTS);
    }

    void Replace(int key)
    {
        int *data = &keys.emplace_back(key);
        const auto known = model.find(key);
        EXPECT_EQ(SMRedBlackTreeDataReplace(&tree, data, &key, Compare),
                  known != model.end() ? known->second : nullptr);
        if (known != model.end())
            known->second = data;
    }

    // A node with two children stays where it is and takes over the data of its successor.
    void Delete(int key)
    {
        const Node *node = tree;
        while (node != nullptr && KeyOf(node->data) != key)
            node = KeyOf(node->data) > key ? node->left : node->right;
        const bool stays = node != nullptr && node->left != nullptr && node->right != nullptr;
        EXPECT_EQ(SMRedBlackTreeDataDelete(&tree, &key, Compare),
                  model.erase(key) == 1 ? SM_STATUS_OK : SM_STATUS_NOT_FOUND);
        EXPECT_TRUE(!stays || node->data == model.upper_bound(key)->second);
    }

    void CheckWalk(int32_t type, const Answer &answer, const Keys &seen)
    {
        Visits visits{answer};
        const void *selected = SMRedBlackTreeDataWalk(tree, &visits, Visit, type);
        EXPECT_EQ(visits.seen, seen) << type;
        EXPECT_EQ(selected, !seen.empty() && answer(seen.back()) == 0 ? model[seen.back()] : nullptr) << type;
    }

    void Check(const Answer &answer = [](int) { return 1; })
    {
        BlackHeight(tree, nullptr);
        EXPECT_EQ(LiveBlocks() - blocksBefore, static_cast<long>(model.size()));
        Keys sorted;
        for (const auto &[key, data] : model)
            sorted.push_back(key);
        for (const int32_t type : {SM_RBT_WALK_ASCENDING, SM_RBT_WALK_DESCENDING}) {
            const auto stop = std::find_if(sorted.begin(), sorted.end(), [&](int key) { return answer(key) == 0; });
            CheckWalk(type, answer, Keys(sorted.begin(), stop == sorted.end() ? stop : stop + 1));
            std::reverse(sorted.begin(), sorted.end());
        }
        for (const int32_t type : {SM_RBT_WALK_SEARCH, SM_RBT_WALK_STEERED}) {
            Visits visits{answer};
            ShapeModel(tree, type == SM_RBT_WALK_STEERED, visits);
            CheckWalk(type, answer, visits.seen);
        }
        if (tree != nullptr)
            CheckWalk(SM_RBT_WALK_ROOT, answer, {KeyOf(tree->data)});
        CheckWalk(5, answer, {}); // there is no such walk
        EXPECT_EQ(SMRedBlackTreeIsEmpty(tree), model.empty() ? 1u : 0u);
    }

    const long blocksBefore = LiveBlocks();
    SMRedBlackTree tree;
    std::deque<int> keys; // all that were ever data
    std::map<int, int *> model;
};

TEST_F(RedBlackTree, AgreesWithAMapAndKeepsTheRules)
{
    std::mt19937 random(42);
    const auto draw = [&](unsigned below) { return static_cast<int>(random() % below); };
    for (const unsigned range : {8u, 60u, 400u}) { // few keys: mostly collisions; many: a deep tree
        for (int step = 0; step < 4000 && !HasFailure(); ++step) {
            const int choice = draw(16);
            if (choice < (step / 500 % 2 == 0 ? 9 : 4)) // it grows and shrinks in turn
                Insert(draw(range));
            else if (choice < 13)
                Delete(draw(range));
            else
                Replace(draw(range));
            const int salt = draw(1000);
            Check([salt](int key) {
                const int mixed = (key + salt) * 7919 % 1009;
                return mixed % 32 == 0 ? 0 : mixed % 3 == 0 ? -5 : 5;
            });
        }
    }
}

// A node serves as the slot of its left subtree.
TEST_F(RedBlackTree, EmptyingReleasesRightThenLeftThenSelf)
{
    for (int key = 0; key < 100; ++key)
        Insert(key * 37 % 100);
    Node *root = tree;
    for (SMRedBlackTree *slot : {reinterpret_cast<SMRedBlackTree *>(root), &tree}) {
        Keys expected, released;
        ReleaseModel(*slot, &expected);
        SMRedBlackTreeDelete(slot, &released, [](void *context, void *data) -> int32_t {
            static_cast<Keys *>(context)->push_back(KeyOf(data));
            return -1; // is not looked at
        });
        EXPECT_EQ(released, expected);
        EXPECT_TRUE(slot == &tree || (root->left == nullptr && tree == root && root->right != nullptr));
    }
}

TEST_F(RedBlackTree, RefusesNullArgumentsAndLackOfMemory)
{
    Insert(1);
    int key = 2;
    EXPECT_EQ(SMRedBlackTreeDataInsert(&tree, nullptr, &key, Compare), SM_STATUS_INVALID_PARAMETER);
    Check();
}

} // namespace
