#pragma once

#include "Tessel/Platform/Foundation/Web/URLRequest.h"
#include "tests/support/Script.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace Tessel::Test {

/// Finds the exchange that a request belongs to. A request that fits none, and an exchange that
/// nobody asked for, are failures of the running test. Safe from any thread.
class ScriptPlayer {
public:
    explicit ScriptPlayer(Script script);

    /// The answer for a request, with `{{base}}` filled in; one with an error when the request was
    /// not expected.
    ScriptedAnswer play(const URLRequest& request);
    /// The titles of what has not been asked for, repeated exchanges aside.
    std::vector<std::string> unplayed() const;
    /// Fails the test for each of them.
    void verify() const;

private:
    std::vector<std::size_t> candidates(const std::string& method, const std::string& path) const;
    const ScriptedExchange* match(
        const URLRequest& request, const std::string& base, const std::string& path);

    mutable std::mutex mutex_;
    const Script script_;
    std::vector<bool> used_;
};

} // namespace Tessel::Test
