// Names of PCI devices, looked up in a names file.
#ifndef CONFIG_PCINAMES_H
#define CONFIG_PCINAMES_H

#include <cstdint>

namespace qzvest {

uint32_t SMReadPCIDevFile(uint16_t vendorId, uint16_t deviceId, uint16_t subVendorId, uint16_t subDeviceId,
                          const char *pathFileName, char *vendorName, uint32_t *vendorNameSize, char *deviceName,
                          uint32_t *deviceNameSize);

} // namespace qzvest

#endif
