#pragma once

#include "Tessel/Platform/Foundation/Base/CallSite.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

// Dates as the values of iCalendar properties (RFC 5545, 3.3.4 and 3.3.5). All may be called from
// any thread.

/// The date and time in `timeZone`, "20240102T100000"; without a zone in UTC, "20240102T090000Z".
/// Midnight is written with the hour 24, and the year is the week-based year of ICU's default
/// locale: it is another than the day's for some days around New Year.
TESSEL_EXPORT std::string descriptionICalDateTimeFormat(
    const Date& date, const std::optional<TimeZone>& timeZone = std::nullopt);

/// The day in `timeZone`, without one in UTC, "20240102". The year is the week-based one, as above.
TESSEL_EXPORT std::string descriptionICalDateFormat(
    const Date& date, const std::optional<TimeZone>& timeZone = std::nullopt);

/// The date of a DATE or DATE-TIME value. Digits alone are a day; a day and a time may end in "Z".
/// Either is read in `timeZone`, a value that ends in "Z" too: the zone wins; without a zone it is
/// read in UTC. Text that is not such a value STOPS THE PROCESS: test doubtful text with
/// `iCalDateTimeIfReadable`.
TESSEL_EXPORT Date iCalDateTime(std::string_view string,
    const std::optional<TimeZone>& timeZone = std::nullopt,
    const CallSite& site = CallSite::current());

/// As `iCalDateTime`, but none for text that is not such a value.
TESSEL_EXPORT std::optional<Date> iCalDateTimeIfReadable(
    std::string_view string, const std::optional<TimeZone>& timeZone = std::nullopt);

} // namespace Tessel
