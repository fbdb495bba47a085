#include "Tessel/Platform/Foundation/Time/CivilDate.h"

namespace Tessel {

namespace {

constexpr std::int64_t firstGregorianDay = -141'427; // 1582-10-15
constexpr std::int64_t firstGregorianYear = 1582;

// Both calendars count days from 1 March of the year 0, so that a leap day ends its year.
constexpr std::int64_t gregorianEpoch = -719'468;
constexpr std::int64_t julianEpoch = -719'470;

constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b)
{
    return a / b - (a % b < 0);
}

constexpr std::int64_t gregorianDaysBefore(std::int64_t year)
{
    return 365 * year + floorDivide(year, 4) - floorDivide(year, 100) + floorDivide(year, 400);
}

constexpr std::int64_t julianDaysBefore(std::int64_t year)
{
    return 365 * year + floorDivide(year, 4);
}

struct MarchDate {
    std::int64_t year;
    std::int64_t dayOfYear;
};

MarchDate gregorianMarchDate(std::int64_t days)
{
    const auto sinceEpoch = days - gregorianEpoch;
    const auto era = floorDivide(sinceEpoch, 146'097);
    const auto dayOfEra = sinceEpoch - era * 146'097;
    const auto yearOfEra
        = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    return {yearOfEra + era * 400, dayOfEra - gregorianDaysBefore(yearOfEra)};
}

MarchDate julianMarchDate(std::int64_t days)
{
    const auto sinceEpoch = days - julianEpoch;
    const auto year = floorDivide(4 * sinceEpoch + 3, 1461);
    return {year, sinceEpoch - julianDaysBefore(year)};
}

bool isLeapYear(std::int64_t year)
{
    if (year % 4 != 0) return false;
    return year < firstGregorianYear || year % 100 != 0 || year % 400 == 0;
}

} // namespace

CivilDate CivilDate::fromDaysSince1970(std::int64_t days)
{
    const auto date = days >= firstGregorianDay ? gregorianMarchDate(days) : julianMarchDate(days);
    const auto monthFromMarch = (5 * date.dayOfYear + 2) / 153;
    const auto day = static_cast<int>(date.dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    const auto month
        = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    return {date.year + (month <= 2), month, day};
}

std::int64_t CivilDate::daysSince1970() const
{
    const auto marchYear = year - (month <= 2);
    const auto monthFromMarch = month > 2 ? month - 3 : month + 9;
    const auto dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const auto gregorian = gregorianDaysBefore(marchYear) + dayOfYear + gregorianEpoch;
    if (gregorian >= firstGregorianDay) return gregorian;
    return julianDaysBefore(marchYear) + dayOfYear + julianEpoch;
}

std::int64_t weekBasedYear(std::int64_t daysSince1970, const WeekRule& rule)
{
    const auto year = CivilDate::fromDaysSince1970(daysSince1970).year;
    // ICU, with which the result must agree, takes 1582 for a year of 365 days, ten of which never
    // came: day numbers go on from the Julian ones, the length stays.
    const auto dayOfYear = static_cast<int>(daysSince1970 - CivilDate {year, 1, 1}.daysSince1970());
    const int yearLength = isLeapYear(year) ? 366 : 365;

    const auto weekday = static_cast<int>(((daysSince1970 + 4) % 7 + 7) % 7); // 0 is Sunday
    const int dayOfWeek = (weekday + 8 - rule.firstDayOfWeek) % 7;
    const int firstDayOfWeekOfYear = ((dayOfWeek - dayOfYear) % 7 + 7) % 7;

    const bool firstWeekCounts = 7 - firstDayOfWeekOfYear >= rule.minimalDaysInFirstWeek;
    const int weeksBefore = (dayOfYear + firstDayOfWeekOfYear) / 7;
    if (weeksBefore == 0 && !firstWeekCounts) return year - 1;

    const int daysLeft = yearLength - 1 - dayOfYear;
    const int daysOfWeekInNextYear = 6 - dayOfWeek - daysLeft;
    if (daysOfWeekInNextYear >= rule.minimalDaysInFirstWeek) return year + 1;
    return year;
}

} // namespace Tessel
