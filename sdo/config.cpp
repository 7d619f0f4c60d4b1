// Objects in memory: reading, removing and counting. What goes in stands in add.cpp.

#include <cstdlib>
#include <cstring>

#include "containers/redblacktree.h"
#include "sdo/entry.h"
#include "sdo/sdo.h"

namespace qzvest {
namespace {

enum SearchMode : uint16_t { kByID = 1, kByIndex = 2 };

// Key of a search through the tree's callbacks.
struct SMSDOEntrySearch {
    SMSDOEntry *found;    // the wanted entry, once met
    uint32_t position;    // entries passed by a walk in order
    uint32_t targetIndex; // wanted place
    uint16_t targetId;    // wanted ID
    SearchMode mode;
};

int32_t Meet(void *key, void *data)
{
    auto *search = static_cast<SMSDOEntrySearch *>(key);
    auto *entry = static_cast<SMSDOEntry *>(data);
    int32_t side;
    if (search->mode == kByIndex)
        side = search->position++ == search->targetIndex ? 0 : 1;
    else
        side = int32_t{search->targetId} - int32_t{entry->id};
    if (side == 0)
        search->found = entry;
    return side;
}

// Both halves: SMSDOEntryFree leaves the entry itself.
int32_t Release(void *, void *data)
{
    auto *entry = static_cast<SMSDOEntry *>(data);
    SMSDOEntryFree(entry);
    std::free(entry);
    return 0;
}

void Clear(SMSDOConfig *config)
{
    *config = {nullptr, 0, SM_SDO_HEADER_SIZE, nullptr};
}

SMSDOEntry *EntryAtIndex(const SMSDOConfig *config, uint32_t index)
{
    SMSDOEntrySearch search{nullptr, 0, index, 0, kByIndex};
    (void)SMRedBlackTreeDataWalk(config->root, &search, Meet, SM_RBT_WALK_ASCENDING); // found tells
    return search.found;
}

uint32_t CopyOut(const SMSDOEntry *entry, uint8_t *typeOut, void *buffer, uint32_t *sizeInOut)
{
    uint32_t status = SM_STATUS_BUFFER_TOO_SMALL;
    if (buffer != nullptr && *sizeInOut >= entry->size) {
        std::memcpy(buffer, entry->Data(), entry->size);
        status = SM_STATUS_OK;
    }
    if (typeOut != nullptr)
        *typeOut = entry->type;
    *sizeInOut = entry->size;
    return status;
}

void RemoveAll(SMSDOConfig *config)
{
    SMRedBlackTreeDelete(&config->root, nullptr, Release);
    Clear(config);
}

uint32_t RemoveByID(SMSDOConfig *config, uint16_t id)
{
    // The tree's delete gives back a status alone; the search catches the entry on the way.
    SMSDOEntrySearch search{nullptr, 0, 0, id, kByID};
    config->last = nullptr; // data moves between nodes on a delete
    const uint32_t status = SMRedBlackTreeDataDelete(&config->root, &search, Meet);
    if ((status == SM_STATUS_OK) != (search.found != nullptr))
        return SM_STATUS_FAILED;
    if (status != SM_STATUS_OK)
        return status;
    SMSDOEntry *entry = search.found;
    config->count -= 1;
    config->binarySize -= static_cast<uint32_t>(SMSDOEntryBinarySize(entry->type, entry->Data(), entry->size));
    (void)Release(nullptr, entry); // always 0
    return SM_STATUS_OK;
}

} // namespace

SMSDOConfig *SMSDOConfigAlloc()
{
    HeapPtr<SMSDOConfig> config = HeapRoom<SMSDOConfig>(1);
    if (config)
        Clear(config.get());
    return config.release();
}

void SMSDOConfigFree(SMSDOConfig *config)
{
    if (config == nullptr)
        return;
    if (config->count != 0)
        TreeClear(&config->root, [](void *data) { (void)Release(nullptr, data); });
    SMRedBlackTreeDetach(&config->root);
    std::free(config);
}

uint32_t SMSDOConfigGetCount(const SMSDOConfig *config)
{
    return config != nullptr ? config->count : SM_SDO_NO_COUNT;
}

uint32_t SMSDOConfigGetDataByID(const SMSDOConfig *config, uint16_t id, uint8_t *typeOut, void *buffer,
                                uint32_t *sizeInOut)
{
    if (config == nullptr || sizeInOut == nullptr || !IsValidID(id))
        return SM_STATUS_INVALID_PARAMETER;
    SMRedBlackTree root = config->root;
    const SMRedBlackTreeNode *node = *EntryPlace(&root, id).link;
    if (node == nullptr)
        return SM_STATUS_NOT_FOUND;
    return CopyOut(static_cast<const SMSDOEntry *>(node->data), typeOut, buffer, sizeInOut);
}

uint32_t SMSDOConfigGetDataByIndex(const SMSDOConfig *config, uint32_t index, uint16_t *idOut, uint8_t *typeOut,
                                   void *buffer, uint32_t *sizeInOut)
{
    if (config == nullptr || idOut == nullptr || sizeInOut == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (index >= config->count)
        return SM_STATUS_NOT_IN_USE;
    const SMSDOEntry *entry = EntryAtIndex(config, index);
    if (entry == nullptr)
        return SM_STATUS_NOT_FOUND;
    *idOut = entry->id;
    return CopyOut(entry, typeOut, buffer, sizeInOut);
}

uint32_t SMSDOConfigRemoveData(SMSDOConfig *config, uint16_t id, uint32_t index, uint16_t removeAll)
{
    if (config == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (removeAll != 0) {
        RemoveAll(config);
        return SM_STATUS_OK;
    }
    if (IsValidID(id))
        return RemoveByID(config, id);
    if (index >= config->count)
        return SM_STATUS_NOT_IN_USE;
    const SMSDOEntry *entry = EntryAtIndex(config, index);
    return entry != nullptr ? RemoveByID(config, entry->id) : SM_STATUS_NOT_FOUND;
}

uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig *config)
{
    return config != nullptr ? config->binarySize : 0;
}

uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig *config)
{
    if (config == nullptr)
        return 0;
    // Not the sum that adding keeps: a short value counts here beside its descriptor, and a nested array's
    // header does not count. Callers have both sums in their data; neither is to be "repaired".
    uint32_t total = SM_SDO_HEADER_SIZE;
    for (SMRedBlackTreeNode *node = TreeFirst(config->root); node != nullptr; node = TreeNext(node)) {
        const auto *entry = static_cast<const SMSDOEntry *>(node->data);
        total += kDescriptorSize;
        if (KindOf(entry->type) != SM_SDO_KIND_OBJECT) {
            total += entry->size;
            continue;
        }
        for (uint32_t i = 0; i < entry->size / kPointerSize; ++i)
            total += SMSDOConfigGetBinarySize(NestedAt(entry->Data(), i));
    }
    config->binarySize = total;
    return total;
}

} // namespace qzvest
