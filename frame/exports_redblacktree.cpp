#include <qzvest/redblacktree.h>

#include "containers/redblacktree.h"

extern "C" {

void SMRedBlackTreeAttach(SMRedBlackTree *tree)
{
    qzvest::SMRedBlackTreeAttach(tree);
}

void SMRedBlackTreeDetach(SMRedBlackTree *tree)
{
    qzvest::SMRedBlackTreeDetach(tree);
}

uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root)
{
    return qzvest::SMRedBlackTreeIsEmpty(root);
}

uint32_t SMRedBlackTreeDataInsert(SMRedBlackTree *tree, void *data, void *key, SMCompareCallback compare)
{
    return qzvest::SMRedBlackTreeDataInsert(tree, data, key, compare);
}

void *SMRedBlackTreeDataReplace(SMRedBlackTree *tree, void *newData, void *key, SMCompareCallback compare)
{
    return qzvest::SMRedBlackTreeDataReplace(tree, newData, key, compare);
}

uint32_t SMRedBlackTreeDataDelete(SMRedBlackTree *tree, void *key, SMCompareCallback compare)
{
    return qzvest::SMRedBlackTreeDataDelete(tree, key, compare);
}

void SMRedBlackTreeDelete(SMRedBlackTree *tree, void *context, SMReleaseCallback release)
{
    qzvest::SMRedBlackTreeDelete(tree, context, release);
}

void *SMRedBlackTreeDataWalk(SMRedBlackTree root, void *context, SMVisitCallback visit, int32_t walkType)
{
    return qzvest::SMRedBlackTreeDataWalk(root, context, visit, walkType);
}

} // extern "C"
