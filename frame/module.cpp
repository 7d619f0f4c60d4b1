#include "frame/module.h"

namespace qzvest {

uint32_t VESTGetMajorVersion()
{
    return 1;
}

uint32_t VESTGetMinorVersion()
{
    return 1;
}

uint32_t VESTGetRevision()
{
    return 1;
}

// The context carries nothing any more; the calls stay for those who announce theirs around their work.

void SMGetExportContext(uint32_t *ctx)
{
    *ctx = 0;
}

void SMSetExportContext(uint32_t *, uint32_t) {}

void SMResetExportContext(uint32_t *) {}

} // namespace qzvest
