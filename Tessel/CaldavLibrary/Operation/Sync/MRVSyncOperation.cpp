#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncOperation.h"

#include "Tessel/CaldavLibrary/Operation/Sync/MRVEventsSyncCompleteOperation.h"
#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncCalendarOperation.h"
#include "Tessel/CaldavLibrary/Operation/Sync/MRVSyncEventsOperation.h"

namespace Tessel {

namespace {

using Calendars = std::optional<MRVSyncCalendarOperation::Calendars>;

void queueEventSyncs(const Calendars& calendars, const std::shared_ptr<MRVClient>& client)
{
    if (!calendars) return;
    for (const auto& calendar : *calendars) {
        const auto operation = std::make_shared<MRVSyncEventsOperation>();
        operation->client = client;
        operation->calendar = calendar;
        client->syncQueue().addOperation(operation);
    }
}

void queueClosingStep(const std::shared_ptr<MRVClient>& client)
{
    const auto operation = std::make_shared<MRVEventsSyncCompleteOperation>();
    operation->client = client;
    client->syncQueue().addOperation(operation);
}

} // namespace

void MRVSyncOperation::main()
{
    if (!client) {
        setDone(true);
        return;
    }
    const auto calendarSync = MRVSyncCalendarOperation::make(client, nullptr,
        [weak = weakly(this)](
            const auto&, const std::shared_ptr<MRVSyncCalendarOperation>& synced) {
            const auto self = weak.lock();
            if (!self) return;
            if (synced) {
                queueEventSyncs(synced->addedCalendars, self->client);
                queueEventSyncs(synced->editedCalendars, self->client);
            }
            queueClosingStep(self->client);
            self->setDone(true);
        });
    client->syncQueue().addOperation(calendarSync);
}

} // namespace Tessel
