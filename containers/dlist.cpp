#include <cstddef>

#include "containers/list.h"

namespace qzvest {

using Entry = SMDLListEntry;

// An entry's prev stands where a list has its tail. Callers may count on it: in both records the first word
// leads forward and the second one back.
static_assert(offsetof(SMDLList, head) == 0 && offsetof(SMDLList, tail) == 8 && sizeof(SMDLList) == 16);
static_assert(offsetof(Entry, next) == offsetof(SMDLList, head) && offsetof(Entry, prev) == offsetof(SMDLList, tail));
static_assert(offsetof(Entry, data) == 16 && sizeof(Entry) == 24);

namespace {

// The word that points back to this entry; to NULL, the end of the list, it is the list's tail.
Entry **LinkBackFrom(SMDLList *list, Entry *following)
{
    return following != nullptr ? &following->prev : &list->tail;
}

// Whatever leads to old from before or from behind now leads to these. An entry whose links are clear changes nothing.
void Redirect(SMDLList *list, Entry *old, Entry *forward, Entry *back)
{
    if (list->head == old)
        list->head = forward;
    if (list->tail == old)
        list->tail = back;
    if (old->prev != nullptr)
        old->prev->next = forward;
    if (old->next != nullptr)
        old->next->prev = back;
}

} // namespace

SMDLList *SMDLListAlloc()
{
    return ListAlloc<SMDLList>();
}

void SMDLListFree(SMDLList *list)
{
    std::free(list);
}

void SMDLListInitNoAlloc(SMDLList *list)
{
    if (list != nullptr)
        *list = {};
}

SMDLListEntry *SMDLListEntryAlloc(uint32_t size)
{
    return ListEntryAlloc<Entry>(size);
}

void SMDLListEntryFree(SMDLListEntry *entry)
{
    ListEntryFree(entry);
}

void SMDLListEntryInitNoAlloc(SMDLListEntry *entry)
{
    if (entry == nullptr)
        return;
    entry->next = nullptr;
    entry->prev = nullptr; // data stays: the caller may have set it already
}

void SMDLListInsertEntryAtHead(SMDLList *list, SMDLListEntry *entry)
{
    if (list == nullptr || entry == nullptr)
        return;
    if (list->tail != nullptr) {
        list->head->prev = entry;
        entry->next = list->head;
    } else {
        list->tail = entry;
        entry->next = nullptr;
    }
    list->head = entry;
    entry->prev = nullptr;
}

void SMDLListInsertEntryAtTail(SMDLList *list, SMDLListEntry *entry)
{
    if (list == nullptr || entry == nullptr)
        return;
    entry->prev = list->tail;
    *ListLinkAfter(list, list->tail) = entry;
    list->tail = entry;
    entry->next = nullptr;
}

uint32_t SMDLListInsertEntry(SMDLList *list, SMDLListEntry *entry, void *key, SMDLListCompareCallback compare)
{
    if (list == nullptr || entry == nullptr || key == nullptr || compare == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    ListPlace<Entry> room;
    if (!ListFindRoom(list->head, key, compare, &room))
        return SM_STATUS_ALREADY_EXISTS;
    entry->next = room.entry;
    entry->prev = room.previous;
    *ListLinkAfter(list, room.previous) = entry;
    *LinkBackFrom(list, room.entry) = entry;
    return SM_STATUS_OK;
}

SMDLListEntry *SMDLListWalkAtHead(const SMDLList *list, void *key, SMDLListCompareCallback compare)
{
    if (list == nullptr || key == nullptr || compare == nullptr)
        return nullptr;
    return ListFind(list->head, key, compare).entry;
}

SMDLListEntry *SMDLListWalkAtTail(const SMDLList *list, void *key, SMDLListCompareCallback compare)
{
    if (list == nullptr || key == nullptr || compare == nullptr)
        return nullptr;
    Entry *entry = list->tail;
    while (entry != nullptr && compare(key, entry) != 0)
        entry = entry->prev;
    return entry;
}

// newEntry is not tested, other than in the singly linked family: without a match a NULL one does no harm.
SMDLListEntry *SMDLListReplaceEntry(SMDLList *list, SMDLListEntry *newEntry, void *key, SMDLListCompareCallback compare)
{
    Entry *old = SMDLListWalkAtHead(list, key, compare);
    if (old == nullptr)
        return nullptr;
    newEntry->next = old->next;
    newEntry->prev = old->prev;
    Redirect(list, old, newEntry, newEntry);
    return old;
}

void SMDLListDeleteEntry(SMDLList *list, SMDLListEntry *entry)
{
    if (list == nullptr || entry == nullptr)
        return;
    Redirect(list, entry, entry->next, entry->prev);
}

SMDLListEntry *SMDLListRemoveEntryAtHead(SMDLList *list)
{
    if (list == nullptr || list->head == nullptr)
        return nullptr;
    Entry *old = list->head;
    list->head = old->next;
    *LinkBackFrom(list, list->head) = nullptr;
    return old;
}

SMDLListEntry *SMDLListRemoveEntryAtTail(SMDLList *list)
{
    if (list == nullptr || list->tail == nullptr)
        return nullptr;
    Entry *old = list->tail;
    list->tail = old->prev;
    if (list->tail != nullptr)
        list->tail->next = old->next;
    else
        list->head = nullptr;
    return old;
}

uint32_t SMDLListIsEmpty(const SMDLList *list)
{
    return list == nullptr || list->head == nullptr ? 1 : 0;
}

} // namespace qzvest
