// Self-describing objects, as the wrappers and other folders call them.
#ifndef SDO_SDO_H
#define SDO_SDO_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

// Objects in memory
SMSDOConfig *SMSDOConfigAlloc();
void SMSDOConfigFree(SMSDOConfig *config);
uint32_t SMSDOConfigGetCount(const SMSDOConfig *config);
uint32_t SMSDOConfigAddData(SMSDOConfig *config, uint16_t id, uint8_t type, const void *data, uint32_t size,
                            int16_t replace);
uint32_t SMSDOConfigGetDataByID(const SMSDOConfig *config, uint16_t id, uint8_t *typeOut, void *buffer,
                                uint32_t *sizeInOut);
uint32_t SMSDOConfigGetDataByIndex(const SMSDOConfig *config, uint32_t index, uint16_t *idOut, uint8_t *typeOut,
                                   void *buffer, uint32_t *sizeInOut);
uint32_t SMSDOConfigRemoveData(SMSDOConfig *config, uint16_t id, uint32_t index, uint16_t removeAll);
uint32_t SMSDOConfigGetBinarySize(const SMSDOConfig *config);
uint32_t SMSDOConfigReCalcBinarySize(SMSDOConfig *config);

// Flat form, there and back
uint32_t SMSDOConfigToBinary(const SMSDOConfig *config, void *buffer, uint32_t *sizeInOut);
SMSDOConfig *SMSDOBinaryToConfig(const SMSDOBinary *binary);
SMSDOConfig *SMSDOConfigClone(const SMSDOConfig *config);
uint32_t SMSDOConfigCompareByValue(const SMSDOConfig *a, const SMSDOConfig *b);

// Flat objects in place
uint32_t SMSDOBinaryGetCount(const SMSDOBinary *binary, uint16_t *isArrayOut);
uint32_t SMSDOBinaryGetSize(const SMSDOBinary *binary, uint16_t *isArrayOut);
uint32_t SMSDOBinaryGetDataByID(const SMSDOBinary *binary, uint16_t id, uint8_t *typeOut, void *buffer,
                                uint32_t *sizeInOut);
uint32_t SMSDOBinaryGetDataByIndex(const SMSDOBinary *binary, uint32_t index, uint16_t *idOut, uint8_t *typeOut,
                                   void *buffer, uint32_t *sizeInOut);
uint32_t SMSDOBinarySetData(SMSDOBinary *binary, uint32_t *sizeInOut, uint16_t id, uint8_t type, const void *data,
                            uint32_t size);

struct SDOWalkCallbacks {
    void *context;
    SMSDOObjectBeginCallback objectBegin;
    SMSDOEntryCallback entry;
    SMSDOEntryEndCallback entryEnd;   // or NULL
    SMSDOObjectEndCallback objectEnd; // or NULL
};

// The walker behind the exported call, which starts it with cookie 0, SM_SDO_NO_INDEX and visitChildren true.
//   cookie         of this block
//   arrayIndex     place in the array around it
//   visitChildren  false: the block is announced, but not its entries or elements
uint32_t SMSDOBinaryWalk(const SMSDOBinary *binary, const SDOWalkCallbacks &callbacks, uint64_t cookie,
                         uint32_t arrayIndex, int16_t recurse, bool visitChildren);

// Flat arrays
uint32_t SMSDOBinaryArrayInitHeader(SMSDOBinaryArray *array, uint32_t bufferSize);
uint32_t SMSDOBinaryArrayAddData(SMSDOBinaryArray *array, uint32_t *sizeInOut, const SMSDOBinary *binary,
                                 uint32_t binarySize);
uint32_t SMSDOBinaryArrayGetByIndex(const SMSDOBinaryArray *array, uint32_t arraySize, uint32_t index, void *buffer,
                                    uint32_t *sizeInOut);
uint32_t SMSDOConfigArrayToBinaryArray(SMSDOConfig *const *configs, int32_t configCount, SMSDOBinaryArray *array,
                                       uint32_t *sizeInOut);
uint32_t SMSDOBinaryArrayToConfigArray(const SMSDOBinaryArray *array, SMSDOConfig **configs, uint32_t *countInOut);

} // namespace qzvest

#endif
