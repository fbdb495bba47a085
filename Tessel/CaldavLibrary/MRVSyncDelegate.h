#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

class MRVClient;

/// Told what a sync found. The host implements it. Calls arrive on worker threads and on the
/// transport's callback thread.
class TESSEL_EXPORT MRVSyncDelegate {
public:
    using Calendars = std::vector<std::shared_ptr<MRVCalendar>>; ///< as the server lists them
    using Events = std::vector<std::shared_ptr<MRVEvent>>; ///< as they were read
    using Notifications = std::vector<std::shared_ptr<MRVNotification>>; ///< as they were read

    virtual ~MRVSyncDelegate();

    /// Calendars that the host holds and the server no longer lists.
    virtual void calendarsDeleted(const Calendars& calendars) = 0;
    /// Calendars that the server lists and the host does not hold.
    virtual void calendarsAdded(const Calendars& calendars) = 0;
    /// Calendars whose `cTag` differs from the held one, as the server lists them now.
    virtual void calendarsEdited(const Calendars& calendars) = 0;
    virtual void calendarSyncFinished() = 0; ///< the calendars have been told; their events follow

    /// Events of a calendar that the host does not hold.
    virtual void eventsAdded(const Events& events, const std::shared_ptr<MRVCalendar>& calendar,
        const std::shared_ptr<MRVAccount>& account, const std::shared_ptr<MRVClient>& client)
        = 0;
    /// Events whose `eTag` differs from the held one, as the server has them now.
    virtual void eventsEdited(const Events& events, const std::shared_ptr<MRVCalendar>& calendar,
        const std::shared_ptr<MRVAccount>& account, const std::shared_ptr<MRVClient>& client)
        = 0;
    /// Carries the held events that ARE STILL on the server; what is gone is every held event that
    /// is not among them (see docs/behaviour.md). Comes before the additions and edits.
    virtual void eventsDeleted(const Events& events, const std::shared_ptr<MRVCalendar>& calendar,
        const std::shared_ptr<MRVAccount>& account, const std::shared_ptr<MRVClient>& client)
        = 0;
    /// A calendar's event sync has ended; `error` is always absent, also when a fetch failed.
    virtual void eventsSyncFinished(const std::optional<Error>& error,
        const std::shared_ptr<MRVCalendar>& calendar, const std::shared_ptr<MRVClient>& client)
        = 0;

    /// Notifications that the host holds and the server no longer lists. Not called when the server
    /// lists none at all.
    virtual void notificationsRemoved(
        const Notifications& notifications, const std::shared_ptr<MRVClient>& client)
        = 0;
};

} // namespace Tessel
