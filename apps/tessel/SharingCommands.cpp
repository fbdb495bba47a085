#include "apps/tessel/Commands.h"
#include "apps/tessel/StoreDelegate.h"

namespace Tessel::App {

namespace {

using Notification = std::shared_ptr<MRVNotification>;
using Notifications = StoreDelegate::Notifications;

const char* name(MRVInviteStatus status)
{
    switch (status) {
    case MRVInviteStatus::accepted:
        return "accepted";
    case MRVInviteStatus::declined:
        return "declined";
    case MRVInviteStatus::noResponse:
        return "no response";
    case MRVInviteStatus::deleted:
        return "withdrawn";
    }
    return "";
}

const char* name(MRVSharedCalendarAccess access)
{
    return access == MRVSharedCalendarAccess::readWrite ? "read-write" : "read-only";
}

void share(Host& host, const std::string& nameOrHref, const std::string& email, bool isWritable)
{
    const auto calendar = host.calendar(nameOrHref);
    const auto sharee = std::make_shared<MRVSharee>(MRVSharee {.email = email,
        .access
        = isWritable ? MRVSharedCalendarAccess::readWrite : MRVSharedCalendarAccess::readOnly});
    const auto client = host.makeClient();
    host.write("sharing the calendar", "POST",
        [&] { client->share(calendar, {sharee}, [](const auto&) {}); });
    host.output().result("shared " + calendar->displayName + " " + name(sharee->access) + " with "
            + email + host.lastWord(),
        {{"shared", calendar->href}, {"with", email}, {"access", std::string(name(sharee->access))},
            {"answer", host.lastAnswer()}});
}

void unshare(Host& host, const std::string& nameOrHref)
{
    const auto calendar = host.calendar(nameOrHref);
    if (!calendar->sharees || calendar->sharees->empty()) {
        throw std::runtime_error(calendar->displayName + " is shared with nobody");
    }
    const auto client = host.makeClient();
    host.write("unsharing the calendar", "POST",
        [&] { client->unshare(calendar, {}, [](const auto&) {}); });
    host.output().result("unshared " + calendar->displayName + host.lastWord(),
        {{"unshared", calendar->href}, {"answer", host.lastAnswer()}});
}

void listSharees(Host& host, const std::string& nameOrHref)
{
    const auto calendar = host.calendar(nameOrHref);
    if (!calendar->sharees) return;
    for (const auto& sharee : *calendar->sharees) {
        host.output().result(
            sharee->email + ": " + name(sharee->access) + ", " + name(sharee->status),
            {{"calendar", calendar->href}, {"email", sharee->email},
                {"access", std::string(name(sharee->access))},
                {"status", std::string(name(sharee->status))}});
    }
}

void print(const Host& host, const char* change, const MRVNotification& note)
{
    const auto text = note.isReply
        ? note.shareeEmail + " has " + name(note.status) + " " + note.summary
        : note.organizerEmail.value_or(note.shareeEmail) + " shares " + note.summary + " "
            + name(note.access) + (note.status == MRVInviteStatus::deleted ? ": withdrawn" : "");
    host.output().result(std::string("notification ") + change + ": " + text,
        {{"change", std::string(change)}, {"path", note.href}, {"calendar", note.hostURL},
            {"summary", note.summary}, {"address", note.shareeEmail},
            {"uid", Output::orNull(note.uid)}, {"isReply", note.isReply},
            {"access", std::string(name(note.access))},
            {"status", std::string(name(note.status))}});
}

class RemovedNotifications final : public StoreDelegate {
public:
    using StoreDelegate::StoreDelegate;
    void notificationsRemoved(const Notifications& notifications, const Client&) override
    {
        removed = notifications;
    }

