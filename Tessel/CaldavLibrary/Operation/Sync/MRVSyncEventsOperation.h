#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEventDescriptor.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

/// Brings one calendar's events up to date by entity tags: lists the event resources (RFC
/// 4791, 7.8), compares them with what the host holds, and fetches the changed and the new ones,
/// all of each kind in one request. Events are matched by `href` and compared by `eTag`, both as
/// exact texts.
///
/// The sync delegate's `eventsDeleted` gets the held events that ARE on the server, when there are
/// any; a held event that is gone is reported to nobody. A listing that fails or names no event, so
/// also that of an emptied calendar, tells the delegate nothing, not even that the sync finished.
class MRVSyncEventsOperation final : public MRVOperation {
public:
    std::shared_ptr<MRVCalendar> calendar;

    void main() override;

private:
    using Descriptors = std::vector<std::shared_ptr<MRVEventDescriptor>>;
    using Events = std::vector<std::shared_ptr<MRVEvent>>;

    void processInfo(const std::optional<Descriptors>& listed);
    Events heldEvents() const;
    void tellDeleted(const Events& events) const;
    void fetch(Descriptors changed, Descriptors added) const;
};

} // namespace Tessel
