// A library that cannot start ends its process and says so in the system log, which is the sandbox's own here.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <syslog.h>

#include <regex>

#include "frame/module.h"
#include "support/faults.h"
#include "support/systemlog.h"

namespace {

TEST(AttachFailure, WritesOneLineAndExitsWithOne)
{
    const SystemLog log;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        qzvest::SMModuleStop();
        FailAllocation(1);
        qzvest::SMModuleStart(); // does not come back
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);

    // "<146>Jan  1 00:00:00 attach_failure_test[7]: ...": with no identity set, the C library names the program.
    const std::regex line("<" + std::to_string(LOG_LOCAL2 | LOG_CRIT) +
                          ">[A-Z][a-z]{2} [ 1-3][0-9] [0-9:]{8} attach_failure_test\\[" + std::to_string(child) +
                          "\\]: ModuleAttachFailure: qzvest failed to initialize - possibly out of memory\n");
    const std::string message = log.Next();
    EXPECT_TRUE(std::regex_match(message, line)) << "received: " << message;
    EXPECT_EQ(log.Next(), "");
}

} // namespace
