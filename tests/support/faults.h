// Failing allocations, for programs that hold the library's objects. Counts only what the objects and the test
// itself ask of the C heap, not what shared libraries do.
#ifndef TESTS_SUPPORT_FAULTS_H
#define TESTS_SUPPORT_FAULTS_H

#include <cstddef>

// The nth allocation from now fails, n from 1; it alone.
void FailAllocation(int nth);

// Ends it. True if an allocation has failed.
bool StopFault();

// Blocks allocated and not freed.
long LiveBlocks();

#endif
