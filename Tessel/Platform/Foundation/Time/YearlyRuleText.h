#pragma once

#include "Tessel/Platform/Foundation/Time/YearlyRule.h"

#include <optional>
#include <string_view>

namespace Tessel {

/// The seconds since 1970 of a local "20240102T090000" as if it were UTC; none for other text.
std::optional<std::int64_t> readLocalTime(std::string_view text);

/// Gives `rule` the recurrence "FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU" (RFC 5545, 3.3.10) of a change of
/// clocks that begins at `rule.first`; its offsets are set. False when the text cannot be read,
/// asks for other years than can be told, or for more days than changes of clocks have.
bool readYearlyRule(std::string_view text, YearlyRule& rule);

} // namespace Tessel
