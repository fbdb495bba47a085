#pragma once

#include <Tessel/Tessel.h>

#include <string>
#include <vector>

namespace Tessel::App {

/// What of an iCalendar text is not written again when the event that was read from it is: names
/// such as "LOCATION", "VALARM ACTION" or "ATTENDEE (parameters or value)". The library writes a
/// fixed list of properties; all others, and some values, do not survive.
std::vector<std::string> whatIsLost(const std::string& original, const MRVEvent& event);

/// The properties that would read differently once the event is written: the writer's year is the
/// week's, not the day's, and it drops the end of some long lines. Alarms before the event and at a
/// fixed time are among them, since their form is not that of RFC 5545: some servers refuse it.
std::vector<std::string> whatIsDamaged(const MRVEvent& event);

} // namespace Tessel::App
