#include <qzvest/product.h>

#include "config/product.h"

extern "C" {

uint32_t SMGetPathByProductIDandType(uint32_t productId, uint32_t pathType, char *dest, uint32_t *destSize)
{
    return qzvest::SMGetPathByProductIDandType(productId, pathType, dest, destSize);
}

uint32_t SMGetInstallPath(char *dest, uint32_t *destSize)
{
    return qzvest::SMGetInstallPath(dest, destSize);
}

uint32_t SMGetInstallPathByProductID(uint32_t productId, char *dest, uint32_t *destSize)
{
    return qzvest::SMGetInstallPathByProductID(productId, dest, destSize);
}

uint32_t SMExpandVkInstallPathString(const char *text, char *dest, uint32_t *destSize)
{
    return qzvest::SMExpandVkInstallPathString(text, dest, destSize);
}

uint32_t SMProductSIDToID(const char *shortId)
{
    return qzvest::SMProductSIDToID(shortId);
}

char *SMProductIDToSID(uint32_t productId)
{
    return qzvest::SMProductIDToSID(productId);
}

char *SMMakePathFileNameByPID(uint32_t productId, const char *subDirectory, const char *fileName)
{
    return qzvest::SMMakePathFileNameByPID(productId, subDirectory, fileName);
}

char *SMMakePathFileNameByPIDAndType(uint32_t productId, uint32_t pathType, const char *subDirectory,
                                     const char *fileName)
{
    return qzvest::SMMakePathFileNameByPIDAndType(productId, pathType, subDirectory, fileName);
}

char *SMGetLocalizedPathFileName(const char *rootPath, const char *directory, const char *locale,
                                 const char *subDirectory, const char *fileName)
{
    return qzvest::SMGetLocalizedPathFileName(rootPath, directory, locale, subDirectory, fileName);
}

} // extern "C"
