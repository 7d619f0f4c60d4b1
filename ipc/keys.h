// The key registry: which System V key stands for an object name, the same for all processes of a machine and for good.
#ifndef IPC_KEYS_H
#define IPC_KEYS_H

#include <cstdint>

namespace qzvest {

// The key of an object name, which is given out now if it has none yet; 0 for every failure.
uint32_t SMIPCKeyGet(const char *objectName);

// What the registry file keeps of private semaphore sets.
constexpr const char *kSemaphoreListSection = "Semaphore List";

} // namespace qzvest

#endif
