// Where the products of the suite are installed: the product table, and paths made from it.
#ifndef CONFIG_PRODUCT_H
#define CONFIG_PRODUCT_H

#include <qzvest/status.h>
#include <qzvest/types.h>

namespace qzvest {

uint32_t SMGetPathByProductIDandType(uint32_t productId, uint32_t pathType, char *dest, uint32_t *destSize);
uint32_t SMGetInstallPath(char *dest, uint32_t *destSize);
uint32_t SMGetInstallPathByProductID(uint32_t productId, char *dest, uint32_t *destSize);
uint32_t SMExpandVkInstallPathString(const char *text, char *dest, uint32_t *destSize);
uint32_t SMProductSIDToID(const char *shortId);
char *SMProductIDToSID(uint32_t productId);
char *SMMakePathFileNameByPID(uint32_t productId, const char *subDirectory, const char *fileName);
char *SMMakePathFileNameByPIDAndType(uint32_t productId, uint32_t pathType, const char *subDirectory,
                                     const char *fileName);
char *SMGetLocalizedPathFileName(const char *rootPath, const char *directory, const char *locale,
                                 const char *subDirectory, const char *fileName);

// Attach: the mutex and the table. 1, or 0 when memory runs out.
int ProductPathsAttach();
void ProductPathsDetach();

} // namespace qzvest

#endif
