#pragma once

#include "Tessel/Session/Session.h"
#include "tests/Tessel/Session/Hostile/WireServer.h"
#include "tests/support/Callback.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel::Test {

/// Takes the result of a call, whatever it gives; copies share what has been told.
class Told {
public:
    template <class T> void operator()(const Result<T>& result) const
    {
        ended_(result ? obstacle(result.value()) : result.failure());
    }
    void operator()(const Outcome& outcome) const
    {
        ended_(outcome ? std::nullopt : std::optional(outcome.failure()));
    }

    bool wait() const { return ended_.wait(); }
    std::size_t count() const { return ended_.count(); }
    /// Why it has failed, wholly or in part; none where it has done all.
    std::optional<Failure> failure() const { return std::get<0>(ended_.arguments()); }

private:
    template <class T> static std::optional<Failure> obstacle(const T&) { return std::nullopt; }
    static std::optional<Failure> obstacle(const Changes& changes);
    static std::optional<Failure> obstacle(const Sent& sent);
    static std::optional<Failure> obstacle(const ShareeOutcomes& outcomes);
    static std::optional<Failure> obstacle(const Session::InvitationList& invitations);

    Callback<std::optional<Failure>> ended_;
};

/// An account on a wire server, with a session that had no need to look for it: two calendars, an
/// event that is held, another one that is not yet.
class HostileAccount {
public:
    explicit HostileAccount(
        std::unique_ptr<WireServer> server, std::chrono::milliseconds itsPatience = patience);

    WireServer& server() { return *server_; }
    std::optional<std::string> there(const std::string& place)
    {
        return server_->calendars().text(place);
    }
    /// Whether a store holds what the server does.
    bool isWhole(Store& store) const;

    SessionSettings settings() const;
    /// Lets the session go and makes another one.
    void renew();

    std::shared_ptr<Session> session;
    const Resource held;
    const std::shared_ptr<MemoryStore> empty = std::make_shared<MemoryStore>();
    /// Holds what was there before the second event.
    const std::shared_ptr<MemoryStore> behind = std::make_shared<MemoryStore>();

private:
    const std::chrono::milliseconds patience_;
    const std::unique_ptr<WireServer> server_;
};

/// A call of a session as any of the tests makes it.
struct SessionCall {
    const char* name;
    CallHandle (*make)(HostileAccount&, const Told&);
    /// Whether it has been done, where that shows at the server or in a store.
    bool (*isDone)(HostileAccount&) = nullptr;
    bool mayFailThough = false; ///< it may have been done and fail all the same
};

/// Every call that there is.
const std::vector<SessionCall>& sessionCalls();

} // namespace Tessel::Test
