// Host name, DNS suffix, addresses of both families as text, and the list of this machine's addresses.
#ifndef OS_ADDRESS_H
#define OS_ADDRESS_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

constexpr uint32_t kHostNameRoom = 64; // bytes of this machine's name with its terminator

uint32_t SMGetIPHostName(char *buffer, uint32_t *size);
uint32_t SMUCS2GetIPHostName(uint16_t *buffer, uint32_t *size);
uint32_t SMGetDNSSuffixNameName(char *buffer, uint32_t *size);
uint32_t SMInetAddrUTF8ToNetwork(uint16_t family, const char *text, void *buffer, uint32_t *size);
uint32_t SMInetAddrNetworkToUTF8(uint16_t family, const void *address, uint32_t length, char *buffer, uint32_t *size);

uint32_t SMGetIPAddrStrList(const char *hostName, uint32_t *count, SMIPAddrSlot *list);
uint32_t SMGetInetAddrStrList(uint32_t scope, uint32_t *count, SMInetAddrRecord *list);

} // namespace qzvest

#endif
