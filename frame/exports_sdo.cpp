#include <qzvest/sdo.h>

#include "sdo/sdo.h"

extern "C" {

SMSDOConfig *SMSDOConfigAlloc()
{
    return qzvest::SMSDOConfigAlloc();
}

void SMSDOConfigFree(SMSDOConfig *config)
{
    qzvest::SMSDOConfigFree(config);
}

uint32_t SMSDOConfigGetCount(const SMSDOConfig *config)
{
    return qzvest::SMSDOConfigGetCount(config);
}

uint32_t SMSDOConfigAddData(SMSDOConfig *config, uint16_t id, uint8_t type, const void *data, uint32_t size,
                            int16_t replace)
{
    return qzvest::SMSDOConfigAddData(config, id, type, data, size, replace);
}

uint32_t SMSDOConfigGetDataByID(const SMSDOConfig *config, uint16_t id, uint8_t *typeOut, void *buffer,
                                uint32_t *sizeInOut)
{
    return qzvest::SMSDOConfigGetDataByID(config, id, typeOut, buffer, sizeInOut);
}

uint32_t SMSDOConfigGetDataByIndex(const SMSDOConfig *config, uint32_t index, uint16_t *idOut, uint8_t *typeOut,
                                   void *buffer, uint32_t *sizeInOut)
{
    return qzvest::SMSDOConfigGetDataByIndex(config, index, idOut, typeOut, buffer, sizeInOut);
}

uint32_t SMSDOConfigRemoveData(SMSDOConfig *config, uint16_t id, uint32_t index, uint16_t removeAll)
{
    return qzvest::SMSDOConfigRemoveData(config, id, index, removeAll);
}

uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig *config)
{
    return qzvest::SMSDOConfigGetBinarySize(config);
}

uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig *config)
{
    return qzvest::SMSDOConfigReCalcBinarySize(config);
}

SMSDOConfig *SMSDOConfigClone(const SMSDOConfig *config)
{
    return qzvest::SMSDOConfigClone(config);
}

uint32_t SMSDOConfigCompareByValue(const SMSDOConfig *a, const SMSDOConfig *b)
{
    return qzvest::SMSDOConfigCompareByValue(a, b);
}

uint32_t SMSDOConfigToBinary(const SMSDOConfig *config, void *buffer, uint32_t *sizeInOut)
{
    return qzvest::SMSDOConfigToBinary(config, buffer, sizeInOut);
}

uint32_t SMSDOConfigArrayToBinaryArray(SMSDOConfig *const *configs, int32_t configCount, SMSDOBinaryArray *array,
                                       uint32_t *sizeInOut)
{
    return qzvest::SMSDOConfigArrayToBinaryArray(configs, configCount, array, sizeInOut);
}

SMSDOConfig *SMSDOBinaryToConfig(const SMSDOBinary *binary)
{
    return qzvest::SMSDOBinaryToConfig(binary);
}

uint32_t SMSDOBinaryGetCount(const SMSDOBinary *binary, uint16_t *isArrayOut)
{
    return qzvest::SMSDOBinaryGetCount(binary, isArrayOut);
}

uint32_t SMSDOBinaryGetSize(const SMSDOBinary *binary, uint16_t *isArrayOut)
{
    return qzvest::SMSDOBinaryGetSize(binary, isArrayOut);
}

uint32_t SMSDOBinaryGetDataByID(const SMSDOBinary *binary, uint16_t id, uint8_t *typeOut, void *buffer,
                                uint32_t *sizeInOut)
{
    return qzvest::SMSDOBinaryGetDataByID(binary, id, typeOut, buffer, sizeInOut);
}

uint32_t SMSDOBinaryGetDataByIndex(const SMSDOBinary *binary, uint32_t index, uint16_t *idOut, uint8_t *typeOut,
                                   void *buffer, uint32_t *sizeInOut)
{
    return qzvest::SMSDOBinaryGetDataByIndex(binary, index, idOut, typeOut, buffer, sizeInOut);
}

uint32_t SMSDOBinarySetData(SMSDOBinary *binary, uint32_t *sizeInOut, uint16_t id, uint8_t type, const void *data,
                            uint32_t size)
{
    return qzvest::SMSDOBinarySetData(binary, sizeInOut, id, type, data, size);
}

uint32_t SMSDOBinaryWalk(const SMSDOBinary *binary, void *context, SMSDOObjectBeginCallback objectBegin,
                         SMSDOEntryCallback entry, SMSDOEntryEndCallback entryEnd, SMSDOObjectEndCallback objectEnd,
                         int16_t recurse)
{
    return qzvest::SMSDOBinaryWalk(binary, {context, objectBegin, entry, entryEnd, objectEnd}, 0, SM_SDO_NO_INDEX,
                                   recurse, true);
}

uint32_t SMSDOBinaryArrayInitHeader(SMSDOBinaryArray *array, uint32_t bufferSize)
{
    return qzvest::SMSDOBinaryArrayInitHeader(array, bufferSize);
}

uint32_t SMSDOBinaryArrayAddData(SMSDOBinaryArray *array, uint32_t *sizeInOut, const SMSDOBinary *binary,
                                 uint32_t binarySize)
{
    return qzvest::SMSDOBinaryArrayAddData(array, sizeInOut, binary, binarySize);
}

uint32_t SMSDOBinaryArrayGetByIndex(const SMSDOBinaryArray *array, uint32_t arraySize, uint32_t index, void *buffer,
                                    uint32_t *sizeInOut)
{
    return qzvest::SMSDOBinaryArrayGetByIndex(array, arraySize, index, buffer, sizeInOut);
}

uint32_t SMSDOBinaryArrayToConfigArray(const SMSDOBinaryArray *array, SMSDOConfig **configs, uint32_t *countInOut)
{
    return qzvest::SMSDOBinaryArrayToConfigArray(array, configs, countInOut);
}

} // extern "C"
