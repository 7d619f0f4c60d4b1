#include "os/ipv4.h"

#include <arpa/inet.h>
#include <strings.h>

#include <cstring>

#include <qzvest/status.h>

#include "frame/heap.h"

namespace qzvest {
namespace {

uint16_t networkState; // 1 from attach to detach
uint16_t initialised;
int startResult;

// What the platform wants before the first network call: nothing here.
int StartNetwork()
{
    return 1;
}

// The text as the parser is to see it: decimal octets without leading zeros, which it would take for octal, and
// without any "x". A prefix of hexadecimal goes with them, so 0x10 is ten.
void CopyPlainOctets(char *to, const char *from)
{
    while (*from != '\0') {
        const bool zero = *from == '0';
        while (*from == '0')
            ++from;
        if (zero && (*from == '.' || *from == '\0'))
            *to++ = '0';
        for (bool inside = true; inside && *from != '\0'; ++from) {
            inside = *from != '.';
            if (*from != 'x')
                *to++ = *from;
        }
    }
    *to = '\0';
}

// The one address that looks like the parser's failure is known by its text alone.
bool IsBroadcast(const char *text)
{
    return strcasecmp(text, "255.255.255.255") == 0 || strcasecmp(text, "0xff.0xff.0xff.0xff") == 0;
}

} // namespace

int NetworkAttach()
{
    if (initialised != 0)
        return startResult;
    initialised = 1;
    startResult = StartNetwork();
    networkState = startResult == 1 ? 1 : 0;
    return startResult;
}

void NetworkDetach()
{
    networkState = 0;
    initialised = 0;
}

bool NetworkIsAttached()
{
    return networkState != 0;
}

uint32_t SMIPAddrASCIIToNetwork(const char *text, uint32_t *address)
{
    if (text == nullptr || address == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    const HeapPtr<char> octets(HeapRoom<char>(std::strlen(text) + 1));
    if (!octets)
        return SM_STATUS_NO_MEMORY;
    CopyPlainOctets(octets.get(), text);
    const uint32_t parsed = inet_addr(octets.get());
    if (parsed == INADDR_NONE && !IsBroadcast(text))
        return SM_STATUS_FAILED;
    *address = parsed;
    return SM_STATUS_OK;
}

uint32_t SMIPAddrNetworkToASCII(uint32_t address, char *buffer, uint32_t *size)
{
    if (buffer == nullptr || size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    in_addr network{};
    network.s_addr = address;
    uint32_t status = NetworkLockAcquire();
    if (status != SM_STATUS_OK)
        return status;
    const char *text = inet_ntoa(network);
    if (text == nullptr) {
        status = SM_STATUS_FAILED;
    } else {
        const auto needed = static_cast<uint32_t>(std::strlen(text) + 1);
        if (*size >= needed)
            std::memcpy(buffer, text, needed);
        else
            status = SM_STATUS_BUFFER_TOO_SMALL;
        *size = needed;
    }
    NetworkLockRelease();
    return status;
}

} // namespace qzvest
