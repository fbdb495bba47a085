#include "apps/tessel/commands/EventWrites.h"

namespace Tessel::App {

EventWrites::EventWrites(Workspace& workspace)
    : workspace_(workspace)
{
}

template <class Online, class Offline>
Result<EventWrites::Written> EventWrites::write(
    bool mustWait, const Online& online, const Offline& offline)
{
    if (!mustWait && !isOffline()) {
        const auto session = workspace_.sessionIfReached();
        auto done = session ? online(*session.value()) : Result<Written>(session.failure());
        if (done || !isUnreached(done.failure())) return done;
        workspace_.out().note(reasonOf(done.failure()));
        isCutOff_ = true;
    }
    return offline(Outbox(workspace_.store()));
}

bool EventWrites::isOffline() const
{
    return isCutOff_ || workspace_.options().isOffline;
}

/// What the server has done is done, whether or not it can be held here.
void EventWrites::store(const std::string& calendar, std::vector<HeldTag> before,
    std::vector<Resource> written, std::vector<std::string> gone)
{
    const auto name = before.front().href;
    const auto outcome = workspace_.store()->apply({.calendar = calendar,
        .upserts = std::move(written),
        .removed = std::move(gone),
        .expected = std::move(before)});
    // A calendar that was never synced is brought whole by its first sync, and what another sync
    // has brought meanwhile may be newer.
    if (outcome || outcome.failure().kind != FailureKind::storage) return;
    workspace_.leaveOut(name,
        "The server has made the change; do not make it again. Here it could not be held: "
            + reasonOf(outcome.failure()));
}

Result<EventWrites::Written> EventWrites::create(
    const StoredCalendar& calendar, const EventText& event)
{
    return write(
        false,
        [&](Session& session) -> Result<Written> {
            auto made = Interruption::await(session.create(calendar.href, event));
            if (!made) return made.failure();
            store(calendar.href, {{made.value().href, {}}}, {made.value()});
            return Written {std::move(made).value()};
        },
        [&](Outbox outbox) -> Result<Written> {
            auto made = outbox.create(calendar.href, event);
            if (!made) return made.failure();
            return Written {.resource = std::move(made).value(), .waits = true};
        });
}

std::vector<Result<EventWrites::Written>> EventWrites::createWaiting(
    const StoredCalendar& calendar, std::span<const EventText> events)
{
    std::vector<Result<Written>> written;
    for (auto& made : Outbox(workspace_.store()).create(calendar.href, events)) {
        if (made) {
            written.push_back(Written {.resource = std::move(made).value(), .waits = true});
        } else {
            written.push_back(made.failure());
        }
    }
    return written;
}

Result<EventWrites::Written> EventWrites::change(const HeldEvent& held, const EventEdit& edit)
{
    const HeldTag before {held.resource.href, held.resource.tag};
    return write(
        held.waits,
        [&](Session& session) -> Result<Written> {
            auto changed = Interruption::await(session.change(held.resource, edit));
            if (!changed) return changed.failure();
            auto [resource, following] = std::move(changed).value();
            std::vector<Resource> written {resource};
            if (following) written.push_back(*following);
            store(held.calendar.href, {before}, std::move(written));
            return Written {std::move(resource), std::move(following)};
        },
        [&](Outbox outbox) -> Result<Written> {
            auto changed = outbox.change(held.resource, edit);
            if (!changed) return changed.failure();
            return Written {.resource = std::move(changed).value(), .waits = true};
        });
}

Result<EventWrites::Written> EventWrites::move(const HeldEvent& held, const StoredCalendar& to)
{
    const HeldTag before {held.resource.href, held.resource.tag};
    return write(
        held.waits,
        [&](Session& session) -> Result<Written> {
            auto moved = Interruption::await(session.move(held.resource, to.href));
            if (!moved) return moved.failure();
            store(held.calendar.href, {before}, {}, {held.resource.href});
            store(to.href, {{moved.value().href, {}}}, {moved.value()});
            return Written {std::move(moved).value()};
        },
        [&](Outbox outbox) -> Result<Written> {
            auto moved = outbox.move(held.resource, to.href);
            if (!moved) return moved.failure();
            return Written {.resource = std::move(moved).value(), .waits = true};
        });
}

Result<EventWrites::Written> EventWrites::remove(const HeldEvent& held)
{
    const HeldTag before {held.resource.href, held.resource.tag};
    return write(
        held.waits,
        [&](Session& session) -> Result<Written> {
            if (auto gone = Interruption::await(session.remove(held.resource)); !gone)
                return gone.failure();
            store(held.calendar.href, {before}, {}, {held.resource.href});
            return Written {held.resource};
        },
        [&](Outbox outbox) -> Result<Written> {
            if (auto gone = outbox.remove(held.resource); !gone) return gone.failure();
            return Written {.resource = held.resource, .waits = true};
        });
}

std::optional<std::string> EventWrites::ownAddress()
{
    std::vector<std::string> named;
    if (!workspace_.options().isOffline) {
        if (const auto session = workspace_.sessionIfReached())
            named = session.value()->place().addresses;
    }
    return App::ownAddress(workspace_.account(), named);
}

std::optional<std::string> ownAddress(
    const Account& account, const std::vector<std::string>& namedByServer)
{
    constexpr std::string_view scheme = "mailto:";
    for (const auto& address : namedByServer) {
        if (address.starts_with(scheme)) return address.substr(scheme.size());
    }
    for (const auto& name : {account.address, account.user, account.server}) {
        if (name.find('@') != name.npos && name.find('/') == name.npos) return name;
    }
    return std::nullopt;
}

} // namespace Tessel::App
