#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace Tessel::Test {

/// A socket that listens on a free port of the loopback interface. Clients are connected before
/// anybody accepts them: by itself it is a server that never answers.
class Listener {
public:
    Listener()
    {
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (bind(socket, generic, size) != 0 || listen(socket, 128) != 0
            || getsockname(socket, generic, &size) != 0) {
            throw std::runtime_error("no port to listen on");
        }
        port = ntohs(address.sin_port);
    }
    ~Listener() { close(socket); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port = 0;
};

} // namespace Tessel::Test
