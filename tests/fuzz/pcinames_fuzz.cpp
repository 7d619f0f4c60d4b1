// The first eight bytes are the IDs, the next two the sizes of the buffers, the rest is the file.

#include <cstdlib>

#include "config/pcinames.h"
#include "tests/fuzz/input.h"

namespace {

// The length tells the whole name, of which the buffer holds what fits.
void CheckName(const char *name, uint32_t room, uint32_t length)
{
    Require(strnlen(name, room) == (length < room ? length : room - 1));
    Require(length == 0 || name[room - 1] == '\0');
    Require(std::strpbrk(name, "\t;\r\n") == nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr size_t kHead = 10;
    if (size < kHead)
        return 0;
    const MemoryFile file(std::string(reinterpret_cast<const char *>(data) + kHead, size - kHead));
    uint16_t ids[4];
    std::memcpy(ids, data, sizeof ids);
    const uint32_t vendorRoom = data[8] + 1u, deviceRoom = data[9] + 1u;
    auto *vendor = static_cast<char *>(std::malloc(vendorRoom)), *device = static_cast<char *>(std::malloc(deviceRoom));
    uint32_t vendorLength = vendorRoom, deviceLength = deviceRoom;
    const uint32_t status = qzvest::SMReadPCIDevFile(ids[0], ids[1], ids[2], ids[3], file.path.c_str(), vendor,
                                                     &vendorLength, device, &deviceLength);
    Require(status == 0 || status == 7);
    Require(status != 0 || (vendorLength != 0 && deviceLength != 0));
    CheckName(vendor, vendorRoom, vendorLength);
    CheckName(device, deviceRoom, deviceLength);
    std::free(vendor);
    std::free(device);
    return 0;
}
