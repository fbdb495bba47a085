#include "benchmarks/LoopbackServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace Tessel::Benchmarks {

namespace {

/// Bytes of the first request in `text`; 0 when it is not complete.
std::size_t requestSize(std::string_view text)
{
    const auto end = text.find("\r\n\r\n");
    if (end == std::string_view::npos) return 0;
    constexpr std::string_view name = "\r\nContent-Length: ";
    const auto field = text.substr(0, end).find(name);
    const std::size_t body = field == std::string_view::npos
        ? 0
        : std::strtoull(text.data() + field + name.size(), nullptr, 10);
    return text.size() >= end + 4 + body ? end + 4 + body : 0;
}

void sendAll(int socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

[[noreturn]] void serve(int listener, const std::function<std::string(std::string_view)>& answer,
    std::atomic<int>& connections)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int poll = epoll_create1(EPOLL_CLOEXEC);
    const auto watch = [poll](int socket) {
        epoll_event event {.events = EPOLLIN, .data = {.fd = socket}};
        epoll_ctl(poll, EPOLL_CTL_ADD, socket, &event);
    };
    watch(listener);
    std::unordered_map<int, std::string> unread;
    std::array<epoll_event, 64> events;
    std::array<char, 65536> buffer;
    while (true) {
        const int count = epoll_wait(poll, events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < count; ++i) {
            const int socket = events[static_cast<std::size_t>(i)].data.fd;
            if (socket == listener) {
                const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
                const int on = 1;
                setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
                watch(client);
                ++connections;
                continue;
            }
            const auto size = recv(socket, buffer.data(), buffer.size(), 0);
            if (size <= 0) {
                unread.erase(socket);
                close(socket);
                continue;
            }
            auto& text = unread[socket];
            text.append(buffer.data(), static_cast<std::size_t>(size));
            while (const auto taken = requestSize(text)) {
                sendAll(socket, answer(std::string_view(text).substr(0, taken)));
                text.erase(0, taken);
            }
        }
    }
}

} // namespace

LoopbackServer::LoopbackServer(std::vector<Answer> answers)
    : LoopbackServer([answers = std::move(answers)](std::string_view request) {
        for (const auto& answer : answers) {
            if (request.find(answer.requestPart) != request.npos) return answer.bytes;
        }
        return std::string();
    })
{
}

LoopbackServer::LoopbackServer(const std::function<std::string(std::string_view)>& answer)
{
    void* const memory = mmap(
        nullptr, sizeof *connections_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("loopback server: no shared memory");
    connections_ = new (memory) std::atomic<int>(0);

    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, generic, size) != 0 || listen(listener, 128) != 0
        || getsockname(listener, generic, &size) != 0) {
        throw std::runtime_error("loopback server: no port");
    }
    port_ = ntohs(address.sin_port);
    process_ = fork();
    if (process_ < 0) throw std::runtime_error("loopback server: no process");
    if (process_ == 0) serve(listener, answer, *connections_);
    close(listener);
}

LoopbackServer::~LoopbackServer()
{
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    munmap(connections_, sizeof *connections_);
}

std::string LoopbackServer::url(const std::string& path) const
{
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

} // namespace Tessel::Benchmarks
