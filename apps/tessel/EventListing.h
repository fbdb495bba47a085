#pragma once

#include "Host.h"
#include "StoreDelegate.h"

#include <memory>
#include <vector>

namespace Tessel::App {

/// The events of a calendar as they are on the server now; the store is neither asked nor changed.
StoreDelegate::Events remoteEvents(Host& host, const std::shared_ptr<MRVCalendar>& calendar);

/// One event as it is on the server now. Throws unless the resource holds exactly one.
std::shared_ptr<MRVEvent> remoteEvent(
    Host& host, const std::shared_ptr<MRVCalendar>& calendar, const std::string& href);

} // namespace Tessel::App
