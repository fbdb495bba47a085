#pragma once

#include "Tessel/Platform/Transport/MNetworkManager.h"
#include "tests/support/Callback.h"
#include "tests/support/Script.h"

#include <chrono>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

namespace Tessel::Test {

/// Plays a script without a network. It offers redirects to a delegate that takes them and follows
/// the others, as the real transport does; completions run on a thread of its own, one at a time.
/// What does not fit the script fails the test: at once, or in the destructor.
///
///     const auto transport = std::make_shared<ScriptedTransport>(Script::parse(text));
///     const UseTransport use(transport);
///     client->doSomething(done);
///     ASSERT_TRUE(transport->waitUntilPlayed());
class ScriptedTransport final : public MNetworkManager {
public:
    explicit ScriptedTransport(Script script);
    ~ScriptedTransport() override;

    int send(MTask task) override;

    /// The requests so far, as they were sent (authorization and redirects included).
    std::vector<URLRequest> requests() const;
    /// Whether the whole script has been played in time and every completion has returned.
    bool waitUntilPlayed(std::chrono::milliseconds deadline = patience) const;

private:
    struct State;
    std::shared_ptr<State> state_;
    std::thread thread_;
};

/// Makes a transport the shared one for as long as it lives.
class UseTransport {
public:
    explicit UseTransport(std::shared_ptr<MNetworkManager> transport)
    {
        MNetworkManager::setSharedInstance(std::move(transport));
    }
    ~UseTransport() { MNetworkManager::setSharedInstance(nullptr); }
    UseTransport(const UseTransport&) = delete;
    UseTransport& operator=(const UseTransport&) = delete;
};

} // namespace Tessel::Test
