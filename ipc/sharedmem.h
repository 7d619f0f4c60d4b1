// Shared memory by name.
#ifndef IPC_SHAREDMEM_H
#define IPC_SHAREDMEM_H

#include <qzvest/types.h>

namespace qzvest {

SMSharedMem *SMSharedMemCreate(const char *name, uint32_t size);
SMSharedMem *SMSharedMemCreate_s(const char *name, uint32_t size, uint32_t accessMask);
SMSharedMem *SMSharedMemOpen(const char *name);
void *SMSharedMemGetAddressPtr(SMSharedMem *handle);
void SMSharedMemFree(SMSharedMem *handle);

} // namespace qzvest

#endif
