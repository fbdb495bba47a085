#pragma once

#include "Tessel/CaldavLibrary/Models/MRVEvent.h"

#include <memory>
#include <string>

namespace Tessel::Test {

/// An iCalendar text of one event, as another program writes it.
std::string eventText(const std::string& uid, const std::string& summary);

/// An hour in Berlin, in the calendar.
std::shared_ptr<MRVEvent> newEvent(
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& summary);
/// A flight from one time zone to another with everything that an event can have, an alarm
/// included, that many seconds from its start.
std::shared_ptr<MRVEvent> newFlight(
    const std::shared_ptr<MRVCalendar>& calendar, double alarmOffset);
/// Two whole days.
std::shared_ptr<MRVEvent> newHoliday(const std::shared_ptr<MRVCalendar>& calendar);
/// The same event with another summary.
std::shared_ptr<MRVEvent> renamed(const MRVEvent& event, const std::string& summary);

/// Expects that the server's copy says what was written.
void expectSame(const MRVEvent& there, const MRVEvent& written);

} // namespace Tessel::Test
