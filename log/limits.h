// How large each log may grow, in this process: limits that callers have set, by path.
#ifndef LOG_LIMITS_H
#define LOG_LIMITS_H

#include <cstdint>

namespace qzvest {

uint32_t SMGetLogMaxSize(const char *pathFileName, uint32_t *size);
uint32_t SMSetLogMaxSize(const char *pathFileName, uint32_t size);

// What a log has without a limit of its own.
uint32_t DefaultLogLimit();

// Attach step: the registry. A second attach gives what the first gave.
int LogRegistryAttach();
void LogRegistryDetach();

} // namespace qzvest

#endif
