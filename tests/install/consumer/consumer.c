/* What a service does first, and which file the loader took the library from. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <qzvest/qzvest.h>
#include <stdio.h>

int main(void)
{
    enum { HOST = 1, CORES = 2, NUMBER = 1, TEXT = 2 };
    uint32_t cores = 16, size = 256, length = 64;
    unsigned char block[256];
    char host[64] = "";
    Dl_info from;

    SMSDOConfig *object = SMSDOConfigAlloc();
    SMSDOConfigAddData(object, HOST, TEXT, "fileserver", 11, 0);
    SMSDOConfigAddData(object, CORES, NUMBER, &cores, 4, 0);
    SMSDOConfigToBinary(object, block, &size);
    SMSDOConfigFree(object);
    SMSDOBinaryGetDataByID(block, HOST, NULL, host, &length);

    void *symbol = dlsym(RTLD_DEFAULT, "SMSDOConfigAlloc");
    if (symbol == NULL || dladdr(symbol, &from) == 0)
        return 1;
    printf("%s: %u.%u.%u, %u entries in %u bytes, host %s\n", from.dli_fname, VESTGetMajorVersion(),
           VESTGetMinorVersion(), VESTGetRevision(), SMSDOBinaryGetCount(block, NULL), size, host);
    return 0;
}
