/* Shared memory: a segment that processes find by name.
 *
 * A name is any text but the empty one; processes that use the same text get the same segment. It is a System V
 * shared memory segment, under a key that the registry file in the IPC directory keeps. A semaphore set under the same
 * key, the guard, tells whether the creator lives: it is taken (0) while a creator has the segment, and the system
 * gives it back (1) when that process dies without SMSharedMemFree. Segment, guard and key then stay, and the next
 * SMSharedMemCreate of the name picks the segment up.
 * A handle belongs to the process that made it. Create and Open take the guard's unit for a moment to tell whether
 * the creator lives: two of them at the same time may mistake each other for it, and a Create may then wait for as
 * long as the other's process lives. Who wants to be safe from that does Create, Open and Free under a named mutex.
 * A process killed within one of the three may leave the name as if its creator lived, or without a guard: Create then
 * gives NULL, while Open may find the segment, until segment and guard are removed (ipcrm).
 * The guard is its user's own: for any other user it counts as missing, so that Open finds a segment whose creator has
 * died, and Create does not take it over.
 * Create and Open give a new name its key in the registry file, and may take it from a name, as semaphore.h tells.
 * Threads: calls with different handles may run at once. Nothing here locks the bytes of a segment. */
#ifndef QZVEST_SHAREDMEM_H
#define QZVEST_SHAREDMEM_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMSharedMemCreate - SMSharedMemCreate_s with SM_ACCESS_GROUP. */
SM_EXPORT SMSharedMem *SMSharedMemCreate(const char *name, uint32_t size);

/* SMSharedMemCreate_s - make a segment, or take over the one that a dead creator left.
 *   size        bytes; a segment taken over keeps the size it has
 *   accessMask  who may open a new segment: SM_ACCESS_GROUP, SM_ACCESS_OWNER or nibbles of SMAccessRight; the guard
 *               always has the mode 0600
 * Returns the handle, which SMSharedMemFree ends. A new segment is filled with zeros; one taken over has its old
 *   bytes. Without a key, for want of the registry, the segment is a private one of this process and its children.
 * Returns NULL for a NULL or an empty name, while a creator lives, when the system denies the segment, its place in
 *   memory (the segment is then removed) or the guard (likewise), and when memory runs out. */
SM_EXPORT SMSharedMem *SMSharedMemCreate_s(const char *name, uint32_t size, uint32_t accessMask);

/* SMSharedMemOpen - attach the segment of a living creator, as far as the guard tells.
 * Returns the handle, which SMSharedMemFree ends, or NULL for a NULL or an empty name, when there is no such segment
 *   or its creator has died, when the system denies it, and when memory runs out. A segment that cannot be attached
 *   is removed, for all. Just before a creator is ready, an open may find the segment or not. */
SM_EXPORT SMSharedMem *SMSharedMemOpen(const char *name);

/* SMSharedMemGetAddressPtr - where the segment begins in this process, readable and writable until SMSharedMemFree.
 * NULL for NULL and for a handle of another kind. */
SM_EXPORT void *SMSharedMemGetAddressPtr(SMSharedMem *handle);

/* SMSharedMemFree - detach a segment and end the handle. The handle that made the segment removes it and the guard,
 * too: no other process can attach it from then on, and those that have it attached keep it. A handle that
 * opened the segment or took it over removes nothing; the latter leaves the guard taken until its process ends, so that
 * until then Create of the name gives NULL, and Open finds the segment.
 * Nothing for NULL and for a handle of another kind. */
SM_EXPORT void SMSharedMemFree(SMSharedMem *handle);

#ifdef __cplusplus
}
#endif

#endif
