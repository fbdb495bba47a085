#pragma once

#include "Platform/Foundation/URLRequest.h"
#include "support/Script.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Tessel::Test {

/// Finds the exchange that a request belongs to, and records what came. A request that fits none,
/// and an exchange that nobody asked for, are failures of the running test. Safe from any thread.
class ScriptPlayer {
public:
    explicit ScriptPlayer(Script script);

    /// The answer for a request, with `{{base}}` filled in; one with an error when the request was
    /// not expected.
    ScriptedAnswer play(const URLRequest& request);
    /// To be called when the answer has been dealt with.
    void answered();

    /// All requests so far, in their order.
    std::vector<URLRequest> requests() const;
    /// Whether every exchange (repeated ones aside) has been played and answered in time.
    bool waitUntilPlayed(std::chrono::milliseconds deadline) const;
    /// Fails the test for each exchange that was not played.
    void verify() const;

private:
    ScriptedExchange* match(const std::string& method, const std::string& path);
    bool isPlayed() const;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Script script_;
    std::vector<bool> used_;
    std::vector<URLRequest> requests_;
    int open_ = 0;
};

/// The scheme, host and port of an absolute URL, and the rest of it.
std::pair<std::string, std::string> splitURL(const std::string& url);

} // namespace Tessel::Test
