#include <qzvest/delimited.h>

#include "config/delimited.h"
#include "config/pcinames.h"

extern "C" {

char *SMUTF8ConvertXSVToYSV(const char *source, char fromDelimiter, char toDelimiter, uint32_t *count, uint32_t *size)
{
    return qzvest::SMUTF8ConvertXSVToYSV(source, fromDelimiter, toDelimiter, count, size);
}

uint32_t SMReadPCIDevFile(uint16_t vendorId, uint16_t deviceId, uint16_t subVendorId, uint16_t subDeviceId,
                          const char *pathFileName, char *vendorName, uint32_t *vendorNameSize, char *deviceName,
                          uint32_t *deviceNameSize)
{
    return qzvest::SMReadPCIDevFile(vendorId, deviceId, subVendorId, subDeviceId, pathFileName, vendorName,
                                    vendorNameSize, deviceName, deviceNameSize);
}

} // extern "C"
