#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Models/MRVEventDescriptor.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Fetches event resources of one calendar with one calendar-multiget REPORT (RFC 4791, 7.9). Paths
/// are sent exactly as held, without escaping. With an empty list it finishes at once, without a
/// request; without a list it does nothing and never finishes.
class MRVGetEventsOperation final : public MRVOperation {
public:
    using Events = std::vector<std::shared_ptr<MRVEvent>>;

    std::optional<std::vector<std::shared_ptr<MRVEventDescriptor>>> events;
    std::shared_ptr<MRVCalendar> calendar;
    bool hasNewEvents = false; ///< whether the delegate is told of new or of edited events
    /// When set, gets the events instead of the sync delegate; an absent list when the answer holds
    /// none. Never called after a transport error, and not with events while the client has no sync
    /// delegate.
    std::function<void(std::optional<Events>, std::optional<Error>)> completion;

    void main() override;

private:
    std::string body() const;
    void read(const Data& data);
    void process(const Events& fetched, const std::optional<Error>& error);
    using MRVOperation::process;
};

} // namespace Tessel
