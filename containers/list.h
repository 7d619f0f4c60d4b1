// Intrusive lists, singly and doubly linked. The links lie in the caller's entries; a list owns nothing.
#ifndef CONTAINERS_LIST_H
#define CONTAINERS_LIST_H

#include <qzvest/status.h>
#include <qzvest/types.h>

#include "frame/heap.h"

namespace qzvest {

SMSLList *SMSLListAlloc();
void SMSLListFree(SMSLList *list);
void SMSLListInitNoAlloc(SMSLList *list);
SMSLListEntry *SMSLListEntryAlloc(uint32_t size);
void SMSLListEntryFree(SMSLListEntry *entry);
void SMSLListEntryInitNoAlloc(SMSLListEntry *entry);
void SMSLListInsertEntryAtHead(SMSLList *list, SMSLListEntry *entry);
void SMSLListInsertEntryAtTail(SMSLList *list, SMSLListEntry *entry);
uint32_t SMSLListInsertEntry(SMSLList *list, SMSLListEntry *entry, void *key, SMSLListCompareCallback compare);
SMSLListEntry *SMSLListWalkAtHead(const SMSLList *list, void *key, SMSLListCompareCallback compare);
SMSLListEntry *SMSLListReplaceEntry(SMSLList *list, SMSLListEntry *newEntry, void *key,
                                    SMSLListCompareCallback compare);
void SMSLListDeleteEntry(SMSLList *list, SMSLListEntry *previous, SMSLListEntry *entry);
SMSLListEntry *SMSLListRemoveEntryAtHead(SMSLList *list);
SMSLListEntry *SMSLListRemoveEntryAtTail(SMSLList *list);
uint32_t SMSLListIsEmpty(const SMSLList *list);

SMDLList *SMDLListAlloc();
void SMDLListFree(SMDLList *list);
void SMDLListInitNoAlloc(SMDLList *list);
SMDLListEntry *SMDLListEntryAlloc(uint32_t size);
void SMDLListEntryFree(SMDLListEntry *entry);
void SMDLListEntryInitNoAlloc(SMDLListEntry *entry);
void SMDLListInsertEntryAtHead(SMDLList *list, SMDLListEntry *entry);
void SMDLListInsertEntryAtTail(SMDLList *list, SMDLListEntry *entry);
uint32_t SMDLListInsertEntry(SMDLList *list, SMDLListEntry *entry, void *key, SMDLListCompareCallback compare);
SMDLListEntry *SMDLListWalkAtHead(const SMDLList *list, void *key, SMDLListCompareCallback compare);
SMDLListEntry *SMDLListWalkAtTail(const SMDLList *list, void *key, SMDLListCompareCallback compare);
SMDLListEntry *SMDLListReplaceEntry(SMDLList *list, SMDLListEntry *newEntry, void *key,
                                    SMDLListCompareCallback compare);
void SMDLListDeleteEntry(SMDLList *list, SMDLListEntry *entry);
SMDLListEntry *SMDLListRemoveEntryAtHead(SMDLList *list);
SMDLListEntry *SMDLListRemoveEntryAtTail(SMDLList *list);
uint32_t SMDLListIsEmpty(const SMDLList *list);

// What the two families have in common.

template <typename List>
List *ListAlloc()
{
    List *list = HeapRoom<List>(1).release();
    if (list != nullptr)
        *list = {};
    return list;
}

// One block: the entry and, behind it, size bytes of payload, which are not cleared.
template <typename Entry>
Entry *ListEntryAlloc(uint32_t size)
{
    Entry *entry = static_cast<Entry *>(std::malloc(sizeof(Entry) + size));
    if (entry == nullptr)
        return nullptr;
    *entry = {};
    if (size > 0)
        entry->data = entry + 1;
    return entry;
}

template <typename Entry>
void ListEntryFree(Entry *entry)
{
    if (entry == nullptr)
        return;
    entry->data = nullptr;
    std::free(entry);
}

// An entry, or NULL behind the last one, and the entry before it, NULL before the first one.
template <typename Entry>
struct ListPlace {
    Entry *previous;
    Entry *entry;
};

// The first entry that matches key.
template <typename Entry>
ListPlace<Entry> ListFind(Entry *head, void *key, int32_t (*compare)(void *, Entry *))
{
    ListPlace<Entry> place{nullptr, head};
    while (place.entry != nullptr && compare(key, place.entry) != 0)
        place = {place.entry, place.entry->next};
    return place;
}

// Between which entries key belongs. False when an entry on the way matches it.
template <typename Entry>
bool ListFindRoom(Entry *head, void *key, int32_t (*compare)(void *, Entry *), ListPlace<Entry> *room)
{
    *room = {nullptr, head};
    while (room->entry != nullptr) {
        const int32_t side = compare(key, room->entry);
        if (side == 0)
            return false;
        if (side < 0)
            break;
        *room = {room->entry, room->entry->next};
    }
    return true;
}

// The word that points on from this entry; from NULL it is the list's head.
template <typename List, typename Entry>
Entry **ListLinkAfter(List *list, Entry *previous)
{
    return previous != nullptr ? &previous->next : &list->head;
}

} // namespace qzvest

#endif
