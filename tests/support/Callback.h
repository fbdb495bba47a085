#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

namespace Tessel::Test {

/// How long a test waits for what must come: long enough for a loaded machine under a sanitizer.
inline constexpr std::chrono::milliseconds patience {20'000};

/// A completion handler that records its calls. Copies share the record, so one may be handed to
/// the code under test and outlive the test:
///
///     Callback<std::vector<Item>, std::optional<Error>> listed;
///     client->list(listed);
///     ASSERT_TRUE(listed.wait());
///     const auto [items, error] = listed.arguments();
///
/// That a callback does not come is shown by waiting for what ends the work (the operation, or
/// `ScriptedTransport::waitUntilPlayed`) and then expecting `count()` to be 0.
template <class... Arguments> class Callback {
public:
    void operator()(Arguments... arguments) const
    {
        const std::lock_guard lock(record_->mutex);
        record_->calls.emplace_back(std::move(arguments)...);
        record_->called.notify_all();
    }

    /// Whether there have been `count` calls before the deadline.
    bool wait(std::size_t count = 1, std::chrono::milliseconds deadline = patience) const
    {
        std::unique_lock lock(record_->mutex);
        return record_->called.wait_for(
            lock, deadline, [&] { return record_->calls.size() >= count; });
    }

    std::size_t count() const
    {
        const std::lock_guard lock(record_->mutex);
        return record_->calls.size();
    }

    /// What call number `index` was given; throws when there was none.
    std::tuple<Arguments...> arguments(std::size_t index = 0) const
    {
        const std::lock_guard lock(record_->mutex);
        return record_->calls.at(index);
    }

private:
    struct Record {
        std::mutex mutex;
        std::condition_variable called;
        std::vector<std::tuple<Arguments...>> calls;
    };
    std::shared_ptr<Record> record_ = std::make_shared<Record>();
};

/// Whether `condition` came true before the deadline; for states that nobody announces.
template <class Condition>
bool waitFor(Condition condition, std::chrono::milliseconds deadline = patience)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace Tessel::Test
