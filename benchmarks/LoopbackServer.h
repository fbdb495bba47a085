#pragma once

#include <atomic>
#include <string>

#include <sys/types.h>

namespace Tessel::Benchmarks {

/// A server on loopback in a process of its own, so that its work is not counted as the caller's.
/// It gives every request with a Content-Length, or without a body, the same answer and keeps
/// connections open. Make it before the process has threads.
class LoopbackServer {
public:
    /// `answer` is the whole answer as it goes on the wire.
    explicit LoopbackServer(const std::string& answer);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::string url(const std::string& path) const;
    /// Connections taken so far.
    int connectionCount() const { return *connections_; }

private:
    int port_ = 0;
    pid_t process_ = 0;
    std::atomic<int>* connections_; ///< in memory that both processes share
};

} // namespace Tessel::Benchmarks
