#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::App {

/// One request and how it ended.
struct Exchange {
    std::string method;
    std::string url;
    bool isOver = false;
    std::optional<int> status = {};
    std::optional<std::string> failure = {}; ///< of the transport
    bool listsNothing = false; ///< the answer is a multistatus without any response

    /// Such as "PROPFIND https://host/path: 401".
    std::string description() const;
    /// Such as "PROPFIND 401".
    std::string summary() const;
};

/// Everything the transport has sent so far, and the one place where the command waits: it is woken
/// by every exchange and by every answer of the library.
class ExchangeLog {
public:
    using Clock = std::chrono::steady_clock;

    std::size_t begin(std::string method, std::string url);
    /// What came back; the library is at work on it until `end`.
    void answered(std::size_t index, std::optional<int> status, std::optional<std::string> failure,
        bool listsNothing);
    void end(std::size_t index);
    /// Changes what a wait condition reads, and wakes those who wait.
    void update(const std::function<void()>& change);

    enum class Outcome { met, timedOut, silent };
    /// Waits until `condition`, which runs under the log's lock, holds. `silent` means that nothing
    /// has been under way for `silence` after an exchange numbered `first` or later: then no answer
    /// is to be expected any more.
    Outcome wait(const std::function<bool()>& condition, Clock::time_point deadline,
        std::size_t first) const;

    std::vector<Exchange> exchanges(std::size_t first = 0) const;
    std::size_t count() const;
    /// The last exchange that has ended with a word of the server or of the transport.
    std::optional<Exchange> last() const;

    /// How long the library may take from an answer to its completion, on a busy machine.
    static constexpr std::chrono::milliseconds silence {2'000};

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Exchange> exchanges_;
    std::size_t underWay_ = 0;
    std::optional<std::size_t> last_;
    Clock::time_point lastEnd_ {};
};

} // namespace Tessel::App
