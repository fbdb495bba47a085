#pragma once

#include "apps/tessel/commands/HeldEvents.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Tessel::App {

/// Writes events: to the server, or to the outbox with --offline, where the server cannot be
/// reached or does not answer, and behind a change of the same event that waits. What was written
/// is held at once.
class EventWrites {
public:
    explicit EventWrites(Workspace& workspace);

    /// What was written, and whether it waits in the outbox.
    struct Written {
        Resource resource;
        std::optional<Resource> following = {};
        bool waits = false;
    };

    Result<Written> create(const StoredCalendar& calendar, const EventText& event);
    /// Whether whatever is written next waits.
    bool isOffline() const;
    /// While that is so: many new events at once, with the results in their order.
    std::vector<Result<Written>> createWaiting(
        const StoredCalendar& calendar, std::span<const EventText> events);
    Result<Written> change(const HeldEvent& held, const EventEdit& edit);
    Result<Written> move(const HeldEvent& held, const StoredCalendar& to);
    Result<Written> remove(const HeldEvent& held);

    /// The address that the account's invitations come from; none where nobody knows it.
    std::optional<std::string> ownAddress();

private:
    template <class Online, class Offline>
    Result<Written> write(bool mustWait, const Online& online, const Offline& offline);
    void store(const std::string& calendar, std::vector<HeldTag> before,
        std::vector<Resource> written, std::vector<std::string> gone = {});

    Workspace& workspace_;
    bool isCutOff_ = false; ///< the server was not reached: what comes later waits, too
};

/// The same, of an account whose server names these.
std::optional<std::string> ownAddress(
    const Account& account, const std::vector<std::string>& namedByServer);

} // namespace Tessel::App
