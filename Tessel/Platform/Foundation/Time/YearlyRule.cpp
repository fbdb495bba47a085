#include "Tessel/Platform/Foundation/Time/YearlyRule.h"

#include "Tessel/Platform/Foundation/Time/CivilDate.h"

#include <algorithm>
#include <bit>

namespace Tessel {

namespace {

constexpr std::int64_t secondsPerDay = 86'400;
/// Enough for every leap day, and little for a day that never comes.
constexpr int mostTries = 12;

std::int64_t floorDivide(std::int64_t a, std::int64_t b)
{
    return a / b - (a % b < 0);
}

std::int64_t firstOfMonth(std::int64_t year, int month)
{
    return CivilDate {year, month, 1}.daysSince1970();
}

std::uint32_t upTo(int bit)
{
    return (2u << bit) - 1;
}

std::uint32_t from(int bit)
{
    return ~0u << bit;
}

/// The days of a month of `length` days, the first of which is a `firstWeekday`.
std::uint32_t daysOn(YearlyRule::Weekday weekday, int firstWeekday, int length)
{
    const int earliest = 1 + (weekday.day - firstWeekday + 7) % 7;
    const int count = (length - earliest) / 7 + 1;
    if (weekday.ordinal != 0) {
        const int index = weekday.ordinal > 0 ? weekday.ordinal - 1 : count + weekday.ordinal;
        return index < 0 || index >= count ? 0 : 1u << (earliest + 7 * index);
    }
    std::uint32_t days = 0;
    for (int day = earliest; day <= length; day += 7)
        days |= 1u << day;
    return days;
}

} // namespace

std::optional<std::int64_t> YearlyRule::latestOnset(std::int64_t notAfter) const
{
    notAfter = std::min(notAfter, last);
    if (notAfter < first) return std::nullopt;
    const auto day = latestDay(floorDivide(notAfter - time, secondsPerDay));
    if (!day || *day * secondsPerDay + time < first) return std::nullopt;
    return *day * secondsPerDay + time;
}

std::optional<std::int64_t> YearlyRule::earliestOnset(std::int64_t notBefore) const
{
    notBefore = std::max(notBefore, first);
    if (notBefore > last) return std::nullopt;
    const auto day = earliestDay(floorDivide(notBefore - time + secondsPerDay - 1, secondsPerDay));
    if (!day || *day * secondsPerDay + time > last) return std::nullopt;
    return *day * secondsPerDay + time;
}

std::optional<std::int64_t> YearlyRule::latestDay(std::int64_t notAfter) const
{
    const auto date = CivilDate::fromDaysSince1970(notAfter);
    auto year = date.year - yearsBeyondInterval(date.year);
    for (int tries = 0; tries < mostTries; ++tries, year -= interval) {
        auto left = year == date.year ? months & upTo(date.month) : months;
        while (left != 0) {
            const int month = std::bit_width(left) - 1;
            left &= ~(1u << month);
            auto days = daysOfMonth(year, month);
            if (year == date.year && month == date.month) days &= upTo(date.day);
            if (days != 0) return firstOfMonth(year, month) + std::bit_width(days) - 2;
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> YearlyRule::earliestDay(std::int64_t notBefore) const
{
    const auto date = CivilDate::fromDaysSince1970(notBefore);
    const auto beyond = yearsBeyondInterval(date.year);
    auto year = beyond == 0 ? date.year : date.year - beyond + interval;
    for (int tries = 0; tries < mostTries; ++tries, year += interval) {
        auto left = year == date.year ? months & from(date.month) : months;
        while (left != 0) {
            const int month = std::countr_zero(left);
            left &= ~(1u << month);
            auto days = daysOfMonth(year, month);
            if (year == date.year && month == date.month) days &= from(date.day);
            if (days != 0) return firstOfMonth(year, month) + std::countr_zero(days) - 1;
        }
    }
    return std::nullopt;
}

std::int64_t YearlyRule::yearsBeyondInterval(std::int64_t year) const
{
    if (interval == 1) return 0;
    const auto start = CivilDate::fromDaysSince1970(floorDivide(first - time, secondsPerDay)).year;
    return ((year - start) % interval + interval) % interval;
}

/// The days that fit, bit 1 for the first.
std::uint32_t YearlyRule::daysOfMonth(std::int64_t year, int month) const
{
    const auto begin = firstOfMonth(year, month);
    const auto end = month == 12 ? firstOfMonth(year + 1, 1) : firstOfMonth(year, month + 1);
    const auto length = static_cast<int>(end - begin);

    if (yearDay) {
        const auto day = *yearDay - (begin - firstOfMonth(year, 1)) + 1;
        return day < 1 || day > length ? 0 : 1u << day;
    }
    auto days = upTo(length) & from(1);
    if (monthDays != 0 || monthDaysFromEnd != 0) {
        auto fitting = monthDays;
        for (int day = 1; monthDaysFromEnd != 0 && day <= length; ++day)
            fitting |= (monthDaysFromEnd >> (length + 1 - day) & 1) << day;
        days &= fitting;
    }
    if (!weekdays.empty()) {
        const auto firstWeekday = static_cast<int>(((begin + 4) % 7 + 7) % 7);
        std::uint32_t fitting = 0;
        for (const auto weekday : weekdays)
            fitting |= daysOn(weekday, firstWeekday, length);
        days &= fitting;
    }
    return days;
}

} // namespace Tessel
