// A library that cannot start ends its process and says so in the system log, which is the sandbox's own here.
#include <errno.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "frame/module.h"
#include "os/ipv4.h"
#include "support/faults.h"
#include "support/systemlog.h"
#include "support/trace.h"

namespace {

// What an attach has left behind, seen when its process exits.
struct Remains {
    long blocks;
    bool network;
    pid_t process;
};

enum Outcome { kRefused = 1, kAttached = 2, kNoFault = 3 };

// In a process of its own: the outcome of an attach whose nth allocation fails.
int AttachOutcome(int nth, Remains *remains)
{
    static Remains *seen;
    static long detached;
    seen = remains;
    return InOtherProcess([nth] {
        qzvest::SMModuleStop();
        detached = LiveBlocks();
        std::atexit([] { *seen = {LiveBlocks() - detached, qzvest::NetworkIsAttached(), getpid()}; });
        FailAllocation(nth);
        qzvest::SMModuleStart(); // comes back from the exit of the process, or when all is up
        return StopFault() ? kAttached : kNoFault;
    });
}

// "<146>Jan  1 00:00:00 attach_failure_test[7]: ...": with no identity set, the C library names the program.
bool IsFailureLine(const std::string &message, pid_t process)
{
    const std::regex line("<" + std::to_string(LOG_LOCAL2 | LOG_CRIT) +
                          ">[A-Z][a-z]{2} [ 1-3][0-9] [0-9:]{8} attach_failure_test\\[" + std::to_string(process) +
                          "\\]: ModuleAttachFailure: qzvest failed to initialize - possibly out of memory\n");
    return std::regex_match(message, line);
}

// Whichever step it is in, everything that was up is down again, and the process ends with one line in the log.
TEST(AttachFailure, UnwindsWritesOneLineAndExitsWithOne)
{
    const SystemLog log;
    const Shared<Remains> remains;
    int refused = 0, outcome = kRefused;
    for (int nth = 1; outcome != kNoFault; ++nth) {
        *remains = {-1, true, 0};
        outcome = AttachOutcome(nth, &*remains);
        const std::string message = log.Next();
        if (outcome == kRefused) {
            ++refused;
            EXPECT_EQ(remains->blocks, 0) << nth;
            EXPECT_FALSE(remains->network) << nth;
            EXPECT_TRUE(IsFailureLine(message, remains->process)) << "received: " << message;
        } else {
            ASSERT_GE(outcome, kAttached) << nth; // the search for stale semaphores may fail
            EXPECT_EQ(message, "") << nth;
        }
        EXPECT_EQ(log.Next(), "") << nth;
    }
    EXPECT_GE(refused, 13); // five locks of two blocks, and the tables of the products, the paths and the CRC
}

} // namespace
