#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/Date.h"

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

// The two text forms of dates in the iCalendar tree. Both are written with the week-based year and
// the hour 1-24: midnight is hour 24 of the day that begins, and around New Year the year can
// differ from the calendar year. 2024-12-30T00:30:00Z is written "20251230T243000Z".

/// The iCalendar form in UTC, "20240102T090000Z", under the current locale's week rules.
TESSEL_EXPORT std::string descriptionICalendar(const Date& date);

/// The ISO form in local time, "2024-01-02 09:00:00", under the system locale's week rules.
TESSEL_EXPORT std::string descriptionISO8601(const Date& date);

/// Reads the iCalendar form; none for anything else, such as a date without time or a local time
/// without "Z". The year written is the year and hour 24 is hour 0 of the written day.
TESSEL_EXPORT std::optional<Date> dateWithICalendarString(std::string_view text);

/// Reads the ISO form as local time; none for anything else.
TESSEL_EXPORT std::optional<Date> dateWithICalendarISO8601(std::string_view text);

} // namespace Tessel
