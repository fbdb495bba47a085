#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/TimeZone.h"

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// Reads and writes dates by a pattern of the letters Y M d H k m s, quoted text and literals
/// (Unicode TR 35). Digits are ASCII and the calendar is Gregorian in every locale.
///
/// Writing: `YYYY` is the week-based year of the locale's week rules and `kk` the hour 1-24.
/// Reading: strict and over the whole text; the year written is the year, hour 24 is hour 0 of the
/// written day, and a number out of its range (month 13, 30 February) does not match.
class TESSEL_EXPORT DateFormatter {
public:
    enum class WeekRules { currentLocale, systemLocale };

    std::string dateFormat; ///< the pattern
    TimeZone timeZone = TimeZone::local();
    WeekRules weekRules = WeekRules::currentLocale; ///< only `Y` depends on it

    std::string string(const Date& date) const;
    std::optional<Date> date(std::string_view text) const;
};

} // namespace Tessel
