#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

namespace Tessel {

/// Runs functions later, on one thread of its own that starts with the first: they return soon. It
/// is never destroyed; the process may exit at any time.
class Timer {
public:
    using Clock = std::chrono::steady_clock;
    using Token = std::pair<Clock::time_point, std::uint64_t>;

    static Timer& shared();

    Token after(std::chrono::milliseconds pause, std::function<void()> work);
    /// What is running already runs on.
    void cancel(const Token& token);

private:
    Timer() = default;
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::map<Token, std::function<void()>> waiting_;
    Clock::time_point wakesAt_ = Clock::time_point::max(); ///< where its thread sleeps
    std::uint64_t last_ = 0;
    bool runs_ = false;
};

} // namespace Tessel
