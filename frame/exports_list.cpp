#include <qzvest/list.h>

#include "containers/list.h"

extern "C" {

SMSLList *SMSLListAlloc()
{
    return qzvest::SMSLListAlloc();
}

void SMSLListFree(SMSLList *list)
{
    qzvest::SMSLListFree(list);
}

void SMSLListInitNoAlloc(SMSLList *list)
{
    qzvest::SMSLListInitNoAlloc(list);
}

SMSLListEntry *SMSLListEntryAlloc(uint32_t size)
{
    return qzvest::SMSLListEntryAlloc(size);
}

void SMSLListEntryFree(SMSLListEntry *entry)
{
    qzvest::SMSLListEntryFree(entry);
}

void SMSLListEntryInitNoAlloc(SMSLListEntry *entry)
{
    qzvest::SMSLListEntryInitNoAlloc(entry);
}

void SMSLListInsertEntryAtHead(SMSLList *list, SMSLListEntry *entry)
{
    qzvest::SMSLListInsertEntryAtHead(list, entry);
}

void SMSLListInsertEntryAtTail(SMSLList *list, SMSLListEntry *entry)
{
    qzvest::SMSLListInsertEntryAtTail(list, entry);
}

uint32_t SMSLListInsertEntry(SMSLList *list, SMSLListEntry *entry, void *key, SMSLListCompareCallback compare)
{
    return qzvest::SMSLListInsertEntry(list, entry, key, compare);
}

SMSLListEntry *SMSLListWalkAtHead(const SMSLList *list, void *key, SMSLListCompareCallback compare)
{
    return qzvest::SMSLListWalkAtHead(list, key, compare);
}

SMSLListEntry *SMSLListReplaceEntry(SMSLList *list, SMSLListEntry *newEntry, void *key, SMSLListCompareCallback compare)
{
    return qzvest::SMSLListReplaceEntry(list, newEntry, key, compare);
}

void SMSLListDeleteEntry(SMSLList *list, SMSLListEntry *previous, SMSLListEntry *entry)
{
    qzvest::SMSLListDeleteEntry(list, previous, entry);
}

SMSLListEntry *SMSLListRemoveEntryAtHead(SMSLList *list)
{
    return qzvest::SMSLListRemoveEntryAtHead(list);
}

SMSLListEntry *SMSLListRemoveEntryAtTail(SMSLList *list)
{
    return qzvest::SMSLListRemoveEntryAtTail(list);
}

uint32_t SMSLListIsEmpty(const SMSLList *list)
{
    return qzvest::SMSLListIsEmpty(list);
}

SMDLList *SMDLListAlloc()
{
    return qzvest::SMDLListAlloc();
}

void SMDLListFree(SMDLList *list)
{
    qzvest::SMDLListFree(list);
}

void SMDLListInitNoAlloc(SMDLList *list)
{
    qzvest::SMDLListInitNoAlloc(list);
}

SMDLListEntry *SMDLListEntryAlloc(uint32_t size)
{
    return qzvest::SMDLListEntryAlloc(size);
}

void SMDLListEntryFree(SMDLListEntry *entry)
{
    qzvest::SMDLListEntryFree(entry);
}

void SMDLListEntryInitNoAlloc(SMDLListEntry *entry)
{
    qzvest::SMDLListEntryInitNoAlloc(entry);
}

void SMDLListInsertEntryAtHead(SMDLList *list, SMDLListEntry *entry)
{
    qzvest::SMDLListInsertEntryAtHead(list, entry);
}

void SMDLListInsertEntryAtTail(SMDLList *list, SMDLListEntry *entry)
{
    qzvest::SMDLListInsertEntryAtTail(list, entry);
}

uint32_t SMDLListInsertEntry(SMDLList *list, SMDLListEntry *entry, void *key, SMDLListCompareCallback compare)
{
    return qzvest::SMDLListInsertEntry(list, entry, key, compare);
}

SMDLListEntry *SMDLListWalkAtHead(const SMDLList *list, void *key, SMDLListCompareCallback compare)
{
    return qzvest::SMDLListWalkAtHead(list, key, compare);
}

SMDLListEntry *SMDLListWalkAtTail(const SMDLList *list, void *key, SMDLListCompareCallback compare)
{
    return qzvest::SMDLListWalkAtTail(list, key, compare);
}

SMDLListEntry *SMDLListReplaceEntry(SMDLList *list, SMDLListEntry *newEntry, void *key, SMDLListCompareCallback compare)
{
    return qzvest::SMDLListReplaceEntry(list, newEntry, key, compare);
}

void SMDLListDeleteEntry(SMDLList *list, SMDLListEntry *entry)
{
    qzvest::SMDLListDeleteEntry(list, entry);
}

SMDLListEntry *SMDLListRemoveEntryAtHead(SMDLList *list)
{
    return qzvest::SMDLListRemoveEntryAtHead(list);
}

SMDLListEntry *SMDLListRemoveEntryAtTail(SMDLList *list)
{
    return qzvest::SMDLListRemoveEntryAtTail(list);
}

uint32_t SMDLListIsEmpty(const SMDLList *list)
{
    return qzvest::SMDLListIsEmpty(list);
}

} // extern "C"
