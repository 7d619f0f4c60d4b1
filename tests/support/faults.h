// Failing allocations, for programs that hold the library's objects. Counts only what the objects and the test
// itself ask of the C heap, not what shared libraries do.
#ifndef TESTS_SUPPORT_FAULTS_H
#define TESTS_SUPPORT_FAULTS_H

#include <gtest/gtest.h>

// The nth allocation from now fails, n from 1; it alone.
void FailAllocation(int nth);

// Ends it. True if an allocation has failed.
bool StopFault();

// What a call gives whose nth allocation fails; a test that gets by without it fails.
auto Failing(int nth, auto call)
{
    FailAllocation(nth);
    const auto result = call();
    EXPECT_TRUE(StopFault());
    return result;
}

// Blocks allocated and not freed.
long LiveBlocks();

#endif
