// The addresses of this machine's interfaces.

#include <arpa/inet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "frame/heap.h"
#include "os/address.h"
#include "os/descriptor.h"
#include "os/ipv4.h"
#include "values/typedvalue.h"

namespace qzvest {
namespace {

constexpr size_t kFirstListRoom = 1200;
constexpr size_t kListRoomStep = 800;
static_assert(sizeof(ifreq) == 40);
static_assert(sizeof(SMInetAddrRecord) == 260 && offsetof(SMInetAddrRecord, text) == 4);

// Needs the right to raw sockets.
Descriptor PacketSocket()
{
    return Descriptor(socket(AF_PACKET, SOCK_PACKET | SOCK_CLOEXEC, htons(ETH_P_ALL)));
}

// A question about an interface.
ifreq RequestFor(const char *name)
{
    ifreq request = {};
    std::memcpy(request.ifr_name, name, strnlen(name, IFNAMSIZ - 1));
    return request;
}

// False when the interface cannot be asked.
bool FlagsOf(int socket, const char *name, short &flags)
{
    ifreq request = RequestFor(name);
    if (ioctl(socket, SIOCGIFFLAGS, &request) != 0)
        return false;
    flags = request.ifr_flags;
    return true;
}

// ---- IPv4 ----

struct Interfaces {
    HeapPtr<char> requests; // ifreq, one behind the other
    size_t size;
};

// All interfaces with an address; no requests when they cannot be listed.
Interfaces ListInterfaces(int socket)
{
    for (size_t room = kFirstListRoom;; room += kListRoomStep) {
        HeapPtr<char> requests = HeapRoom<char>(room);
        if (!requests)
            return {nullptr, 0};
        ifconf list = {};
        list.ifc_len = static_cast<int>(room);
        list.ifc_buf = requests.get();
        if (ioctl(socket, SIOCGIFCONF, &list) != 0)
            return {nullptr, 0};
        if (static_cast<size_t>(list.ifc_len) < room) // else there may be more
            return {std::move(requests), static_cast<size_t>(list.ifc_len)};
    }
}

// The address of an interface, unless it is no road to the outside.
bool AddressOf(int socket, const char *name, in_addr &address)
{
    short flags;
    if (FlagsOf(socket, name, flags) && ((flags & (IFF_LOOPBACK | IFF_POINTOPOINT)) != 0 || (flags & IFF_RUNNING) == 0))
        return false;
    ifreq request = RequestFor(name);
    if (ioctl(socket, SIOCGIFADDR, &request) != 0)
        return false;
    sockaddr_in socketAddress;
    std::memcpy(&socketAddress, &request.ifr_addr, sizeof socketAddress);
    address = socketAddress.sin_addr;
    return true;
}

uint32_t ListIPv4(uint32_t *count, SMIPAddrSlot *list)
{
    const Descriptor socket = PacketSocket();
    if (!socket)
        return SM_STATUS_FAILED;
    const Interfaces interfaces = ListInterfaces(socket.Get());
    if (!interfaces.requests)
        return SM_STATUS_FAILED;
    uint32_t found = 0;
    uint32_t status = SM_STATUS_OK;
    for (size_t at = 0; at + sizeof(ifreq) <= interfaces.size; at += sizeof(ifreq)) {
        const char *name = interfaces.requests.get() + at; // the first member
        in_addr address;
        if (!AddressOf(socket.Get(), name, address))
            continue;
        if (list != nullptr) {
            status = found < *count ? SM_STATUS_OK : SM_STATUS_BUFFER_TOO_SMALL;
            if (status == SM_STATUS_OK)
                (void)inet_ntop(AF_INET, &address, list[found].text, sizeof list[found].text);
        }
        ++found;
    }
    *count = found;
    return status;
}

// ---- Records of both families ----

// Where the found addresses go, and how many there are.
struct Records {
    SMInetAddrRecord *list;
    uint32_t capacity;
    uint32_t found;

    uint32_t Add(uint16_t family, const char *text)
    {
        const uint32_t place = found++;
        if (place >= capacity)
            return SM_STATUS_BUFFER_TOO_SMALL;
        if (list == nullptr)
            return SM_STATUS_OK;
        SMInetAddrRecord &record = list[place];
        record.family = family;
        record.reserved = 0;
        std::strncpy(record.text, text, sizeof record.text);
        return SM_STATUS_OK;
    }
};

uint32_t AddIPv4(Records &records)
{
    char name[kHostNameRoom];
    uint32_t size = sizeof name;
    if (const uint32_t status = SMGetIPHostName(name, &size); status != SM_STATUS_OK)
        return status;
    uint32_t count = records.capacity;
    HeapPtr<SMIPAddrSlot> slots;
    if (records.list != nullptr) {
        slots = HeapRoom<SMIPAddrSlot>(size_t{count} + 1);
        if (!slots)
            return SM_STATUS_NO_MEMORY;
    }
    uint32_t status = ListIPv4(&count, slots.get());
    if (status == SM_STATUS_BUFFER_TOO_SMALL)
        records.found += count; // no record is written then
    if (status != SM_STATUS_OK)
        return status;
    for (uint32_t i = 0; i < count; ++i)
        status = records.Add(SM_FAMILY_IPV4, slots ? slots.get()[i].text : "");
    return status;
}

// In the order of the file.
struct Address6 {
    Address6 *next;
    in6_addr address;
};

struct Addresses6 {
    Address6 *first = nullptr;
    Address6 **end = &first;

