#pragma once

#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <optional>
#include <string_view>

namespace Tessel {

/// Reads `text` by any pattern of Unicode TR 35, with ICU's formatter for the default locale:
/// strictly and to its end, in the Gregorian calendar. `Y` without a week is the year written, and
/// what the pattern leaves out is that of 1970-01-01T00:00. A zone in the text wins over
/// `timeZone`. None when the text does not match, the pattern is none, or one of them is longer
/// than any date.
std::optional<Date> readByPattern(
    std::string_view text, std::string_view pattern, const TimeZone& timeZone);

} // namespace Tessel
