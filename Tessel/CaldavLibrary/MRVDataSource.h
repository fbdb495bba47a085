#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/Platform/Foundation/Base/Export.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

class MRVClient;

/// Says what the host holds; the library keeps no store of its own. The host implements it. Queries
/// arrive on worker threads and on the transport's callback thread.
class TESSEL_EXPORT MRVDataSource {
public:
    virtual ~MRVDataSource();

    /// The calendars that the host holds for the client; absent counts as none.
    virtual std::optional<std::vector<std::shared_ptr<MRVCalendar>>> calendars(
        const std::shared_ptr<MRVClient>& client)
        = 0;
    /// The events that the host holds for the calendar; sync reads their `href` and `eTag`.
    virtual std::optional<std::vector<std::shared_ptr<MRVEvent>>> events(
        const std::shared_ptr<MRVCalendar>& calendar)
        = 0;
    /// The notifications that the host holds for the client, each with the path of its resource as
    /// `href` (see `MRVNotification`); absent counts as none.
    virtual std::optional<std::vector<std::shared_ptr<MRVNotification>>> notifications(
        const std::shared_ptr<MRVClient>& client)
        = 0;
};

} // namespace Tessel
