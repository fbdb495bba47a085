#include "Tessel/Session/Session.h"

#include "Tessel/CaldavLibrary/BearerAuth.h"
#include "Tessel/CaldavLibrary/PasswordAuth.h"
#include "Tessel/Session/Calendars/CalendarChanges.h"
#include "Tessel/Session/Opening/Discovery.h"
#include "Tessel/Session/Sharing/CalendarSharing.h"
#include "Tessel/Session/Sharing/Invitations.h"
#include "Tessel/Session/Sync/AccountSync.h"
#include "Tessel/Session/Writes/ChangeEvent.h"
#include "Tessel/Session/Writes/MoveEvent.h"
#include "Tessel/Session/Writes/RemoveEvent.h"

namespace Tessel {

namespace {

std::shared_ptr<MRVAuthDelegate> signer(
    const Credential& credential, const std::string& user, const std::vector<Origin>& origins)
{
    const std::vector<Origin> others(origins.begin() + 1, origins.end());
    if (const auto* password = std::get_if<Password>(&credential))
        return std::make_shared<PasswordAuth>(origins.front(), user, password->text, others);
    if (const auto* token = std::get_if<Token>(&credential))
        return std::make_shared<BearerAuth>(origins.front(), token->text, others);
    return std::get<std::shared_ptr<MRVAuthDelegate>>(credential);
}

/// Ends the call with what an inner step gives.
template <class T> std::function<void(Result<T>)> ending(std::shared_ptr<PendingCall<T>> call)
{
    return [call = std::move(call)](Result<T> result) { call->end(std::move(result)); };
}

/// A call that has ended before it began.
template <class T>
Call<T> failed(const SessionSettings& settings, Continuation<T> done, Failure failure)
{
    const auto channel = std::make_shared<Channel>(nullptr, std::vector<Origin> {}, settings);
    const auto call = channel->begin<T>(std::move(done));
    call->fail(std::move(failure));
    return call->call();
}

} // namespace

Call<Session::Opened> Session::open(const AccountAddress& account, const Credential& credential,
    Continuation<Opened> done, SessionSettings settings)
{
    const auto read = ServerAddress::read(account.server);
    if (!read) return failed(settings, std::move(done), read.failure());
    const auto& address = read.value();
    if (address.base.starts_with("http:") && !settings.allowsPlainHTTP) {
        return failed(settings, std::move(done),
            {.kind = FailureKind::notSent,
                .reason = "The account could not be opened: " + address.base
                    + " is a server without TLS, on the way to which everybody could read the "
                      "password. Give https, or allow plain HTTP if you mean it."});
    }
    std::vector<Origin> origins {address.origin};
    origins.insert(origins.end(), settings.otherOrigins.begin(), settings.otherOrigins.end());
    const auto auth = signer(credential, account.user, origins);
    if (!auth) {
        return failed(settings, std::move(done),
            {.kind = FailureKind::notSent,
                .reason = "The account could not be opened: there is no credential."});
    }
    const auto channel = std::make_shared<Channel>(auth, std::move(origins), std::move(settings));
    const auto call = channel->begin<Opened>(std::move(done));
    const auto found
        = std::make_shared<PendingCall<AccountPlace>>([](std::function<void()> work) { work(); },
            [channel, call](Result<AccountPlace> place) {
                if (!place) return call->fail(place.failure());
                call->end(std::make_shared<Session>(channel, std::move(place).value()));
            });
    call->whenDone([weak = std::weak_ptr(found)] {
        if (const auto discovery = weak.lock()) discovery->cancel();
    });
    std::make_shared<Discovery>(channel, Discovery::starts(address), found)->start();
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
    std::make_shared<AccountSync>(
        channel_, place_.homes, std::move(store), std::nullopt, std::move(progress), call)
        ->start();
    return call->call();
}

Call<Changes> Session::syncCalendar(std::shared_ptr<Store> store, const std::string& calendar,
    ProgressReport progress, Continuation<Changes> done)
{
    const auto call = channel_->begin<Changes>(std::move(done));
    std::make_shared<AccountSync>(
        channel_, place_.homes, std::move(store), calendar, std::move(progress), call)
        ->start();
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
    createEvent({channel_, call, "The event could not be created"}, calendar, event,
        ending<Resource>(call));
    return call->call();
}

Call<ChangedEvent> Session::change(
    const Resource& resource, const EventEdit& edit, Continuation<ChangedEvent> done)
{
    const auto call = channel_->begin<ChangedEvent>(std::move(done));
    const auto change = std::make_shared<ChangeEvent>(
        ResourceAccess {channel_, call, "The event could not be changed"}, resource, edit,
        ending<ChangedEvent>(call));
    channel_->step(call, [change] { change->start(); });
    return call->call();
}

Call<Resource> Session::move(
    const Resource& resource, const std::string& calendar, Continuation<Resource> done)
{
    const auto call = channel_->begin<Resource>(std::move(done));
    moveEvent({channel_, call, "The event could not be moved"}, resource, calendar,
        ending<Resource>(call));
    return call->call();
}

Call<void> Session::remove(const Resource& resource, Continuation<void> done)
{
    const auto call = channel_->begin<void>(std::move(done));
    removeEvent({channel_, call, "The event could not be removed"}, resource, ending<void>(call));
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
