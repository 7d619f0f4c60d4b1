/* Versions, heap calls and export context.
 *
 * The library attaches when it is loaded and detaches when it is unloaded; a process whose attach fails
 * ends with exit status 1 and a line in the system log. Attaching waits while another process has the lock of the
 * registry of names.
 * fork: the child of a process of several threads calls nothing of this library, and leaves by _exit or exec: locks that
 * other threads had stay locked in it, for the detach, too.
 * No call here takes a lock, and all may be called from any thread. */
#ifndef QZVEST_MODULE_H
#define QZVEST_MODULE_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the loaded library: 1.1.1. */
SM_EXPORT uint32_t VESTGetMajorVersion(void);
SM_EXPORT uint32_t VESTGetMinorVersion(void);
SM_EXPORT uint32_t VESTGetRevision(void);

/* SMAllocMem - a block of the C heap, as malloc gives it.
 *   size  bytes
 * Returns the block, its content not cleared, or NULL when memory runs out. The caller owns it and ends it
 * with SMFreeMem, SMFreeGeneric or free. */
SM_EXPORT void *SMAllocMem(uint32_t size);

/* SMReAllocMem - change the size of a block, as realloc does.
 *   ptr   a block of this heap, or NULL for a new one
 *   size  bytes wanted
 * Returns the block, which may have moved, or NULL on failure with the old block kept. A block given with size
 * 0 is freed, and NULL comes back. */
SM_EXPORT void *SMReAllocMem(void *ptr, uint32_t size);

/* SMFreeMem, SMFreeGeneric - end a block that any call of this library handed out.
 *   ptr  the block; nothing happens for NULL
 * Records with a release call of their own (SMSDOConfigFree and so on) want that call. */
SM_EXPORT void SMFreeMem(void *ptr);
SM_EXPORT void SMFreeGeneric(void *ptr);

/* Export context, kept for callers that still announce theirs; no state is kept.
 *   ctx    SMGetExportContext stores 0 there and needs it; the others do not look at it
 *   value  not looked at */
SM_EXPORT void SMGetExportContext(uint32_t *ctx);
SM_EXPORT void SMSetExportContext(uint32_t *ctx, uint32_t value);
SM_EXPORT void SMResetExportContext(uint32_t *ctx);

#ifdef __cplusplus
}
#endif

#endif
