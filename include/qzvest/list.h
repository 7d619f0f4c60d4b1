/* Intrusive lists: singly linked (SMSLList) and doubly linked (SMDLList).
 *
 * A list is two pointers, head and tail; the links lie in the entries, and the payload is at an entry's data or
 * around the entry. List and entries are the caller's memory, or come from the ...Alloc calls. A list owns
 * nothing: taking an entry out, replacing it or freeing the list frees no entry. An entry is in one list at most.
 * Calls without a result do nothing when a pointer is NULL; calls that give an entry give NULL then, except as
 * told at SMDLListReplaceEntry.
 * Callbacks get the key and the whole entry, not its data, and must not change the list.
 * Threads: a list has no lock; whoever shares one guards it. */
#ifndef QZVEST_LIST_H
#define QZVEST_LIST_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Singly linked ---- */

/* SMSLListAlloc - an empty list on the heap; NULL when memory runs out. End it with SMSLListFree. */
SM_EXPORT SMSLList *SMSLListAlloc(void);

/* SMSLListFree - free a list of SMSLListAlloc: the record alone, so take out the entries first. */
SM_EXPORT void SMSLListFree(SMSLList *list);

/* SMSLListInitNoAlloc - make a record of the caller's an empty list. */
SM_EXPORT void SMSLListInitNoAlloc(SMSLList *list);

/* SMSLListEntryAlloc - an entry with room for a payload, in one heap block.
 *   size  bytes of payload, which are not cleared; data points to them, or is NULL for 0
 * Returns the entry, or NULL when memory runs out. End it with SMSLListEntryFree. */
SM_EXPORT SMSLListEntry *SMSLListEntryAlloc(uint32_t size);

/* SMSLListEntryFree - free an entry of SMSLListEntryAlloc, payload and all. Take it out of its list first. */
SM_EXPORT void SMSLListEntryFree(SMSLListEntry *entry);

/* SMSLListEntryInitNoAlloc - clear the link of the caller's entry. data stays as it is. */
SM_EXPORT void SMSLListEntryInitNoAlloc(SMSLListEntry *entry);

/* SMSLListInsertEntryAtHead, SMSLListInsertEntryAtTail - add an entry, in constant time. */
SM_EXPORT void SMSLListInsertEntryAtHead(SMSLList *list, SMSLListEntry *entry);
SM_EXPORT void SMSLListInsertEntryAtTail(SMSLList *list, SMSLListEntry *entry);

/* SMSLListInsertEntry - add an entry before the first one that key sorts before, or at the tail. The list is in
 * ascending order as long as every entry came in this way.
 *   key      sorts the new entry; used in this call alone, not NULL
 *   compare  called for the entries from the head on, until it gives 0 or less
 * Returns SM_STATUS_OK, SM_STATUS_ALREADY_EXISTS (compare gave 0), SM_STATUS_INVALID_PARAMETER (a NULL). On
 *   failure the list is as it was. */
SM_EXPORT uint32_t SMSLListInsertEntry(SMSLList *list, SMSLListEntry *entry, void *key,
                                       SMSLListCompareCallback compare);

/* SMSLListWalkAtHead - the first entry from the head for which compare gives 0, or NULL. key must not be NULL
 * even when compare ignores it. */
SM_EXPORT SMSLListEntry *SMSLListWalkAtHead(const SMSLList *list, void *key, SMSLListCompareCallback compare);

/* SMSLListReplaceEntry - put newEntry in the place of the first entry for which compare gives 0.
 * Returns the old entry, which is out of the list, or NULL when there is none or an argument is NULL. */
SM_EXPORT SMSLListEntry *SMSLListReplaceEntry(SMSLList *list, SMSLListEntry *newEntry, void *key,
                                              SMSLListCompareCallback compare);

/* SMSLListDeleteEntry - take an entry out. Its next keeps its value.
 *   previous  the entry before it, NULL when it is the head; not checked
 *   entry     in the list */
SM_EXPORT void SMSLListDeleteEntry(SMSLList *list, SMSLListEntry *previous, SMSLListEntry *entry);

/* SMSLListRemoveEntryAtHead - take out the head and return it, or NULL. Its next keeps its value. */
SM_EXPORT SMSLListEntry *SMSLListRemoveEntryAtHead(SMSLList *list);

/* SMSLListRemoveEntryAtTail - take out the tail and return it, or NULL. Walks the whole list; where the links do
 * not lead to the tail it gives NULL and changes nothing. */
SM_EXPORT SMSLListEntry *SMSLListRemoveEntryAtTail(SMSLList *list);

/* SMSLListIsEmpty - 1 for a list without entries and for NULL, else 0. */
SM_EXPORT uint32_t SMSLListIsEmpty(const SMSLList *list);

/* ---- Doubly linked: as above, with what differs ---- */

/* Each as the call of SMSLList with the same end of its name. */
SM_EXPORT SMDLList *SMDLListAlloc(void);
SM_EXPORT void SMDLListFree(SMDLList *list);
SM_EXPORT void SMDLListInitNoAlloc(SMDLList *list);
SM_EXPORT SMDLListEntry *SMDLListEntryAlloc(uint32_t size);
SM_EXPORT void SMDLListEntryFree(SMDLListEntry *entry);

/* SMDLListEntryInitNoAlloc - clear both links. data stays as it is. */
SM_EXPORT void SMDLListEntryInitNoAlloc(SMDLListEntry *entry);

/* Each as the call of SMSLList with the same end of its name; SMDLListInsertEntry gives the same statuses. */
SM_EXPORT void SMDLListInsertEntryAtHead(SMDLList *list, SMDLListEntry *entry);
SM_EXPORT void SMDLListInsertEntryAtTail(SMDLList *list, SMDLListEntry *entry);
SM_EXPORT uint32_t SMDLListInsertEntry(SMDLList *list, SMDLListEntry *entry, void *key,
                                       SMDLListCompareCallback compare);

/* SMDLListWalkAtHead, SMDLListWalkAtTail - the first entry for which compare gives 0, from the head forward or
 * from the tail back. */
SM_EXPORT SMDLListEntry *SMDLListWalkAtHead(const SMDLList *list, void *key, SMDLListCompareCallback compare);
SM_EXPORT SMDLListEntry *SMDLListWalkAtTail(const SMDLList *list, void *key, SMDLListCompareCallback compare);

/* SMDLListReplaceEntry - as SMSLListReplaceEntry, but newEntry is not tested: it must not be NULL where an entry
 * matches. */
SM_EXPORT SMDLListEntry *SMDLListReplaceEntry(SMDLList *list, SMDLListEntry *newEntry, void *key,
                                              SMDLListCompareCallback compare);

/* SMDLListDeleteEntry - take an entry out, in constant time. Its links keep their values.
 *   entry  in the list */
SM_EXPORT void SMDLListDeleteEntry(SMDLList *list, SMDLListEntry *entry);

/* SMDLListRemoveEntryAtHead - take out the head and return it, or NULL. Its links keep their values. */
SM_EXPORT SMDLListEntry *SMDLListRemoveEntryAtHead(SMDLList *list);

/* SMDLListRemoveEntryAtTail - take out the tail and return it, or NULL; in constant time. Its links keep their
 * values. */
SM_EXPORT SMDLListEntry *SMDLListRemoveEntryAtTail(SMDLList *list);

/* SMDLListIsEmpty - 1 for a list without entries and for NULL, else 0. */
SM_EXPORT uint32_t SMDLListIsEmpty(const SMDLList *list);

#ifdef __cplusplus
}
#endif

#endif
