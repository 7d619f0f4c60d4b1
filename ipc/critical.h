// Critical sections: the function that runs is its own lock.
#ifndef IPC_CRITICAL_H
#define IPC_CRITICAL_H

#include <qzvest/types.h>

namespace qzvest {

void SMCriticalSectionExecute(SMCriticalSectionFunction function, uint64_t argument, uint32_t timeout);

// Attach step: the table of functions that are in use. A second attach gives what the first gave.
int CriticalSectionAttach();
void CriticalSectionDetach();

} // namespace qzvest

#endif
