#pragma once

#include <cstdint>

namespace Tessel {

/// The first day of a week, and how many days of a new year its first week must hold.
struct WeekRule {
    int firstDayOfWeek; ///< 1 is Sunday, 7 Saturday
    int minimalDaysInFirstWeek;
};

/// A day of the calendar in general use: Julian up to 4 October 1582, Gregorian from the day after,
/// which is the 15th. The year 0 is 1 BC.
struct CivilDate {
    std::int64_t year;
    int month; ///< from 1
    int day; ///< from 1

    static CivilDate fromDaysSince1970(std::int64_t days);

    /// The day's number, 0 for 1970-01-01. A day that does not exist gets the number of some other
    /// day: compare with `fromDaysSince1970` to find out.
    std::int64_t daysSince1970() const;

    friend bool operator==(const CivilDate&, const CivilDate&) = default;
};

/// The year that the week of a day belongs to. It differs from the day's own year for some days
/// around New Year.
std::int64_t weekBasedYear(std::int64_t daysSince1970, const WeekRule& rule);

} // namespace Tessel
