#pragma once

#include "Tessel/Platform/Foundation/Web/URLRequest.h"
#include "Tessel/Session/Calendars/CalendarProperties.h"
#include "Tessel/Session/Credential.h"
#include "Tessel/Session/Exchange/Answer.h"
#include "Tessel/Session/Exchange/SessionSettings.h"
#include "Tessel/Session/Opening/AccountPlace.h"
#include "Tessel/Session/Outbox/Outbox.h"
#include "Tessel/Session/Outbox/Sent.h"
#include "Tessel/Session/Outcome/Call.h"
#include "Tessel/Session/Sharing/Invitation.h"
#include "Tessel/Session/Store/MemoryStore.h"
#include "Tessel/Session/Store/SQLiteStore.h"
#include "Tessel/Session/Sync/Changes.h"
#include "Tessel/Session/Text/EventText.h"
#include "Tessel/Session/Writes/ChangedEvent.h"

#include <memory>
#include <string>
#include <vector>

namespace Tessel {

class Channel;

/// Whose calendars, and where.
struct AccountAddress {
    /// A host, host and port, a URL with or without a path, or an e-mail address.
    std::string server;
    std::string user; ///< as the server knows the user
};

/// One account at its server, opened. Every call answers exactly once, with the truth:
///
/// - Nothing that a server sends stops the process or leaves a call without an end, which comes at
///   the latest by the limits of `SessionSettings`.
/// - Success is reported when the server has done it. A lost answer is resolved by looking; where
///   that is not possible `Failure::isUncertain` says so. Nothing is sent a second time blindly.
/// - A write is guarded by the tag of what it was made from and overwrites nobody else's.
/// - Credentials go to the account's own server, and to `SessionSettings::otherOrigins`.
///
/// Calls may be made from any thread and return at once; continuations come on
/// `SessionSettings::executor`, else on a thread of the library that all calls of the session
/// share. Each call gives a handle to cancel it or to `wait` for it; it goes on without the handle.
/// When the session goes, calls that are under way end as `cancelled`.
///
/// Places of calendars and resources are as `StoredCalendar::href` and `Resource::href` have them.
class TESSEL_EXPORT Session final {
public:
    using Opened = std::shared_ptr<Session>; ///< held by the host as long as it makes calls

    /// Finds the account's calendars at its server (RFC 6764): at the address itself, at the
    /// well-known address, at the root. The failure names what was tried and what came back. Of an
    /// e-mail address, DNS is asked first which servers its domain has (SRV and TXT), for a few
    /// seconds; one that lies outside the domain gets no credential, unless
    /// `SessionSettings::otherOrigins` has it, and the failure says so.
    static Call<Opened> open(const AccountAddress& address, const Credential& credential,
        Continuation<Opened> done = {}, SessionSettings settings = {});

    /// Made by `open`.
    Session(std::shared_ptr<Channel> channel, AccountPlace place);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Where the account lives, as `open` found it.
    const AccountPlace& place() const { return place_; }
    /// The account's server.
    Origin origin() const;

    using CalendarList = std::vector<StoredCalendar>; ///< in the server's order
    /// Every calendar collection of the account, whatever properties its server leaves out
    /// (`StoredCalendar::missing`).
    Call<CalendarList> calendars(Continuation<CalendarList> done = {});
    /// Makes a calendar (RFC 4791, 5.3.1) and gives its place. Where the server has made it, but
    /// refuses what it was to have (Xandikos), the failure's reason names the place.
    Call<std::string> createCalendar(
        const CalendarProperties& properties, Continuation<std::string> done = {});
    /// Sets properties: all or none (RFC 4918, 9.2), but on Xandikos, which sets those that it can.
    /// The reason of a failure names those that the server has refused.
    Call<void> changeCalendar(const std::string& calendar, const CalendarProperties& properties,
        Continuation<void> done = {});
    /// Deletes a calendar with all it holds.
    Call<void> deleteCalendar(const std::string& calendar, Continuation<void> done = {});

    /// Brings `store` to the server's state. A calendar or an event that cannot be brought stops no
    /// other: `Changes` names it, and the next sync asks for it again. It fails as a whole when the
    /// calendars cannot be listed; then nothing has changed in the store.
    Call<Changes> sync(std::shared_ptr<Store> store, ProgressReport progress = {},
        Continuation<Changes> done = {});
    /// The same for one calendar alone.
    Call<Changes> syncCalendar(std::shared_ptr<Store> store, const std::string& calendar,
        ProgressReport progress = {}, Continuation<Changes> done = {});

