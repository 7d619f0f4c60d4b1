// IPv4 addresses between text and the 32-bit network form, and the network state that all network calls stand on.
#ifndef OS_IPV4_H
#define OS_IPV4_H

#include <cstdint>

namespace qzvest {

// The attach step of the network state. A second entry gives the result of the first.
int NetworkAttach();
void NetworkDetach();

// False before the attach and after the detach: network calls then give SM_STATUS_NOT_ATTACHED.
bool NetworkIsAttached();

// Around the operating system's calls with a result in static memory; on this platform there is nothing to do.
inline uint32_t NetworkLockAcquire()
{
    return 0;
}
inline void NetworkLockRelease() {}

uint32_t SMIPAddrASCIIToNetwork(const char *text, uint32_t *address);
uint32_t SMIPAddrNetworkToASCII(uint32_t address, char *buffer, uint32_t *size);

} // namespace qzvest

#endif
