#include "tests/Tessel/Session/Hostile/HostileAccount.h"

#include "Tessel/CaldavLibrary/PasswordAuth.h"
#include "Tessel/Session/Exchange/Channel.h"
#include "tests/Tessel/Session/World.h"
namespace Tessel::Test {

namespace {

using namespace std::chrono_literals;

const Invitation invitation {.place = "/notes/1.xml",
    .kind = Invitation::Kind::offer,
    .uid = "1",
    .calendar = "/bob/c/",
    .sharee = "mailto:alice@example.com"};

EventText newEvent()
{
    return EventText::read(eventText("new")).value();
}

std::shared_ptr<Session> sessionAt(const WireServer& server, SessionSettings settings)
{
    const auto origin = Origin::of(server.url("/")).value();
    const auto auth = std::make_shared<PasswordAuth>(origin, "alice", "secret");
    return std::make_shared<Session>(
        std::make_shared<Channel>(auth, std::vector {origin}, std::move(settings)),
        AccountPlace {.principal = server.url("/me/"),
            .homes = {server.url("/home/")},
            .notifications = server.url("/notes/"),
            .addresses = {"mailto:alice@example.com"},
            .features = {"calendar-access", "calendarserver-sharing"}});
}

} // namespace

std::optional<Failure> Told::obstacle(const Changes& changes)
{
    if (changes.isComplete()) return std::nullopt;
    return changes.calendars.front().failure.value_or(Failure {.reason = "not all was brought"});
}

std::optional<Failure> Told::obstacle(const Sent& sent)
{
    if (sent.stopped) return sent.stopped;
    if (sent.done.size() == 1) return std::nullopt;
    return Failure {.reason = "it waits", .isUncertain = true};
}

std::optional<Failure> Told::obstacle(const ShareeOutcomes& outcomes)
{
    if (outcomes.empty() || outcomes.front().outcome) return std::nullopt;
    return outcomes.front().outcome.failure();
}

std::optional<Failure> Told::obstacle(const Session::InvitationList& invitations)
{
    return invitations.empty() ? std::nullopt : invitations.front().failure;
}

HostileAccount::HostileAccount(
    std::unique_ptr<WireServer> server, std::chrono::milliseconds itsPatience)
    : held {"/home/a/one.ics", "\"2\"", eventText("one")}
    , patience_(itsPatience)
    , server_(std::move(server))
{
    renew();
    auto& calendars = server_->calendars();
    calendars.addCalendar("/home/a/");
    calendars.addCalendar("/home/b/");
    calendars.put(held.href, held.text);
    calendars.put("/home/a/two.ics", eventText("two"));
}

void HostileAccount::renew()
{
    session = sessionAt(*server_, settings());
}

SessionSettings HostileAccount::settings() const
{
    return {.patience = patience_, .limit = 3 * patience_, .allowsPlainHTTP = true};
}

bool HostileAccount::isWhole(Store& store) const
{
    const auto tags = store.tags("/home/a/");
    return tags && tags.value().size() == 2;
}

const std::vector<SessionCall>& sessionCalls()
{
    using Account = HostileAccount;
    static const std::vector<SessionCall> calls {
        {"open",
            [](Account& account, const Told& told) -> CallHandle {
                return Session::open({.server = account.server().url("/"), .user = "alice"},
                    Password {"secret"}, told, account.settings());
            }},
        {"calendars",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->calendars(told);
            }},
        {"createCalendar",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->createCalendar({.displayName = "New"}, told);
            },
            [](Account& account) { return account.server().calendars().asked("MKCALENDAR") > 0; }},
        {"changeCalendar",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->changeCalendar("/home/a/", {.displayName = "New"}, told);
            },
            [](Account& account) { return account.server().calendars().asked("PROPPATCH") > 0; }},
        {"deleteCalendar",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->deleteCalendar("/home/a/", told);
            },
            [](Account& account) { return !account.there("/home/a/one.ics"); }},
        {"sync",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->sync(account.empty, {}, told);
            },
            [](Account& account) { return account.isWhole(*account.empty); }, true},
        {"sync by token",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->sync(account.behind, {}, told);
            },
            [](Account& account) { return account.isWhole(*account.behind); }, true},
        {"syncCalendar",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->syncCalendar(account.empty, "/home/a/", {}, told);
            },
            [](Account& account) { return account.isWhole(*account.empty); }, true},
        {"fetch",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->fetch("/home/a/two.ics", told);
            }},
        {"create",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->create("/home/a/", newEvent(), told);
            },
            [](Account& account) { return account.there("/home/a/new.ics").has_value(); }},
        {"change",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->change(account.held, {.summary = "New"}, told);
            },
            [](Account& account) { return account.there("/home/a/one.ics") != account.held.text; }},
        {"move",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->move(account.held, "/home/b/", told);
            },
            [](Account& account) { return account.there("/home/b/one.ics").has_value(); }},
        {"remove",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->remove(account.held, told);
            },
            [](Account& account) { return !account.there("/home/a/one.ics"); }},
        {"sendOutbox",
            [](Account& account, const Told& told) -> CallHandle {
                Outbox(account.behind).change(account.held, {.summary = "New"});
                return account.session->sendOutbox(account.behind, {}, told);
            },
            [](Account& account) { return account.there("/home/a/one.ics") != account.held.text; }},
        {"send",
            [](Account& account, const Told& told) -> CallHandle {
                URLRequest request(account.server().url("/home/a/sent.ics"));
                request.method = "PUT";
                request.body = eventText("sent");
                return account.session->send(request, "It could not be sent", told);
            },
            [](Account& account) { return account.there("/home/a/sent.ics").has_value(); }},
        {"sharees",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->sharees("/home/a/", told);
            }},
        {"share",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->share("/home/a/", {{"carol@example.com"}}, told);
            },
            [](Account& account) {
                return account.server().isSharedWith("mailto:carol@example.com");
            }},
        {"unshare",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->unshare("/home/a/", {"bob@example.com"}, told);
            },
            [](Account& account) {
                return !account.server().isSharedWith("mailto:bob@example.com");
            }},
        {"unshareAll",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->unshareAll("/home/a/", told);
            },
            [](Account& account) {
                return !account.server().isSharedWith("mailto:bob@example.com");
            }},
        {"invitations",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->invitations(told);
            }},
        {"accept",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->accept(invitation, told);
            },
            [](Account& account) { return account.server().hasSharedCalendar(); }},
        {"decline",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->decline(invitation, told);
            }},
        {"dismiss",
            [](Account& account, const Told& told) -> CallHandle {
                return account.session->dismiss(invitation, told);
            },
            [](Account& account) { return !account.server().hasInvitation(); }},
    };
    return calls;
}

} // namespace Tessel::Test
