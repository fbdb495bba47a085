#pragma once

#include "Tessel/CaldavLibrary/MRVAuthDelegate.h"
#include "Tessel/CaldavLibrary/MRVDataSource.h"
#include "Tessel/CaldavLibrary/MRVSyncDelegate.h"
#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/CaldavLibrary/Operation/MRVStatusCode.h"
#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// The one object that a host holds for a calendar account. Made with `std::make_shared`.
///
/// Every call returns at once, may be made from any thread and runs on a queue of its own, so calls
/// run side by side. Completions arrive on the transport's callback thread unless stated otherwise.
/// Several calls report nothing when the server refuses: a host gives every call a deadline, see
/// docs/behaviour.md. A client lives as long as any of its calls is in flight.
class TESSEL_EXPORT MRVClient final : public std::enable_shared_from_this<MRVClient> {
public:
    using Completion = std::function<void(std::optional<Error>)>; ///< an error, or none

    /// Keeps the account strongly and the auth delegate weakly. Once that is gone, creating,
    /// updating and moving an event, sharing, answering an invitation and fetching a notification
    /// that was listed before send nothing; every other request stops the process.
    MRVClient(
        std::shared_ptr<MRVAccount> account, const std::shared_ptr<MRVAuthDelegate>& authDelegate);

    const std::shared_ptr<MRVAccount>& account() const { return account_; } ///< as given
    /// Null once it is gone.
    std::shared_ptr<MRVAuthDelegate> authDelegate() const { return authDelegate_.lock(); }

    ///@{
    /// Delegate and data source are held weakly. Set them before the first call; they are not
    /// guarded against calls that run meanwhile.
    std::shared_ptr<MRVSyncDelegate> syncDelegate() const { return syncDelegate_.lock(); }
    void setSyncDelegate(const std::shared_ptr<MRVSyncDelegate>& delegate)
    {
        syncDelegate_ = delegate;
    }
    std::shared_ptr<MRVDataSource> dataSource() const { return dataSource_.lock(); }
    void setDataSource(const std::shared_ptr<MRVDataSource>& source) { dataSource_ = source; }
    ///@}

    /// The serial queue of the sync operations, made on first use.
    OperationQueue& syncQueue();

    /// Syncs the calendars, then the events of every added or edited calendar; the sync delegate is
    /// told step by step. A listing that fails ends the sync without a word and blocks the client's
    /// later syncs: make a new client then.
    void sync();
    /// The calendar half of `sync`. A listing that fails ends it without a word too and keeps this
    /// client alive for ever, but blocks no later sync.
    void syncCalendars();
    /// Syncs one calendar's events by their entity tags. A listing that fails, or that names no
    /// event, tells the sync delegate nothing.
    void syncEvents(std::shared_ptr<MRVCalendar> ofCalendar);

    /// The calendars, or why there are none.
    using CalendarsCompletion = std::function<void(
        std::optional<std::vector<std::shared_ptr<MRVCalendar>>>, std::optional<Error>)>;
    /// Lists the calendars under the account's calendar home, which must be known. The list is
    /// absent when the answer is no listing, whatever its status. Never called after a transport
    /// error.
    void getCalendars(CalendarsCompletion completion);

    /// Makes a calendar (MKCALENDAR, RFC 4791, 5.3.1) with the name, description, order, colour,
    /// components and time zone of `calendar`: at its `href`, or under a new name in the calendar
    /// home when that is empty. Always called once: without an error when the server answers 201.
    void create(std::shared_ptr<MRVCalendar> calendar, Completion completionHandler);

    /// The outcome of each property by its key; `other` for one that this library does not know.
    using PropertyResults = std::map<std::string, MRVStatusCode>;
    /// Absent when nothing is known of the outcome.
    using PropertyCompletion = std::function<void(std::optional<PropertyResults>)>;
    /// Changes properties of a calendar (PROPPATCH, RFC 4918, 9.2) by the keys
    /// `MRVCalendar::propertyColor` and `propertyOrder`. Always called once; the result is absent
    /// when the exchange fails or the answer is no multistatus.
    void update(std::shared_ptr<MRVCalendar> calendar,
        std::map<std::string, std::string> properties, PropertyCompletion completionHandler);

    /// Deletes a calendar with all it holds. `completionHandler` is called, without an error, when
    /// the server answers 204, and never otherwise.
    void deleteCalendar(const std::shared_ptr<MRVCalendar>& calendar, Completion completionHandler);

