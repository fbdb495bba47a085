#pragma once

#include "Tessel/Platform/Foundation/Time/Date.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// Reads and writes dates by a pattern (Unicode TR 35). The calendar is Gregorian, Julian before
/// 15 October 1582. Patterns of the letters Y M d H k m s, all digits, quoted text and literals are
/// read and written here, with ASCII digits in every locale.
///
/// Writing: `YYYY` is the week-based year of the locale's week rules, `kk` the hour 1-24 (midnight
/// is 24). A field is filled with zeros to its number of letters. Reading: strict and over the
/// whole text; the year written is the year, hour 24 is hour 0 of the written day, and a number out
/// of its range (month 13, 30 February, second 60) does not match. A field of one letter takes the
/// digits that are there, any other exactly its number of letters.
///
/// A pattern with any other field (other letters, month names, two-digit years) writes nothing; ICU
/// reads it by the default locale, strictly and over the whole text too, the year of `Y` without a
/// week as the year written, a zone in the text instead of `timeZone`.
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
