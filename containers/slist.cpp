#include <cstddef>

#include "containers/list.h"

namespace qzvest {

using Entry = SMSLListEntry;

static_assert(offsetof(SMSLList, head) == 0 && offsetof(SMSLList, tail) == 8 && sizeof(SMSLList) == 16);
static_assert(offsetof(Entry, next) == 0 && offsetof(Entry, data) == 8 && sizeof(Entry) == 16);

SMSLList *SMSLListAlloc()
{
    return ListAlloc<SMSLList>();
}

void SMSLListFree(SMSLList *list)
{
    std::free(list);
}

void SMSLListInitNoAlloc(SMSLList *list)
{
    if (list != nullptr)
        *list = {};
}

SMSLListEntry *SMSLListEntryAlloc(uint32_t size)
{
    return ListEntryAlloc<Entry>(size);
}

void SMSLListEntryFree(SMSLListEntry *entry)
{
    ListEntryFree(entry);
}

void SMSLListEntryInitNoAlloc(SMSLListEntry *entry)
{
    if (entry != nullptr)
        entry->next = nullptr; // data stays: the caller may have set it already
}

void SMSLListInsertEntryAtHead(SMSLList *list, SMSLListEntry *entry)
{
    if (list == nullptr || entry == nullptr)
        return;
    if (list->tail == nullptr)
        list->tail = entry;
    entry->next = list->head;
    list->head = entry;
}

void SMSLListInsertEntryAtTail(SMSLList *list, SMSLListEntry *entry)
{
    if (list == nullptr || entry == nullptr)
        return;
    *ListLinkAfter(list, list->tail) = entry;
    list->tail = entry;
    entry->next = nullptr;
}

uint32_t SMSLListInsertEntry(SMSLList *list, SMSLListEntry *entry, void *key, SMSLListCompareCallback compare)
{
    if (list == nullptr || entry == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    ListPlace<Entry> room;
    if (!ListFindRoom(list->head, key, compare, &room))
        return SM_STATUS_ALREADY_EXISTS;
    entry->next = room.entry;
    *ListLinkAfter(list, room.previous) = entry;
    if (entry->next == nullptr)
        list->tail = entry;
    return SM_STATUS_OK;
}

SMSLListEntry *SMSLListWalkAtHead(const SMSLList *list, void *key, SMSLListCompareCallback compare)
{
    if (list == nullptr || key == nullptr || compare == nullptr)
        return nullptr;
    return ListFind(list->head, key, compare).entry;
}

SMSLListEntry *SMSLListReplaceEntry(SMSLList *list, SMSLListEntry *newEntry, void *key, SMSLListCompareCallback compare)
{
    if (list == nullptr || newEntry == nullptr || key == nullptr || compare == nullptr)
        return nullptr;
    const ListPlace<Entry> old = ListFind(list->head, key, compare);
    if (old.entry == nullptr)
        return nullptr;
    newEntry->next = old.entry->next;
    *ListLinkAfter(list, old.previous) = newEntry;
    if (list->tail == old.entry)
        list->tail = newEntry;
    return old.entry;
}

void SMSLListDeleteEntry(SMSLList *list, SMSLListEntry *previous, SMSLListEntry *entry)
{
    if (list == nullptr || entry == nullptr)
        return;
    *ListLinkAfter(list, previous) = entry->next;
    if (list->tail == entry)
        list->tail = previous;
}

SMSLListEntry *SMSLListRemoveEntryAtHead(SMSLList *list)
{
    if (list == nullptr || list->head == nullptr)
        return nullptr;
    Entry *old = list->head;
    list->head = old->next;
    if (list->head == nullptr)
        list->tail = nullptr;
    return old;
}

SMSLListEntry *SMSLListRemoveEntryAtTail(SMSLList *list)
{
    if (list == nullptr)
        return nullptr;
    ListPlace<Entry> last{nullptr, list->head};
    while (last.entry != nullptr && last.entry != list->tail)
        last = {last.entry, last.entry->next};
    if (last.entry == nullptr)
        return nullptr; // empty, or broken: the links do not lead to the tail
    *ListLinkAfter(list, last.previous) = last.entry->next;
    list->tail = last.previous;
    return last.entry;
}

uint32_t SMSLListIsEmpty(const SMSLList *list)
{
    return list == nullptr || list->head == nullptr ? 1 : 0;
}

} // namespace qzvest
