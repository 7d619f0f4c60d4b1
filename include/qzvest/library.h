/* Dynamic libraries: one by one (SMLib...), and through a cache of the process (SMFLib...) that loads a library once
 * for all its clients.
 *
 * The loader is the system's (dlopen, POSIX), and so is the search for a path without a slash; all symbols are
 * resolved at once. What the loader has to say about a failure is dropped.
 * The cache knows a library by its path as written, byte by byte, and a client by a name that it chooses.
 * Threads: any, at any time, but for a handle whose library another thread unloads. The cache has one lock, which is
 * held while the loader works: a constructor or destructor in a library that calls SMFLib... hangs for ever. */
#ifndef QZVEST_LIBRARY_H
#define QZVEST_LIBRARY_H

#include <qzvest/export.h>
#include <qzvest/status.h>
#include <qzvest/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* SMLibLoad - load a library.
 * Returns the handle, or NULL for a NULL path, a library that cannot be loaded, and when memory runs out. End it
 * with SMLibUnLoad. */
SM_EXPORT SMLibHandle *SMLibLoad(const char *path);

/* SMLibUnLoad - unload a library and free its handle. Not for a handle from the cache.
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER for NULL; SM_STATUS_BAD_FORMAT for a handle that is none of a
 * library; SM_STATUS_FAILED when the loader refuses. The handle stays in all but the first. */
SM_EXPORT uint32_t SMLibUnLoad(SMLibHandle *handle);

/* SMLibLinkToExportFN - the address of a symbol, good until the library is unloaded.
 * Returns NULL for a NULL argument, a handle that is none of a library, and a symbol that is not there; a symbol
 * whose value is NULL looks the same. */
SM_EXPORT void *SMLibLinkToExportFN(SMLibHandle *handle, const char *symbol);

/* SMLibUnLinkFromExportFN - give an address back. Nothing is released: it looks at its arguments.
 * Returns SM_STATUS_OK; SM_STATUS_INVALID_PARAMETER for a NULL argument; SM_STATUS_BAD_FORMAT for a handle that is
 * none of a library, whatever the address. */
SM_EXPORT uint32_t SMLibUnLinkFromExportFN(SMLibHandle *handle, void *address);

/* SMFLibLinkToExportFN - the address of a symbol in a library that is loaded if it is not yet, with one more client
 * if it is not one yet.
 *   client  whoever asks; copied
 *   path    the library; copied
 *   symbol  NULL: the library's handle, an SMLibHandle for SMLibLinkToExportFN, which stays the cache's
 * Returns the address, or the handle, both good until the library's last client has gone. NULL for a NULL client or
 * path, for a library that cannot be loaded (the cache is unchanged), and when memory runs out. NULL also for a
 * symbol that is not there, or whose value is NULL: the library then stays loaded, with its client. When there is
 * memory for a library but not for the name of its first client, it stands without one. */
SM_EXPORT void *SMFLibLinkToExportFN(const char *client, const char *path, const char *symbol);

/* SMFLibUnLoad - take a client from a library, and unload it with the last one. A client that the library does not
 * have counts as one that goes, and so may UNLOAD A LIBRARY FROM UNDER ITS CLIENTS.
 * Returns SM_STATUS_OK, also for a path that is not in the cache; SM_STATUS_INVALID_PARAMETER for a NULL argument;
 * SM_STATUS_FAILED when the client cannot be taken. */
SM_EXPORT uint32_t SMFLibUnLoad(const char *client, const char *path);

#ifdef __cplusplus
}
#endif

#endif
