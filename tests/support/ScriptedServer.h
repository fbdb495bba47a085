#pragma once

#include "support/Script.h"
#include "support/TestAuthority.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::Test {

/// Plays a script on a free port of the loopback interface. What does not fit the script fails the
/// test: at once, or in the destructor.
class ScriptedServer {
public:
    struct Security {
        Identity identity;
        std::string clientAuthorityFile = {}; ///< clients must prove who they are, unless empty
        bool isOutdated = false; ///< speaks TLS 1.1 at most
    };

    explicit ScriptedServer(Script script, std::optional<Security> security = {});
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// The address of a path on this server, under 127.0.0.1 or another name of this machine.
    std::string url(const std::string& path, const std::string& host = "127.0.0.1") const;

    /// The requests byte by byte.
    std::vector<std::string> rawRequests() const;
    /// How many connections there have been.
    int connectionCount() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace Tessel::Test
