#pragma once

#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// Reads and writes dates by a pattern of the letters Y M d H k m s, quoted text and literals
/// (Unicode TR 35). Digits are ASCII in every locale; the calendar is Gregorian, Julian before
/// 15 October 1582.
///
/// Writing: `YYYY` is the week-based year of the locale's week rules, `kk` the hour 1-24 (midnight
/// is 24). A field is filled with zeros to its number of letters. Reading: strict and over the
/// whole text; the year written is the year, hour 24 is hour 0 of the written day, and a number out
/// of its range (month 13, 30 February, second 60) does not match. A field of one letter takes the
/// digits that are there, any other exactly its number of letters. A pattern with any other field
/// (other letters, month names, two-digit years) writes nothing and matches nothing.
///
/// A formatter keeps nothing between calls and may be used from any thread. The static members do
/// the same without one, for callers that convert many values.
class DateFormatter {
public:
    enum class WeekRules {
        currentLocale, ///< ICU's default locale at the time of writing
        systemLocale, ///< the root locale: weeks begin on Monday, 1 January is in the first
    };

    std::string dateFormat; ///< the pattern
    TimeZone timeZone = TimeZone::local();
    WeekRules weekRules = WeekRules::currentLocale; ///< only `Y` depends on it

    std::string string(const Date& date) const;
    std::optional<Date> date(std::string_view text) const;

    static std::string string(const Date& date, std::string_view dateFormat,
        const TimeZone& timeZone, WeekRules weekRules = WeekRules::currentLocale);
    static std::optional<Date> date(
        std::string_view text, std::string_view dateFormat, const TimeZone& timeZone);
};

} // namespace Tessel
