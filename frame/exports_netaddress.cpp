#include <qzvest/netaddress.h>

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

} // extern "C"
