#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel::App {

/// One request and how it ended.
struct Exchange {
    std::string method;
    std::string url;
    bool isOver = false;
    std::optional<int> status = {};
    std::optional<std::string> failure = {}; ///< of the transport
    std::string multistatus
        = {}; ///< the body of a 207 answer, unless it is longer than `shortBody`

    static constexpr std::size_t shortBody = 4096;

    bool isSuccess() const { return status && *status >= 200 && *status < 300; }
    /// Whether the answer is a multistatus in which no such element occurs.
    bool isWithout(std::string_view element) const;
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
        std::string multistatus);
    void end(std::size_t index);
    /// Changes what a wait condition reads, and wakes those who wait.
    void update(const std::function<void()>& change);

    using Exchanges = std::vector<Exchange>;
    using Condition = std::function<bool(const Exchanges& all)>;
    enum class Outcome { met, timedOut, silent };
    /// Waits until `condition`, which runs under the log's lock, holds. `silent` means that nothing
    /// has been under way for `silence` after an exchange numbered `first` or later: then no answer
    /// is to be expected any more.
    Outcome wait(const Condition& condition, Clock::time_point deadline, std::size_t first) const;

    Exchanges exchanges(std::size_t first = 0) const;
    std::size_t count() const;
    /// The last exchange that has ended with a word of the server or of the transport.
    std::optional<Exchange> last() const;

    /// How long the library may take from an answer to its completion, on a busy machine.
    static constexpr std::chrono::milliseconds silence {2'000};

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Exchanges exchanges_;
    std::size_t underWay_ = 0;
    std::optional<std::size_t> last_;
    Clock::time_point lastEnd_ {};
};

} // namespace Tessel::App
