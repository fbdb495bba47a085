#include "Tessel/Session/Exchange/Timer.h"

#include "Tessel/Platform/Foundation/Operations/LibraryThread.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr auto longestSleep = std::chrono::hours(24);

} // namespace

Timer& Timer::shared()
{
    static auto& timer = *new Timer;
    return timer;
}

Timer::Token Timer::after(std::chrono::milliseconds pause, std::function<void()> work)
{
    // More would overflow the clock.
    pause = std::min<std::chrono::milliseconds>(pause, std::chrono::hours(24 * 365));
    const std::lock_guard lock(mutex_);
    if (!runs_) {
        LibraryThread::start([this] { run(); }).detach();
        runs_ = true;
    }
    const Token token {Clock::now() + pause, ++last_};
    waiting_.emplace(token, std::move(work));
    // Most are cancelled long before they are due: the thread is left asleep for those.
    if (token.first < wakesAt_) {
        wakesAt_ = token.first;
        wake_.notify_one();
    }
    return token;
}

void Timer::cancel(const Token& token)
{
    std::function<void()> dropped;
    const std::lock_guard lock(mutex_);
    const auto found = waiting_.find(token);
    if (found == waiting_.end()) return;
    dropped = std::move(found->second);
    waiting_.erase(found);
}

void Timer::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        const auto next = waiting_.begin();
        if (next == waiting_.end() || next->first.first > Clock::now()) {
            wakesAt_ = next == waiting_.end() ? Clock::now() + longestSleep : next->first.first;
            const auto due = wakesAt_;
            wake_.wait_until(lock, due);
            continue;
        }
        auto work = std::move(next->second);
        waiting_.erase(next);
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

} // namespace Tessel
