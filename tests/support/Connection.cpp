#include "tests/support/Connection.h"

#include "tests/support/Message.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace Tessel::Test {

Connection::Connection(int socket, SSL_CTX* tls)
    : socket_(socket)
{
    const int on = 1;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (!tls) return;
    ssl_ = SSL_new(tls);
    SSL_set_fd(ssl_, socket_);
}

Connection::~Connection()
{
    SSL_free(ssl_);
    close(socket_);
}

bool Connection::handshake()
{
    return !ssl_ || SSL_accept(ssl_) == 1;
}

std::ptrdiff_t Connection::read(char* bytes, std::size_t size)
{
    return ssl_ ? SSL_read(ssl_, bytes, static_cast<int>(size)) : recv(socket_, bytes, size, 0);
}

std::optional<std::string> Connection::readRequest()
{
    std::array<char, 65536> buffer;
    while (true) {
        if (const auto end = unread_.find("\r\n\r\n"); end != std::string::npos) {
            const auto head = unread_.substr(0, end + 4);
            const auto length = parseRequest("http", head).headers.value("Content-Length");
            const auto total = head.size() + (length ? std::stoull(*length) : 0);
            if (unread_.size() >= total) {
                auto request = unread_.substr(0, total);
                unread_.erase(0, total);
                return request;
            }
        }
        const auto count = read(buffer.data(), buffer.size());
        if (count <= 0) return std::nullopt;
        unread_.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

bool Connection::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto count = ssl_ ? SSL_write(ssl_, bytes.data(), static_cast<int>(bytes.size()))
                                : ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void Connection::waitForEnd()
{
    std::array<char, 4096> ignored;
    while (recv(socket_, ignored.data(), ignored.size(), 0) > 0) { }
}

void Connection::reset()
{
    const linger atOnce {.l_onoff = 1, .l_linger = 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

void Connection::interrupt()
{
    shutdown(socket_, SHUT_RDWR);
}

} // namespace Tessel::Test