    // A place that is empty or that of a collection, such as a calendar's, is `malformed`, and so
    // is no calendar: then nothing is sent. A resource with an empty tag is looked for at its place
    // first. One that `Outbox` gave and that was not sent is not there: `remove` has nothing to do,
    // `change` and `move` are `missing`, and what waits is made all the same. Give it to the
    // outbox.

    /// One calendar object as it is on the server; `missing` where there is none, `malformed` where
    /// there are several events.
    Call<Resource> fetch(const std::string& place, Continuation<Resource> done = {});
    /// Writes a new event into a calendar: never over an existing one, and never twice. `malformed`
    /// for one without UID or DTSTART, which nobody would see, and for a text that is not UTF-8.
    Call<Resource> create(
        const std::string& calendar, const EventText& event, Continuation<Resource> done = {});
    /// Makes an edit. When somebody else has changed the event since `resource` was read, the edit
    /// is made on the newer text, unless both touch the same property of the same instance: then it
    /// fails as `changed`, with both texts.
    Call<ChangedEvent> change(
        const Resource& resource, const EventEdit& edit, Continuation<ChangedEvent> done = {});
    /// Moves it into another calendar and gives it as it is there; nothing is sent for its own.
    Call<Resource> move(
        const Resource& resource, const std::string& calendar, Continuation<Resource> done = {});
    /// Removes it, unless somebody else has changed it meanwhile. Done too when it is gone.
    Call<void> remove(const Resource& resource, Continuation<void> done = {});

    /// Sends what waits in the outbox of a store (`Outbox`), as far as it may be sent by now: the
    /// changes of one resource in their order, a failed one again after a pause that grows or that
    /// the server asks for. A real conflict is parked with both texts. What has been done is in the
    /// store when it is told. A process that is killed meanwhile loses nothing and makes nothing
    /// twice: who sends next looks for what was on its way, once twice `SessionSettings::patience`
    /// has passed.
    Call<Sent> sendOutbox(
        std::shared_ptr<Store> store, SendReport report = {}, Continuation<Sent> done = {});

    /// Sends a request of the host's own to the account's server and gives the answer, whatever its
    /// status. `what` says what cannot be done if it fails.
    Call<Answer> send(const URLRequest& request, const std::string& what = "The request failed",
        Continuation<Answer> done = {});

    // Sharing, as Cyrus offers it. `unsupported`, with nothing sent that would do something, where
    // a server does not offer it at all, or not for this calendar.

    using ShareeList = std::vector<Sharee>; ///< in the server's order
    /// Whom a calendar is shared with.
    Call<ShareeList> sharees(const std::string& calendar, Continuation<ShareeList> done = {});
    /// Invites, and changes the access of who was invited before. What became of each is what the
    /// server lists afterwards.
    Call<ShareeOutcomes> share(const std::string& calendar, const std::vector<Invitee>& invitees,
        Continuation<ShareeOutcomes> done = {});
    /// Withdraws the shares of some; one that there is not is `missing` in its own outcome.
    Call<ShareeOutcomes> unshare(const std::string& calendar,
        const std::vector<std::string>& addresses, Continuation<ShareeOutcomes> done = {});
    /// Withdraws the shares of all.
    Call<ShareeOutcomes> unshareAll(
        const std::string& calendar, Continuation<ShareeOutcomes> done = {});

    using InvitationList = std::vector<Invitation>; ///< oldest first
    /// What others share with the user, and what they have answered, oldest first. One that the
    /// server does not show says so itself and keeps none of the others back.
    Call<InvitationList> invitations(Continuation<InvitationList> done = {});
    /// Gives the place of the shared calendar among the user's own.
    Call<std::string> accept(const Invitation& invitation, Continuation<std::string> done = {});
    /// An answer that was lost cannot be looked for: then the failure is uncertain, and declining
    /// once more does no harm.
    Call<void> decline(const Invitation& invitation, Continuation<void> done = {});
    /// Takes it off the list. It answers nothing, and a calendar that was accepted stays.
    Call<void> dismiss(const Invitation& invitation, Continuation<void> done = {});

private:
    const std::shared_ptr<Channel> channel_;
    const AccountPlace place_;
};

} // namespace Tessel
