#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAlarm.h"
#include "Tessel/icalendar/CGICalendarComponent.h"

#include <memory>
#include <string_view>
#include <vector>

/// Reads the alarms of an event.
namespace Tessel::MRVAlarmReader {

/// One alarm for each VALARM of the component, possibly none. An action that is none of the three
/// keeps the one before it, "display" at first.
std::vector<std::shared_ptr<MRVAlarm>> alarms(const CGICalendarComponent& vevent);

/// An iCalendar duration (RFC 5545, 3.3.6) in seconds: -900 for "-PT15M". Any unit but W, D, H and
/// M counts as seconds. A number that is none, or one without a unit, stops the process.
double duration(std::string_view text);

} // namespace Tessel::MRVAlarmReader
