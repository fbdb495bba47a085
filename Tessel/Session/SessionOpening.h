#pragma once

#include "Tessel/Session/Credential.h"
#include "Tessel/Session/Exchange/Channel.h"
#include "Tessel/Session/Opening/AccountPlace.h"
#include "Tessel/Session/Opening/ServerAddress.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Opens an account at the first of several servers that has it. Each gets a channel and a signer
/// of its own, so that a credential goes to no other.
class SessionOpening final : public std::enable_shared_from_this<SessionOpening> {
public:
    struct Found {
        std::shared_ptr<Channel> channel;
        AccountPlace place;
    };
    using Done = std::function<void(Result<Found>)>;

    /// `done` is called once, unless `call` ends before.
    SessionOpening(std::string user, Credential credential, SessionSettings settings,
        std::shared_ptr<CallState> call, Done done);

    /// At the address, or at the servers that DNS names for its mail domain and then at the domain
    /// itself.
    void start(const ServerAddress& address);

private:
    void tryNext();
    void tryAt(const ServerAddress& address);
    void leaveOut(const std::string& mailDomain, std::vector<ServerAddress>& servers);
    void end(Failure failure);

    const std::string user_;
    const Credential credential_;
    const SessionSettings settings_;
    const std::shared_ptr<CallState> call_;
    const Done done_;
    std::deque<ServerAddress> servers_;
    std::optional<Failure> first_; ///< of those that were tried
    std::string leftOut_; ///< what DNS names and is not trusted with the credential
};

} // namespace Tessel