    Addresses6() = default;
    ~Addresses6()
    {
        while (first != nullptr) {
            Address6 *const gone = first;
            first = gone->next;
            std::free(gone);
        }
    }
    Addresses6(const Addresses6 &) = delete;
    Addresses6 &operator=(const Addresses6 &) = delete;
};

struct FileClose {
    void operator()(FILE *file) const
    {
        (void)std::fclose(file);
    }
};

uint32_t ParseAddress(char *digits, in6_addr &address)
{
    uint32_t size = sizeof address;
    return SMXLTUTF8ToTypeValue(digits, &address, &size, SMXLT_TYPE_HEX);
}

uint32_t ReadAddresses6(FILE *file, int socket, Addresses6 &addresses)
{
    char digits[33];
    char device[16];
    unsigned index, prefix, scope, state;
    uint32_t status = SM_STATUS_OK;
    // Settled: two digits for an index, where the kernel writes more above 255, so that the fields shift from there on.
    while (std::fscanf(file, "%32s %2x %2x %2x %2x %15s\n", digits, &index, &prefix, &scope, &state, device) == 6) {
        short flags;
        if (FlagsOf(socket, device, flags) && (flags & (IFF_LOOPBACK | IFF_NOARP)) != 0)
            continue;
        in6_addr address = {};
        status = ParseAddress(digits, address); // that of the last line counts
        if (status != SM_STATUS_OK)
            continue;
        HeapPtr<Address6> entry = HeapRoom<Address6>(1);
        if (!entry)
            return SM_STATUS_NO_MEMORY;
        *entry = {nullptr, address};
        *addresses.end = entry.get();
        addresses.end = &entry.release()->next;
    }
    return status;
}

bool IsSiteLocal(const in6_addr &address)
{
    return address.s6_addr[0] == 0xFE && (address.s6_addr[1] & 0xC0) == 0xC0;
}

bool IsLinkLocal(const in6_addr &address)
{
    return address.s6_addr[0] == 0xFE && (address.s6_addr[1] & 0xC0) == 0x80;
}

bool IsGlobal(const in6_addr &address)
{
    return !IsSiteLocal(address) && !IsLinkLocal(address);
}

uint32_t AddIPv6(Records &records)
{
    const std::unique_ptr<FILE, FileClose> file(std::fopen("/proc/net/if_inet6", "re"));
    if (!file)
        return SM_STATUS_OK; // a machine without
    const Descriptor socket = PacketSocket();
    if (!socket)
        return SM_STATUS_FAILED;
    Addresses6 addresses;
    uint32_t status = ReadAddresses6(file.get(), socket.Get(), addresses);
    if (status != SM_STATUS_OK)
        return status;
    for (bool (*belongs)(const in6_addr &) : {IsGlobal, IsSiteLocal, IsLinkLocal}) {
        for (const Address6 *entry = addresses.first; entry != nullptr; entry = entry->next) {
            char text[INET6_ADDRSTRLEN];
            if (!belongs(entry->address) || inet_ntop(AF_INET6, &entry->address, text, sizeof text) == nullptr)
                continue;
            status = records.Add(SM_FAMILY_IPV6, text);
        }
    }
    return status;
}

} // namespace

uint32_t SMGetIPAddrStrList(const char * /*hostName: always this machine*/, uint32_t *count, SMIPAddrSlot *list)
{
    if (count == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    return NetworkIsAttached() ? ListIPv4(count, list) : SM_STATUS_NOT_ATTACHED;
}

// The result for both families is that of IPv6 alone.
uint32_t SMGetInetAddrStrList(uint32_t scope, uint32_t *count, SMInetAddrRecord *list)
{
    if (count == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    if (!NetworkIsAttached())
        return SM_STATUS_NOT_ATTACHED;
    if (scope > SM_SCOPE_IPV6)
        return SM_STATUS_INVALID_PARAMETER;
    Records records = {list, *count, 0};
    uint32_t status = SM_STATUS_OK;
    if (scope != SM_SCOPE_IPV6)
        status = AddIPv4(records);
    if (scope != SM_SCOPE_IPV4 && (status == SM_STATUS_OK || status == SM_STATUS_BUFFER_TOO_SMALL))
        status = AddIPv6(records);
    if (status == SM_STATUS_OK || status == SM_STATUS_BUFFER_TOO_SMALL)
        *count = records.found;
    return status;
}

} // namespace qzvest
