#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAlarmAction.h"
#include "Tessel/Platform/Foundation/Time/Date.h"

#include <optional>
#include <string>

namespace Tessel {

/// A reminder of an event (RFC 5545, 3.6.6). One of the two triggers is expected to be present.
struct MRVAlarm {
    std::string desc; ///< what it shows, as written
    std::optional<Date> absoluteTriggerTime = {}; ///< a fixed moment
    std::optional<double> relativeTriggerTime = {}; ///< seconds from the event, negative before it
    MRVAlarmAction action = MRVAlarmAction::display; ///< how it makes itself known
};

} // namespace Tessel
