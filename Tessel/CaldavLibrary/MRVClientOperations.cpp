#include "Tessel/CaldavLibrary/Extensions/Mailto.h"
#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/CaldavLibrary/Operation/Calendar/MRVCreateCalendarOperation.h"
#include "Tessel/CaldavLibrary/Operation/Calendar/MRVDeleteOperation.h"
#include "Tessel/CaldavLibrary/Operation/Calendar/MRVGetCalendarsOperation.h"
#include "Tessel/CaldavLibrary/Operation/Calendar/MRVShareCalendarOperation.h"
#include "Tessel/CaldavLibrary/Operation/Calendar/MRVUpdatePropertyOperation.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVCreateEventOperation.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVGetEventsOperation.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVMoveEventOperation.h"
#include "Tessel/CaldavLibrary/Operation/Event/MRVUpdateEventOperation.h"
#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsOperation.h"
#include "Tessel/CaldavLibrary/Operation/Notification/MRVInvitationReplyOperation.h"
#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncCalendarOperation.h"
#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncEventsOperation.h"
#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncOperation.h"

namespace Tessel {

namespace {

/// Gives the operation its client and a queue of its own, which lives as long as the operation
/// runs.
void run(const std::shared_ptr<MRVOperation>& operation, std::shared_ptr<MRVClient> client)
{
    operation->client = std::move(client);
    OperationQueue().addOperation(operation);
}

void deleteResource(
    std::string href, MRVClient::Completion completionHandler, std::shared_ptr<MRVClient> client)
{
    const auto operation = std::make_shared<MRVDeleteOperation>();
    operation->url = std::move(href);
    operation->completionHandler = std::move(completionHandler);
    run(operation, std::move(client));
}

std::shared_ptr<MRVSharee> removalOf(const MRVSharee& sharee)
{
    return std::make_shared<MRVSharee>(MRVSharee {.email = withoutMailto(sharee.email),
        .access = sharee.access,
        .status = MRVInviteStatus::deleted});
}

std::vector<std::shared_ptr<MRVEventDescriptor>> descriptor(std::string eTag, std::string href)
{
    return {std::make_shared<MRVEventDescriptor>(
        MRVEventDescriptor {.eTag = std::move(eTag), .href = std::move(href)})};
}

} // namespace

void MRVClient::sync()
{
    run(std::make_shared<MRVSyncOperation>(), shared_from_this());
}

void MRVClient::syncCalendars()
{
    run(MRVSyncCalendarOperation::make(
            shared_from_this(), nullptr, [](const auto&, const auto&) {}),
        shared_from_this());
}

void MRVClient::syncEvents(std::shared_ptr<MRVCalendar> ofCalendar)
{
    const auto operation = std::make_shared<MRVSyncEventsOperation>();
    operation->calendar = std::move(ofCalendar);
    run(operation, shared_from_this());
}

void MRVClient::getCalendars(CalendarsCompletion completion)
{
    run(std::make_shared<MRVGetCalendarsOperation>(
            shared_from_this(), nullptr, std::move(completion)),
        shared_from_this());
}

void MRVClient::create(std::shared_ptr<MRVCalendar> calendar, Completion completionHandler)
{
    const auto operation = std::make_shared<MRVCreateCalendarOperation>();
    operation->calendar = std::move(calendar);
    operation->completionHandler = std::move(completionHandler);
    run(operation, shared_from_this());
}

void MRVClient::update(std::shared_ptr<MRVCalendar> calendar,
    std::map<std::string, std::string> properties, PropertyCompletion completionHandler)
{
    const auto operation = std::make_shared<MRVUpdatePropertyOperation>();
    operation->url = calendar->href;
    operation->properties = std::move(properties);
    operation->completionHandler = std::move(completionHandler);
    run(operation, shared_from_this());
}

void MRVClient::deleteCalendar(
    const std::shared_ptr<MRVCalendar>& calendar, Completion completionHandler)
{
    deleteResource(calendar->href, std::move(completionHandler), shared_from_this());
}

void MRVClient::share(std::shared_ptr<MRVCalendar> calendar,
    std::vector<std::shared_ptr<MRVSharee>> withUsers, Completion completion)
{
    const auto operation = std::make_shared<MRVShareCalendarOperation>();
    operation->calendar = std::move(calendar);
    operation->users = std::move(withUsers);
    operation->completion = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::unshare(const std::shared_ptr<MRVCalendar>& calendar,
    const std::vector<std::shared_ptr<MRVSharee>>&, Completion completion)
{
    if (!calendar->sharees) return;
    std::vector<std::shared_ptr<MRVSharee>> removals;
    for (const auto& sharee : *calendar->sharees)
        removals.push_back(removalOf(*sharee));
    share(calendar, std::move(removals), std::move(completion));
}

void MRVClient::getNotifications(NotificationsCompletion completion)
{
    run(MRVGetNotificationsOperation::make(shared_from_this(), nullptr, std::move(completion)),
        shared_from_this());
}

void MRVClient::acceptInvitation(
    std::shared_ptr<MRVNotification> notification, AcceptCompletion completion)
{
    const auto operation = std::make_shared<MRVInvitationReplyOperation>();
    operation->notification = std::move(notification);
    operation->acceptHandler = std::move(completion);
    operation->accept = true;
    run(operation, shared_from_this());
}

void MRVClient::declineInvitation(
    std::shared_ptr<MRVNotification> notification, Completion completion)
{
    const auto operation = std::make_shared<MRVInvitationReplyOperation>();
    operation->notification = std::move(notification);
    operation->declineHandler = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::deleteNotification(
    const std::shared_ptr<MRVNotification>& notification, Completion completion)
{
    deleteResource(notification->href, std::move(completion), shared_from_this());
}

void MRVClient::getEvent(std::string withHref, std::shared_ptr<MRVCalendar> calendar,
    bool isNewEvent, EventsCompletion completion)
{
    const auto operation = std::make_shared<MRVGetEventsOperation>();
    operation->events = descriptor("", std::move(withHref));
    operation->calendar = std::move(calendar);
    operation->hasNewEvents = isNewEvent;
    operation->completion = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::getEvent(
    const std::shared_ptr<MRVEvent>& event, bool isNewEvent, EventsCompletion completion)
{
    const auto operation = std::make_shared<MRVGetEventsOperation>();
    operation->events = descriptor(event->eTag, event->href);
    operation->calendar = event->calendar;
    operation->hasNewEvents = isNewEvent;
    operation->completion = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::create(std::shared_ptr<MRVEvent> event, CreateCompletion completion)
{
    const auto operation = std::make_shared<MRVCreateEventOperation>();
    operation->event = std::move(event);
    operation->completionHandler = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::update(std::shared_ptr<MRVEvent> event, Completion completion)
{
    const auto operation = std::make_shared<MRVUpdateEventOperation>();
    operation->event = std::move(event);
    operation->completionHandler = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::move(
    std::shared_ptr<MRVEvent> event, std::shared_ptr<MRVCalendar> toCalendar, Completion completion)
{
    const auto operation = std::make_shared<MRVMoveEventOperation>();
    operation->event = std::move(event);
    operation->destinationCalendar = std::move(toCalendar);
    operation->completionHandler = std::move(completion);
    run(operation, shared_from_this());
}

void MRVClient::deleteEvent(const std::shared_ptr<MRVEvent>& event, Completion completion)
{
    deleteResource(event->href, std::move(completion), shared_from_this());
}

} // namespace Tessel
