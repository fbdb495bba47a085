#pragma once

#include "tests/support/Connection.h"
#include "tests/support/Listener.h"
#include "tests/support/Script.h"
#include "tests/support/ScriptPlayer.h"
#include "tests/support/TestAuthority.h"

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Tessel::Test {

/// Plays a script on a free port of the loopback interface, or answers as a function says. What
/// does not fit the script fails the test: at once, or in the destructor.
class ScriptedServer {
public:
    struct Security {
        Identity identity;
        std::string clientAuthorityFile = {}; ///< clients must prove who they are, unless empty
        bool isOutdated = false; ///< speaks TLS 1.1 at most
    };

    /// Called on a thread for each connection.
    using Answering = std::function<ScriptedAnswer(const URLRequest&)>;

    explicit ScriptedServer(Script script, const std::optional<Security>& security = {});
    explicit ScriptedServer(Answering answering, const std::optional<Security>& security = {});
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// The address of a path on this server, under 127.0.0.1 or another name of this machine.
    std::string url(const std::string& path, const std::string& host = "127.0.0.1") const;

    /// The requests byte by byte.
    std::vector<std::string> rawRequests() const;
    /// How many connections there have been.
    std::size_t connectionCount() const;
    /// How many of them this side has not closed.
    std::size_t openConnectionCount() const;

private:
    void accept();
    void serve(Connection& connection);

    const std::unique_ptr<ScriptPlayer> player_; ///< null where there is no script
    const Answering answering_;
    const std::shared_ptr<SSL_CTX> tls_;
    const Listener listener_;
    mutable std::mutex mutex_;
    std::list<std::shared_ptr<Connection>> open_;
    std::vector<std::thread> threads_; ///< one for each connection there has been
    std::vector<std::string> rawRequests_;
    bool stopping_ = false;
    std::thread acceptor_;
};

} // namespace Tessel::Test
