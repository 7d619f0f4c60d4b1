// What the system log would receive at its socket, one datagram a message. For sandboxes alone.
#ifndef TESTS_SUPPORT_SYSTEMLOG_H
#define TESTS_SUPPORT_SYSTEMLOG_H

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

class SystemLog {
public:
    SystemLog()
    {
        const sockaddr_un address = {AF_UNIX, "/dev/log"};
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    }
    SystemLog(const SystemLog &) = delete;
    ~SystemLog()
    {
        close(socket_);
        unlink("/dev/log");
    }
    // Empty when there is none.
    std::string Next() const
    {
        char message[8192];
        const ssize_t length = recv(socket_, message, sizeof message, MSG_DONTWAIT);
        return length < 0 ? "" : std::string(message, static_cast<size_t>(length));
    }

private:
    const int socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

#endif
