#include "os/address.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>

#include "frame/heap.h"
#include "os/ipv4.h"
#include "text/transcode.h"

namespace qzvest {
namespace {

struct AddressInfoRelease {
    void operator()(addrinfo *info) const
    {
        freeaddrinfo(info);
    }
};

// The name, cut to the room, which is not 0.
void HostName(char *buffer, uint32_t room)
{
    std::memset(buffer, 0, room);
    (void)gethostname(buffer, room); // what there is of it will do
    buffer[room - 1] = '\0';
}

// What the system calls a family of ours, and how long its addresses are; 0 for a family that there is not.
struct Family {
    int system;
    uint32_t length;
};

constexpr Family kFamilies[] = {{0, 0}, {AF_INET, sizeof(in_addr)}, {AF_INET6, sizeof(in6_addr)}};

Family FamilyOf(uint16_t family)
{
    return family < std::size(kFamilies) ? kFamilies[family] : kFamilies[0];
}

} // namespace

uint32_t SMGetIPHostName(char *buffer, uint32_t *size)
{
    if (buffer == nullptr || size == nullptr || *size == 0)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    HostName(buffer, *size);
    *size = static_cast<uint32_t>(std::strlen(buffer) + 1);
    return SM_STATUS_OK;
}

uint32_t SMUCS2GetIPHostName(uint16_t *buffer, uint32_t *size)
{
    if (buffer == nullptr || size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    char name[kHostNameRoom];
    HostName(name, sizeof name);
    return SMUTF8StrToUCS2Str(buffer, size, name);
}

uint32_t SMGetDNSSuffixNameName(char *buffer, uint32_t *size)
{
    if (size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    const HeapPtr<char> name = HeapRoom<char>(kHostNameRoom);
    if (!name)
        return SM_STATUS_NO_MEMORY;
    HostName(name.get(), kHostNameRoom);
    addrinfo hints = {};
    hints.ai_flags = AI_CANONNAME;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(name.get(), nullptr, &hints, &found) != 0)
        return SM_STATUS_FAILED;
    const std::unique_ptr<addrinfo, AddressInfoRelease> owner(found);
    if (found == nullptr || found->ai_canonname == nullptr)
        return SM_STATUS_FAILED;
    const char *point = std::strchr(found->ai_canonname, '.');
    const char *suffix = point != nullptr ? point + 1 : "";
    const auto need = static_cast<uint32_t>(std::strlen(suffix) + 1);
    const bool fits = *size >= need;
    *size = need;
    if (fits && buffer != nullptr)
        std::memcpy(buffer, suffix, need);
    return fits ? SM_STATUS_OK : SM_STATUS_BUFFER_TOO_SMALL;
}

uint32_t SMInetAddrUTF8ToNetwork(uint16_t family, const char *text, void *buffer, uint32_t *size)
{
    if (text == nullptr || buffer == nullptr || size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    const Family known = FamilyOf(family);
    in6_addr address; // the longer one
    if (known.length == 0 || inet_pton(known.system, text, &address) != 1)
        return SM_STATUS_INVALID_PARAMETER;
    if (*size < known.length)
        return SM_STATUS_BUFFER_TOO_SMALL;
    std::memcpy(buffer, &address, known.length);
    *size = known.length;
    return SM_STATUS_OK;
}

uint32_t SMInetAddrNetworkToUTF8(uint16_t family, const void *address, uint32_t length, char *buffer, uint32_t *size)
{
    if (address == nullptr || buffer == nullptr || size == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    const Family known = FamilyOf(family);
    if (known.length == 0 || length != known.length)
        return SM_STATUS_INVALID_PARAMETER;
    if (inet_ntop(known.system, address, buffer, *size) != nullptr) {
        *size = static_cast<uint32_t>(std::strlen(buffer) + 1);
        return SM_STATUS_OK;
    }
    if (errno == ENOSPC)
        return SM_STATUS_BUFFER_TOO_SMALL;
    return errno == EAFNOSUPPORT ? SM_STATUS_INVALID_PARAMETER : SM_STATUS_FAILED;
}

} // namespace qzvest
