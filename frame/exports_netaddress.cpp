#include <qzvest/netaddress.h>

#include "os/address.h"
#include "os/ipv4.h"

extern "C" {

uint32_t SMIPAddrASCIIToNetwork(const char *text, uint32_t *address)
{
    return qzvest::SMIPAddrASCIIToNetwork(text, address);
}

uint32_t SMIPAddrNetworkToASCII(uint32_t address, char *buffer, uint32_t *size)
{
    return qzvest::SMIPAddrNetworkToASCII(address, buffer, size);
}

uint32_t SMGetIPHostName(char *buffer, uint32_t *size)
{
    return qzvest::SMGetIPHostName(buffer, size);
}

uint32_t SMUCS2GetIPHostName(uint16_t *buffer, uint32_t *size)
{
    return qzvest::SMUCS2GetIPHostName(buffer, size);
}

uint32_t SMGetDNSSuffixNameName(char *buffer, uint32_t *size)
{
    return qzvest::SMGetDNSSuffixNameName(buffer, size);
}

uint32_t SMInetAddrUTF8ToNetwork(uint16_t family, const char *text, void *buffer, uint32_t *size)
{
    return qzvest::SMInetAddrUTF8ToNetwork(family, text, buffer, size);
}

uint32_t SMInetAddrNetworkToUTF8(uint16_t family, const void *address, uint32_t length, char *buffer, uint32_t *size)
{
    return qzvest::SMInetAddrNetworkToUTF8(family, address, length, buffer, size);
}

uint32_t SMGetIPAddrStrList(const char *hostName, uint32_t *count, SMIPAddrSlot *list)
{
    return qzvest::SMGetIPAddrStrList(hostName, count, list);
}

uint32_t SMGetInetAddrStrList(uint32_t scope, uint32_t *count, SMInetAddrRecord *list)
{
    return qzvest::SMGetInetAddrStrList(scope, count, list);
}

} // extern "C"
