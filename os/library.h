// Dynamic libraries, one by one and through a cache that their clients share.
#ifndef OS_LIBRARY_H
#define OS_LIBRARY_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

SMLibHandle *SMLibLoad(const char *path);
uint32_t SMLibUnLoad(SMLibHandle *handle);
void *SMLibLinkToExportFN(SMLibHandle *handle, const char *symbol);
uint32_t SMLibUnLinkFromExportFN(SMLibHandle *handle, void *address);

void *SMFLibLinkToExportFN(const char *client, const char *path, const char *symbol);
uint32_t SMFLibUnLoad(const char *client, const char *path);

// Attach step: the cache. It is attached once at a time.
int LibraryCacheAttach();
void LibraryCacheDetach();

} // namespace qzvest

#endif