    Notifications removed;
};

/// The copies that the library can match and delete: see `MRVNotification`.
Notifications toHold(const Notifications& fetched)
{
    Notifications held;
    for (const auto& notification : fetched) {
        held.push_back(std::make_shared<MRVNotification>(*notification));
        held.back()->href = notification->identifier.value_or(notification->href);
    }
    return held;
}

void fetch(Host& host)
{
    const auto account = host.account();
    if (!account->notificationURL) throw std::runtime_error("the server has no notifications");
    const auto held = host.store().notifications(account);
    const auto delegate = std::make_shared<RemovedNotifications>(host.store());
    const auto client = host.makeClient();
    client->setSyncDelegate(delegate);
    client->setDataSource(delegate);

    const auto answer = host.makeAnswer<std::optional<Notifications>, std::optional<Error>>();
    const auto first = host.log()->count();
    // An empty collection ends the fetch without a word; its listing tells.
    const auto isOver = [&](const ExchangeLog::Exchanges& all) {
        return answer.value()
            || (all.size() > first && all.back().isOver && all.back().isWithout("notificationtype>")
                && all.back().isWithout("invite-"));
    };
    host.waitFor("fetching the notifications", isOver, [&] { client->getNotifications(answer); });

    const auto removed = answer.value() ? delegate->removed : held;
    const auto added = answer.value()
        ? toHold(std::get<0>(*answer.value()).value_or(Notifications {}))
        : Notifications {};
    host.store().save(added);
    for (const auto& notification : removed) {
        host.store().remove(*notification);
        print(host, "removed", *notification);
    }
    for (const auto& notification : added)
        print(host, "added", *notification);
    if (const auto error = answer.value() ? std::get<1>(*answer.value()) : std::nullopt) {
        host.fail("fetching the notifications", error->localizedDescription);
    }
}

void list(Host& host)
{
    fetch(host);
    for (const auto& notification : host.store().notifications(host.account())) {
        print(host, "held", *notification);
    }
}

Notification find(Host& host, const std::string& name, bool withReplies)
{
    for (const auto& note : host.store().notifications(host.account())) {
        const bool isNamed = note->uid == name || note->href == name || note->summary == name;
        if (isNamed && (withReplies || !note->isReply)) return note;
    }
    throw std::runtime_error("nothing called " + name + " is held; see `tessel notifications`");
}

/// An answered invitation is done with: a later one may come under the same path, and counts as
/// new only when this one is no longer held.
void forget(Host& host, const Notification& notification)
{
    const auto client = host.makeClient();
    host.write("deleting the notification", "DELETE",
        [&] { client->deleteNotification(notification, [](const auto&) {}); });
    host.store().remove(*notification);
}

void accept(Host& host, const std::string& name)
{
    const auto notification = find(host, name, false);
    const auto client = host.makeClient();
    const auto answer = host.makeAnswer<std::optional<std::string>, std::optional<Error>>();
    const auto [href, error] = host.await("accepting the invitation", answer,
        [&] { client->acceptInvitation(notification, answer); });
    if (error) host.fail("accepting the invitation", error->localizedDescription);
    host.output().result(
        "accepted " + notification->summary + ", now at " + href.value_or("-") + host.lastWord(),
        {{"accepted", notification->summary}, {"href", Output::orNull(href)},
            {"answer", host.lastAnswer()}});
    forget(host, notification);
}

void decline(Host& host, const std::string& name)
{
    const auto notification = find(host, name, false);
    const auto client = host.makeClient();
    const auto answer = host.makeAnswer<std::optional<Error>>();
    const auto [error] = host.await("declining the invitation", answer,
        [&] { client->declineInvitation(notification, answer); });
    if (error) host.fail("declining the invitation", error->localizedDescription);
    host.output().result("declined " + notification->summary + host.lastWord(),
        {{"declined", notification->summary}, {"answer", host.lastAnswer()}});
    forget(host, notification);
}

void dismiss(Host& host, const std::string& name)
{
    const auto notification = find(host, name, true);
    forget(host, notification);
    host.output().result("dismissed " + notification->href + host.lastWord(),
        {{"dismissed", notification->href}, {"answer", host.lastAnswer()}});
}

using NamedAction = void (*)(Host&, const std::string&);

void add(CLI::App& app, Command& chosen, const char* command, const char* help, const char* option,
    const char* optionHelp, NamedAction action)
{
    const auto name = std::make_shared<std::string>();
    const auto added = app.add_subcommand(command, help);
    added->add_option(option, *name, optionHelp)->required();
    added->callback([=, &chosen] { chosen = [=](Host& host) { action(host, *name); }; });
}

void addShare(CLI::App& app, Command& chosen)
{
    struct Request {
        std::string calendar, email;
        bool isWritable = false;
    };
    const auto request = std::make_shared<Request>();
    const auto command = app.add_subcommand("share", "Invite somebody to a calendar");
    command->add_option("CALENDAR", request->calendar, "display name or href")->required();
    command->add_option("EMAIL", request->email)->required();
    command->add_flag("--write", request->isWritable, "also to change it");
    command->callback([=, &chosen] {
        chosen = [=](Host& host) {
            share(host, request->calendar, request->email, request->isWritable);
        };
    });
}

} // namespace

void addSharingCommands(CLI::App& app, Command& chosen)
{
    constexpr auto calendarHelp = "display name or href";
    constexpr auto invitationHelp = "uid, path, or name of the calendar";
    addShare(app, chosen);
    add(app, chosen, "unshare", "Withdraw a calendar from everybody", "CALENDAR", calendarHelp,
        unshare);
    add(app, chosen, "sharees", "List whom a calendar is shared with", "CALENDAR", calendarHelp,
        listSharees);
    app.add_subcommand("notifications", "Fetch and list sharing notifications")
        ->callback([&chosen] { chosen = list; });
    add(app, chosen, "accept", "Accept an invitation", "INVITATION", invitationHelp, accept);
    add(app, chosen, "decline", "Decline an invitation", "INVITATION", invitationHelp, decline);
    add(app, chosen, "dismiss", "Delete a notification", "NOTIFICATION", invitationHelp, dismiss);
}

} // namespace Tessel::App
