#include <qzvest/critical.h>

#include "ipc/critical.h"

extern "C" {

void SMCriticalSectionExecute(SMCriticalSectionFunction function, uint64_t argument, uint32_t timeout)
{
    qzvest::SMCriticalSectionExecute(function, argument, timeout);
}

} // extern "C"