    /// Invites the users whose `status` is `noResponse`, with their `access`, and removes those
    /// whose `status` is `deleted`. `completion` is called, without an error, when the server
    /// answers 200, and never otherwise.
    void share(std::shared_ptr<MRVCalendar> calendar,
        std::vector<std::shared_ptr<MRVSharee>> withUsers, Completion completion);
    /// Removes EVERY current sharee of the calendar, as its `sharees` lists them, whatever
    /// `withUsers` says. A calendar without that list is left alone and `completion` never called.
    void unshare(const std::shared_ptr<MRVCalendar>& calendar,
        const std::vector<std::shared_ptr<MRVSharee>>& withUsers, Completion completion);

    /// The new notifications, and the first error.
    using NotificationsCompletion = std::function<void(
        std::optional<std::vector<std::shared_ptr<MRVNotification>>>, std::optional<Error>)>;
    /// Fetches the sharing notifications that the data source does not hold yet, and tells the sync
    /// delegate which held ones are gone. `completion` is called once, with the new ones and the
    /// first error that kept one from arriving; never when the collection is empty, cannot be
    /// listed or is not known (`MRVAccount::notificationURL`), and then the sync delegate is told
    /// nothing either.
    void getNotifications(NotificationsCompletion completion);

    /// The shared calendar's href, or an error.
    using AcceptCompletion = std::function<void(std::optional<std::string>, std::optional<Error>)>;
    /// Accepts an invitation. Always called once: with the href of the shared calendar in the
    /// user's own home (with neither when the server accepts without naming one), or with an error.
    /// The calendar home must be known. A status without an `MRVStatusCode` case (such as 400 or
    /// 500) stops the process.
    void acceptInvitation(
        std::shared_ptr<MRVNotification> notification, AcceptCompletion completion);
    /// Declines an invitation. As above; success is 200, 201 or 204.
    void declineInvitation(std::shared_ptr<MRVNotification> notification, Completion completion);
    /// Deletes the resource at the notification's `href`, which must be its path: see
    /// `MRVNotification`. Reports as `deleteCalendar` does.
    void deleteNotification(
        const std::shared_ptr<MRVNotification>& notification, Completion completion);

    /// The events; the error is always absent.
    using EventsCompletion = std::function<void(
        std::optional<std::vector<std::shared_ptr<MRVEvent>>>, std::optional<Error>)>;
    /// Fetches one event resource. With a `completion` it gets the events, absent when the answer
    /// holds none; without one the sync delegate is told of a new or an edited event. Events reach
    /// neither when the client has no sync delegate, and nobody is told of a transport error.
    void getEvent(std::string withHref, std::shared_ptr<MRVCalendar> calendar, bool isNewEvent,
        EventsCompletion completion);
    /// The same by the event that is held.
    void getEvent(
        const std::shared_ptr<MRVEvent>& event, bool isNewEvent, EventsCompletion completion);

    // The calls that write an event. A status without an `MRVStatusCode` case (such as 409, 412 or
    // 500) stops the process, except for `deleteEvent`. Nothing that is held of the event changes,
    // but `create` gives it a new `uid`: its new place and entity tag come with the next sync. An
    // event without iCalendar text (see `MRVEvent::iCalendarString`) is neither created nor
    // updated, and the completion never called.

    /// The new uid, or an error.
    using CreateCompletion = std::function<void(std::optional<std::string>, std::optional<Error>)>;
    /// Creates the event in its calendar under a new `uid`, which replaces the one it has.
    /// `completion` gets that uid when the server answers 201, an error after a transport error,
    /// and is never called for other answers.
    void create(std::shared_ptr<MRVEvent> event, CreateCompletion completion);
    /// Writes the event over its resource unless that has changed since (`eTag`). `completion` gets
    /// an error after a transport error only: a refusal (401, 403, 404) looks like success.
    void update(std::shared_ptr<MRVEvent> event, Completion completion);
    /// Moves the event's resource into another calendar. Reports as `update` does.
    void move(std::shared_ptr<MRVEvent> event, std::shared_ptr<MRVCalendar> toCalendar,
        Completion completion);
    /// Deletes the event's resource, also when it has changed since. Reports as `deleteCalendar`.
    void deleteEvent(const std::shared_ptr<MRVEvent>& event, Completion completion);

private:
    const std::shared_ptr<MRVAccount> account_;
    const std::weak_ptr<MRVAuthDelegate> authDelegate_;
    std::weak_ptr<MRVSyncDelegate> syncDelegate_;
    std::weak_ptr<MRVDataSource> dataSource_;
    std::once_flag syncQueueMade_;
    std::unique_ptr<OperationQueue> syncQueue_;
};

} // namespace Tessel
