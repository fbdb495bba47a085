#include "support/Connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>

namespace Tessel::Test {

namespace {

HTTPHeaders parseFields(std::istream& lines)
{
    HTTPHeaders headers;
    std::string line;
    while (std::getline(lines, line) && line != "\r") {
        const auto colon = line.find(':');
        const auto start = std::min(line.find_first_not_of(' ', colon + 1), line.size());
        headers.add(line.substr(0, colon), line.substr(start, line.find('\r') - start));
    }
    return headers;
}

} // namespace

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
    std::size_t total = std::string::npos;
    while (true) {
        const auto end = unread_.find("\r\n\r\n");
        if (total == std::string::npos && end != std::string::npos) {
            std::istringstream lines(unread_.substr(0, end + 4));
            std::string requestLine;
            std::getline(lines, requestLine);
            const auto length = parseFields(lines).value("Content-Length");
            total = end + 4 + (length ? std::strtoull(length->c_str(), nullptr, 10) : 0);
        }
        if (total != std::string::npos && unread_.size() >= total) {
            auto request = unread_.substr(0, total);
            unread_.erase(0, total);
            return request;
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

URLRequest parseRequest(std::string_view scheme, const std::string& bytes)
{
    std::istringstream lines(bytes);
    std::string method;
    std::string path;
    std::string rest;
    lines >> method >> path;
    std::getline(lines, rest);
    auto headers = parseFields(lines);
    // A proxy is asked for a whole URL.
    const bool isWhole = path.starts_with("http://");
    const auto base = std::string(scheme) + "://" + headers.value("Host").value_or("unknown");
    URLRequest request(isWhole ? path : base + path);
    request.method = method;
    request.headers = std::move(headers);
    request.body = bytes.substr(std::min(bytes.find("\r\n\r\n") + 4, bytes.size()));
    return request;
}

} // namespace Tessel::Test
