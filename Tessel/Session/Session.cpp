#include "Tessel/Session/Session.h"

#include "Tessel/Session/Calendars/CalendarChanges.h"
#include "Tessel/Session/Opening/ServerAddress.h"
#include "Tessel/Session/Outbox/OutboxRun.h"
#include "Tessel/Session/SessionOpening.h"
#include "Tessel/Session/Sharing/CalendarSharing.h"
#include "Tessel/Session/Sharing/Invitations.h"
#include "Tessel/Session/Store/StoreFailures.h"
#include "Tessel/Session/Sync/AccountSync.h"
#include "Tessel/Session/Writes/ChangeEvent.h"
#include "Tessel/Session/Writes/CreateEvent.h"
#include "Tessel/Session/Writes/MoveEvent.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

namespace {

/// Ends the call with what an inner step gives.
template <class T> std::function<void(Result<T>)> ending(std::shared_ptr<PendingCall<T>> call)
{
    return [call = std::move(call)](Result<T> result) { call->end(std::move(result)); };
}

} // namespace

Call<Session::Opened> Session::open(const AccountAddress& account, const Credential& credential,
    Continuation<Opened> done, SessionSettings settings)
{
    // Not yet that of the session: where that is shows on the way.
    const auto channel = std::make_shared<Channel>(nullptr, std::vector<Origin> {}, settings);
    const auto call = channel->begin<Opened>(std::move(done));
    const auto address = ServerAddress::read(account.server);
    if (address) {
        std::make_shared<SessionOpening>(account.user, credential, std::move(settings), call,
            [call](Result<SessionOpening::Found> found) {
                if (!found) return call->fail(found.failure());
                auto& [channel, place] = found.value();
                call->end(std::make_shared<Session>(std::move(channel), std::move(place)));
            })
            ->start(address.value());
    } else {
        call->fail(address.failure());
    }
    return call->call();
}

Session::Session(std::shared_ptr<Channel> channel, AccountPlace place)
    : channel_(std::move(channel))
    , place_(std::move(place))
{
}

Session::~Session()
{
    channel_->close();
}

Origin Session::origin() const
{
    return channel_->origin();
}

Call<Session::CalendarList> Session::calendars(Continuation<CalendarList> done)
{
    const auto call = channel_->begin<CalendarList>(std::move(done));
    listCalendars(channel_, place_.homes, call, ending<CalendarList>(call));
    return call->call();
}

Call<std::string> Session::createCalendar(
    const CalendarProperties& properties, Continuation<std::string> done)
{
    const auto call = channel_->begin<std::string>(std::move(done));
    Tessel::createCalendar(channel_, place_.homes.front(), properties, call);
    return call->call();
}

Call<void> Session::changeCalendar(
    const std::string& calendar, const CalendarProperties& properties, Continuation<void> done)
{
    const auto call = channel_->begin<void>(std::move(done));
    Tessel::changeCalendar(channel_, calendar, properties, call);
    return call->call();
}

Call<void> Session::deleteCalendar(const std::string& calendar, Continuation<void> done)
{
    const auto call = channel_->begin<void>(std::move(done));
    Tessel::deleteCalendar(channel_, calendar, call);
    return call->call();
}

Call<Changes> Session::sync(
    std::shared_ptr<Store> store, ProgressReport progress, Continuation<Changes> done)
{
    const auto call = channel_->begin<Changes>(std::move(done));
    if (store) {
        std::make_shared<AccountSync>(
            channel_, place_.homes, std::move(store), std::nullopt, std::move(progress), call)
            ->start();
    } else {
        call->fail(noStoreGiven("The account could not be synced"));
    }
    return call->call();
}

Call<Changes> Session::syncCalendar(std::shared_ptr<Store> store, const std::string& calendar,
    ProgressReport progress, Continuation<Changes> done)
{
    const auto call = channel_->begin<Changes>(std::move(done));
    if (store) {
        std::make_shared<AccountSync>(
            channel_, place_.homes, std::move(store), calendar, std::move(progress), call)
            ->start();
    } else {
        call->fail(noStoreGiven("The calendar could not be synced"));
    }
    return call->call();
}

Call<Resource> Session::fetch(const std::string& place, Continuation<Resource> done)
{
    const auto call = channel_->begin<Resource>(std::move(done));
    const ResourceAccess access {channel_, call, "The event could not be fetched"};
    access.read(place, [call, place](Result<std::optional<Resource>> found) {
        if (!found) return call->fail(found.failure());
        if (found.value()) return call->end(std::move(*found.value()));
        call->fail({.kind = FailureKind::missing,
            .reason = "The event could not be fetched: there is nothing at " + place + "."});
    });
    return call->call();
}

