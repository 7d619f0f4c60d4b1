// Failing allocations one after another.
#ifndef TESTS_SUPPORT_SWEEP_H
#define TESTS_SUPPORT_SWEEP_H

#include <gtest/gtest.h>

#include "support/faults.h"

// Calls attempt(nth) from 1 on, until it says that no allocation failed. One that failed must leave no block behind.
// Returns how many failed.
template <typename Attempt>
int SweepAllocations(const Attempt &attempt)
{
    for (int nth = 1;; ++nth) {
        SCOPED_TRACE(nth);
        const long before = LiveBlocks();
        if (!attempt(nth))
            return nth - 1;
        EXPECT_EQ(LiveBlocks(), before);
    }
}

#endif
