/* A red-black tree of caller pointers.
 *
 * The tree stores no keys: each call takes the key and the callback that compares it with stored data. The
 * caller owns the slot that holds the root, and all data; the library owns the nodes. SMRedBlackTreeDataWalk
 * and SMRedBlackTreeIsEmpty take the root's value, the others the slot's address.
 * Threads: a tree has no lock; whoever shares one guards it. Callbacks run on the caller's thread and must
 * not change the tree. */
#ifndef QZVEST_REDBLACKTREE_H
#define QZVEST_REDBLACKTREE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMRedBlackTreeAttach - make a slot an empty tree. Nothing for NULL. */
SM_EXPORT void SMRedBlackTreeAttach(SMRedBlackTree *tree);

/* SMRedBlackTreeDetach - forget what the slot holds. Frees no node: empty the tree with SMRedBlackTreeDelete
 * first, or its nodes are lost. Nothing for NULL. */
SM_EXPORT void SMRedBlackTreeDetach(SMRedBlackTree *tree);

/* SMRedBlackTreeIsEmpty - 1 if root is NULL, else 0.
 *   root  the slot's value; its address is never NULL and so never an empty tree */
SM_EXPORT uint32_t SMRedBlackTreeIsEmpty(SMRedBlackTree root);

/* SMRedBlackTreeDataInsert - add an element.
 *   data     stored as it is, not NULL
 *   key      what compare is given first, not NULL; used in this call alone
 *   compare  orders key against stored data
 * Returns SM_STATUS_OK, SM_STATUS_ALREADY_EXISTS (compare gave 0), SM_STATUS_INVALID_PARAMETER (a NULL),
 *   SM_STATUS_NO_MEMORY. On failure the tree is as it was. */
SM_EXPORT uint32_t SMRedBlackTreeDataInsert(SMRedBlackTree *tree, void *data, void *key, SMCompareCallback compare);

/* SMRedBlackTreeDataReplace - put newData in the place of the element that compares equal to key.
 *   newData  must sort where the old data did
 * Returns the old data, now the caller's concern again, or NULL when nothing compares equal or an argument
 *   is NULL. */
SM_EXPORT void *SMRedBlackTreeDataReplace(SMRedBlackTree *tree, void *newData, void *key, SMCompareCallback compare);

/* SMRedBlackTreeDataDelete - take out the element that compares equal to key. Its data is not released; a
 * caller that has no other hold on it notes it in the compare callback.
 * Returns SM_STATUS_OK, SM_STATUS_NOT_FOUND, SM_STATUS_INVALID_PARAMETER (a NULL). */
SM_EXPORT uint32_t SMRedBlackTreeDataDelete(SMRedBlackTree *tree, void *key, SMCompareCallback compare);

/* SMRedBlackTreeDelete - empty the tree. Nothing for NULL or an empty tree.
 *   context  handed to release
 *   release  called for each element before its node goes, or NULL. The order is: right subtree, left
 *            subtree, the element itself. */
SM_EXPORT void SMRedBlackTreeDelete(SMRedBlackTree *tree, void *context, SMReleaseCallback release);

/* SMRedBlackTreeDataWalk - visit elements.
 *   root      the slot's value
 *   context   handed to visit; must not be NULL even when visit ignores it
 *   visit     a result of 0 ends the walk and selects this data
 *   walkType  SM_RBT_WALK_...
 * Returns the selected data, or NULL when visit never gave 0, for a NULL argument and an unknown walkType. */
SM_EXPORT void *SMRedBlackTreeDataWalk(SMRedBlackTree root, void *context, SMVisitCallback visit, int32_t walkType);

#ifdef __cplusplus
}
#endif

#endif