Call<Resource> Session::create(
    const std::string& calendar, const EventText& event, Continuation<Resource> done)
{
    const auto call = channel_->begin<Resource>(std::move(done));
    const ResourceAccess access {channel_, call, "The event could not be created"};
    if (auto failure = faultOfNew(access.what, calendar, event)) {
        call->fail(std::move(*failure));
    } else {
        createEvent(access, calendar, event, ending<Resource>(call));
    }
    return call->call();
}

Call<ChangedEvent> Session::change(
    const Resource& resource, const EventEdit& edit, Continuation<ChangedEvent> done)
{
    const auto call = channel_->begin<ChangedEvent>(std::move(done));
    const ResourceAccess access {channel_, call, "The event could not be changed"};
    // The first request of a change may be that of a new event beside the resource.
    if (auto failure = access.obstacleAt(resource.href)) {
        call->fail(std::move(*failure));
    } else {
        const auto change = std::make_shared<ChangeEvent>(access, resource, edit,
            [end = ending<ChangedEvent>(call)](
                Result<ChangedEvent> changed, bool) { end(std::move(changed)); });
        channel_->step(call, [change] { change->start(); });
    }
    return call->call();
}

Call<Resource> Session::move(
    const Resource& resource, const std::string& calendar, Continuation<Resource> done)
{
    const auto call = channel_->begin<Resource>(std::move(done));
    const ResourceAccess access {channel_, call, "The event could not be moved"};
    if (calendar.empty()) {
        call->fail(noCalendarGiven(access.what));
    } else {
        moveEvent(access, resource, calendar, ending<Resource>(call));
    }
    return call->call();
}

Call<void> Session::remove(const Resource& resource, Continuation<void> done)
{
    const auto call = channel_->begin<void>(std::move(done));
    removeEvent({channel_, call, "The event could not be removed"}, resource, ending<void>(call));
    return call->call();
}

Call<Sent> Session::sendOutbox(
    std::shared_ptr<Store> store, SendReport report, Continuation<Sent> done)
{
    const auto call = channel_->begin<Sent>(std::move(done));
    if (store) {
        std::make_shared<OutboxRun>(channel_, std::move(store), std::move(report), call)->start();
    } else {
        call->fail(noStoreGiven("The outbox could not be sent"));
    }
    return call->call();
}

Call<Answer> Session::send(
    const URLRequest& request, const std::string& what, Continuation<Answer> done)
{
    const auto call = channel_->begin<Answer>(std::move(done));
    channel_->send({.method = request.method,
                       .url = request.url(),
                       .fields = request.headers.fields(),
                       .body = std::string(request.body.view()),
                       .what = what},
        call, ending<Answer>(call));
    return call->call();
}

Call<Session::ShareeList> Session::sharees(
    const std::string& calendar, Continuation<ShareeList> done)
{
    const auto call = channel_->begin<ShareeList>(std::move(done));
    listSharees(channel_, place_, calendar, call);
    return call->call();
}

Call<ShareeOutcomes> Session::share(const std::string& calendar,
    const std::vector<Invitee>& invitees, Continuation<ShareeOutcomes> done)
{
    const auto call = channel_->begin<ShareeOutcomes>(std::move(done));
    changeSharees(channel_, place_, calendar, {.invited = invitees}, call);
    return call->call();
}

Call<ShareeOutcomes> Session::unshare(const std::string& calendar,
    const std::vector<std::string>& addresses, Continuation<ShareeOutcomes> done)
{
    const auto call = channel_->begin<ShareeOutcomes>(std::move(done));
    changeSharees(channel_, place_, calendar, {.withdrawn = addresses}, call);
    return call->call();
}

Call<ShareeOutcomes> Session::unshareAll(
    const std::string& calendar, Continuation<ShareeOutcomes> done)
{
    const auto call = channel_->begin<ShareeOutcomes>(std::move(done));
    changeSharees(channel_, place_, calendar, {.withdrawsAll = true}, call);
    return call->call();
}

Call<Session::InvitationList> Session::invitations(Continuation<InvitationList> done)
{
    const auto call = channel_->begin<InvitationList>(std::move(done));
    listInvitations(channel_, place_, call);
    return call->call();
}

Call<std::string> Session::accept(const Invitation& invitation, Continuation<std::string> done)
{
    const auto call = channel_->begin<std::string>(std::move(done));
    acceptInvitation(channel_, place_, invitation, call);
    return call->call();
}

Call<void> Session::decline(const Invitation& invitation, Continuation<void> done)
{
    const auto call = channel_->begin<void>(std::move(done));
    declineInvitation(channel_, place_, invitation, call);
    return call->call();
}

Call<void> Session::dismiss(const Invitation& invitation, Continuation<void> done)
{
    const auto call = channel_->begin<void>(std::move(done));
    dismissInvitation(channel_, invitation, call);
    return call->call();
}

} // namespace Tessel
