#include <qzvest/library.h>

#include "os/library.h"

extern "C" {

SMLibHandle *SMLibLoad(const char *path)
{
    return qzvest::SMLibLoad(path);
}

uint32_t SMLibUnLoad(SMLibHandle *handle)
{
    return qzvest::SMLibUnLoad(handle);
}

void *SMLibLinkToExportFN(SMLibHandle *handle, const char *symbol)
{
    return qzvest::SMLibLinkToExportFN(handle, symbol);
}

uint32_t SMLibUnLinkFromExportFN(SMLibHandle *handle, void *address)
{
    return qzvest::SMLibUnLinkFromExportFN(handle, address);
}

void *SMFLibLinkToExportFN(const char *client, const char *path, const char *symbol)
{
    return qzvest::SMFLibLinkToExportFN(client, path, symbol);
}

uint32_t SMFLibUnLoad(const char *client, const char *path)
{
    return qzvest::SMFLibUnLoad(client, path);
}

} // extern "C"
