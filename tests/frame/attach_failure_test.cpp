// A library that cannot start ends its process and says so in the system log, which is the sandbox's own here.
#include <errno.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <regex>
#include <string>

#include "frame/module.h"
#include "support/faults.h"

namespace {

// What the system log would receive at its socket, one datagram a message.
class SystemLog {
public:
    SystemLog()
    {
        const sockaddr_un address = {AF_UNIX, "/dev/log"};
        bound = bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
    ~SystemLog()
    {
        close(descriptor);
        if (bound)
            unlink("/dev/log");
    }
    std::string Next() const
    {
        char message[1024];
        const ssize_t length = recv(descriptor, message, sizeof message, MSG_DONTWAIT);
        return length < 0 ? "" : std::string(message, static_cast<size_t>(length));
    }
    bool bound;

private:
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

TEST(AttachFailure, WritesOneLineAndExitsWithOne)
{
    const SystemLog log;
    ASSERT_TRUE(log.bound) << strerror(errno);
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
