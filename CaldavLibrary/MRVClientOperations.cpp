#include "CaldavLibrary/MRVClient.h"
#include "CaldavLibrary/Operation/Calendar/MRVCreateCalendarOperation.h"
#include "CaldavLibrary/Operation/Calendar/MRVGetCalendarsOperation.h"
#include "CaldavLibrary/Operation/Calendar/MRVUpdatePropertyOperation.h"
#include "CaldavLibrary/Operation/Event/MRVGetEventsOperation.h"
#include "CaldavLibrary/Operation/Sync/MRVSyncCalendarOperation.h"
#include "CaldavLibrary/Operation/Sync/MRVSyncEventsOperation.h"
#include "CaldavLibrary/Operation/Sync/MRVSyncOperation.h"

namespace Tessel {

namespace {

/// Gives the operation its client and a queue of its own, which lives as long as the operation
/// runs.
void run(const std::shared_ptr<MRVOperation>& operation, std::shared_ptr<MRVClient> client)
{
    operation->client = std::move(client);
    OperationQueue().addOperation(operation);
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

} // namespace Tessel
