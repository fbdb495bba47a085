#pragma once

#include <openssl/ssl.h>

#include <optional>
#include <string>
#include <string_view>

namespace Tessel::Test {

/// The server's end of one connection, with or without TLS. Blocking.
class Connection {
public:
    /// Takes the socket over; `tls` may be null.
    Connection(int socket, SSL_CTX* tls);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool handshake();
    /// The next request as it came; none when the connection ends.
    std::optional<std::string> readRequest();
    /// False when the client is gone.
    bool write(std::string_view bytes);
    /// Returns when the client has gone.
    void waitForEnd();
    /// Lets the socket's end be a reset.
    void reset();
    /// From any thread: makes all others return.
    void interrupt();

private:
    std::ptrdiff_t read(char* bytes, std::size_t size);

    const int socket_;
    SSL* ssl_ = nullptr;
    std::string unread_;
};

} // namespace Tessel::Test
