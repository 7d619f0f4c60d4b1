// The first eight bytes are the IDs, the next two the sizes of the buffers, the rest is the file.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/pcinames.h"

namespace {

void Require(bool held)
{
    if (!held)
        __builtin_trap();
}

// The length tells the whole name, of which the buffer holds what fits.
void CheckName(const char *name, uint32_t room, uint32_t length)
{
    const uint32_t held = length < room ? length : room - 1;
    Require(strnlen(name, room) == held);
    Require(length == 0 || name[room - 1] == '\0');
    Require(std::strpbrk(name, "\t;\r\n") == nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr size_t kHead = 10;
    static const int kDescriptor = memfd_create("names", MFD_CLOEXEC);
    if (size < kHead)
        return 0;
    const ssize_t length = static_cast<ssize_t>(size - kHead);
    Require(ftruncate(kDescriptor, 0) == 0 && pwrite(kDescriptor, data + kHead, size - kHead, 0) == length);
    char path[32];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", kDescriptor);

    uint16_t ids[4];
    std::memcpy(ids, data, sizeof ids);
    const uint32_t vendorRoom = data[8] + 1u;
    const uint32_t deviceRoom = data[9] + 1u;
    auto *vendor = static_cast<char *>(std::malloc(vendorRoom));
    auto *device = static_cast<char *>(std::malloc(deviceRoom));
    uint32_t vendorLength = vendorRoom;
    uint32_t deviceLength = deviceRoom;
    const uint32_t status =
        qzvest::SMReadPCIDevFile(ids[0], ids[1], ids[2], ids[3], path, vendor, &vendorLength, device, &deviceLength);
    Require(status == 0 || status == 7);
    Require(status != 0 || (vendorLength != 0 && deviceLength != 0));
    CheckName(vendor, vendorRoom, vendorLength);
    CheckName(device, deviceRoom, deviceLength);
    std::free(vendor);
    std::free(device);
    return 0;
}
