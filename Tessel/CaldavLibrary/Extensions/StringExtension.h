#pragma once

#include "Tessel/Platform/Foundation/Time/Date.h"

#include <optional>
#include <string_view>

namespace Tessel {

/// The date that `text` gives in UTC by any pattern of Unicode TR 35, read as `DateFormatter` does:
/// strictly and to the end, names by ICU's default locale. None when it does not match.
std::optional<Date> date(std::string_view text, std::string_view inFormat);

/// The date of an iCalendar DATE (exactly 8 characters) or DATE-TIME value; none for other text.
/// Local times are read as if they were UTC: where the zone is known use `iCalDateTime`.
std::optional<Date> iCalDate(std::string_view text);

} // namespace Tessel
