#pragma once

#include "apps/tessel/Host.h"
#include "apps/tessel/StoreDelegate.h"

#include <memory>
#include <string>
#include <vector>

namespace Tessel::App {

/// The events of a calendar as they are on the server now; the store is neither asked nor changed.
StoreDelegate::Events remoteEvents(Host& host, const std::shared_ptr<MRVCalendar>& calendar);

/// One event as it is on the server now.
struct RemoteEvent {
    /// Without the changed instances that the resource of a series may also hold.
    std::shared_ptr<MRVEvent> event;
    std::string text; ///< of the whole resource
};
/// Throws unless the resource holds one event, or one series.
RemoteEvent remoteEvent(
    Host& host, const std::shared_ptr<MRVCalendar>& calendar, const std::string& href);

} // namespace Tessel::App
