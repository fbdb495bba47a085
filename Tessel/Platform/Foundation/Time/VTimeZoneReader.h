#pragma once

#include "Tessel/Platform/Foundation/Time/ZoneRules.h"

#include <optional>
#include <string_view>

namespace Tessel {

/// The rules of a VTIMEZONE (RFC 5545, 3.6.5), read from every STANDARD and DAYLIGHT in `text`.
/// Before the first of their changes its TZOFFSETFROM holds. None when one of them lacks or
/// misspells something, or when there are none or more than any real zone has.
///
/// Recurrences are yearly ones by BYMONTH, BYMONTHDAY and BYDAY, with INTERVAL and UNTIL, and with
/// COUNT where they fall once a year; their other parts mean nothing. A recurrence begins at
/// DTSTART, which is a change of its own only where no recurrence is.
std::optional<ZoneRules> readVTimeZone(std::string_view text);

} // namespace Tessel
