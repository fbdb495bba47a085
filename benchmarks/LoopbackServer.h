#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace Tessel::Benchmarks {

/// A server on loopback in a process of its own, so that its work is not counted as the caller's.
/// It takes requests with a Content-Length, or without a body, and keeps connections open. Make it
/// before the process has threads.
class LoopbackServer {
public:
    struct Answer {
        std::string requestPart; ///< what the request holds; every request holds an empty text
        std::string bytes; ///< the whole answer as it goes on the wire
    };

    /// A request gets the first answer that fits it, and one must.
    explicit LoopbackServer(std::vector<Answer> answers);
    /// A request gets what this makes of it, in the server's process.
    explicit LoopbackServer(const std::function<std::string(std::string_view request)>& answer);
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
