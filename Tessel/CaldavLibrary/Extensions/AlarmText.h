#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAlarm.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/icalendar/CGICalendarComponent.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/// Alarms as they stand in the text of an event (RFC 5545, 3.6.6).
namespace Tessel::AlarmText {

/// One alarm for each VALARM of the component, possibly none. An action that is none of the three
/// keeps the one before it, "display" at first.
std::vector<std::shared_ptr<MRVAlarm>> alarms(const CGICalendarComponent& vevent);

/// An iCalendar duration (RFC 5545, 3.3.6) in seconds: -900 for "-PT15M". Any unit but W, D, H and
/// M counts as seconds, and 2^63 seconds or more count as the most below that. A number that is
/// none, or one without a unit, stops the process.
double duration(std::string_view text);

/// The VALARM of an alarm: a fixed time in `zone`, that of the event's start, without naming it; an
/// offset as a duration in which every part keeps its own sign and all but weeks are written:
/// "-P0DT0H-15M0S", "-P-1W". TRIGGER has no value when the alarm has neither. An offset that is no
/// whole number of seconds stops the process.
std::shared_ptr<CGICalendarComponent> VALARM(
    const MRVAlarm& alarm, const std::optional<TimeZone>& zone);

} // namespace Tessel::AlarmText
