#include "Tessel/Platform/Foundation/Time/YearlyRuleText.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Time/CivilDate.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdlib>

namespace Tessel {

namespace {

constexpr std::int64_t secondsPerDay = 86'400;

/// The piece before the next `separator`, taken off the front of `text`.
std::string_view takePiece(std::string_view& text, char separator)
{
    const auto piece = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(text.size(), piece.size() + 1));
    return piece;
}

std::optional<int> number(std::string_view text, int least, int most)
{
    if (text.starts_with('+')) text.remove_prefix(1);
    int value = 0;
    const auto* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || read != end || value < least || value > most) return std::nullopt;
    return value;
}

/// Digits only.
int digits(std::string_view text)
{
    int value = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') return -1;
        value = value * 10 + (digit - '0');
    }
    return value;
}

std::optional<std::int64_t> dayNumber(std::string_view text)
{
    if (text.size() != 8) return std::nullopt;
    const CivilDate date {
        digits(text.substr(0, 4)), digits(text.substr(4, 2)), digits(text.substr(6))};
    if (date.year < 0 || date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31)
        return std::nullopt;
    const auto day = date.daysSince1970();
    if (CivilDate::fromDaysSince1970(day) != date) return std::nullopt;
    return day;
}

/// Calls `read` for every element of a list; false when it cannot read one or there is none.
template <class Read> bool readList(std::string_view list, Read read)
{
    bool good = !list.empty();
    while (good && !list.empty())
        good = read(takePiece(list, ','));
    return good;
}

/// "SU", "2SU" or "-1SU".
bool readWeekday(std::string_view text, std::vector<YearlyRule::Weekday>& weekdays)
{
    constexpr std::string_view names = "SUMOTUWETHFRSA";
    constexpr std::size_t mostWeekdays = 7;
    if (text.size() < 2 || weekdays.size() == mostWeekdays) return false;
    const auto place = names.find(text.substr(text.size() - 2));
    if (place == names.npos || place % 2 != 0) return false;
    text.remove_suffix(2);
    const auto ordinal = text.empty() ? 0 : number(text, -5, 5);
    if (!ordinal || (!text.empty() && *ordinal == 0)) return false;
    weekdays.push_back({static_cast<int>(place / 2), *ordinal});
    return true;
}

bool readMonthDay(std::string_view text, YearlyRule& rule)
{
    const auto day = number(text, -31, 31);
    if (!day || *day == 0) return false;
    (*day > 0 ? rule.monthDays : rule.monthDaysFromEnd) |= 1u << std::abs(*day);
    return true;
}

/// A moment of UTC, or a local time or day, which then ends with it.
bool readUntil(std::string_view text, YearlyRule& rule)
{
    if (const auto day = dayNumber(text)) {
        rule.last = (*day + 1) * secondsPerDay - 1;
        return true;
    }
    const bool isUTC = text.ends_with('Z');
    if (isUTC) text.remove_suffix(1);
    const auto time = readLocalTime(text);
    if (time) rule.last = *time + (isUTC ? rule.offsetFrom : 0);
    return time.has_value();
}

/// The parts of a recurrence that do not go into the rule as they are read.
struct Rest {
    bool isYearly = false;
    int count = 0;
    int position = 0;
};

bool readPart(std::string_view name, std::string_view value, YearlyRule& rule, Rest& rest)
{
    const auto assign = [](int& field, std::optional<int> number) {
        if (number) field = *number;
        return number.has_value();
    };
    if (name == "FREQ") return rest.isYearly = value == "YEARLY";
    if (name == "UNTIL") return readUntil(value, rule);
    if (name == "COUNT") return assign(rest.count, number(value, 1, 9999));
    if (name == "INTERVAL") return assign(rule.interval, number(value, 1, 1000));
    if (name == "BYSETPOS") return assign(rest.position, number(value, -5, 5));
    if (name == "BYMONTH") {
        return readList(value, [&](std::string_view text) {
            const auto month = number(text, 1, 12);
            if (month) rule.months |= 1u << *month;
            return month.has_value();
        });
    }
    if (name == "BYMONTHDAY")
        return readList(value, [&](std::string_view text) { return readMonthDay(text, rule); });
    if (name == "BYDAY") {
        return readList(
            value, [&](std::string_view text) { return readWeekday(text, rule.weekdays); });
    }
    // By week or day of the year no clocks are changed.
    return !name.starts_with("BY");
}

/// What the recurrence leaves to its begin.
void addDefaults(YearlyRule& rule)
{
    const auto start = CivilDate::fromDaysSince1970((rule.first - rule.time) / secondsPerDay);
    if (rule.months == 0) rule.months = 1u << start.month;
    const bool isDayKnown
        = rule.monthDays != 0 || rule.monthDaysFromEnd != 0 || !rule.weekdays.empty();
    if (!isDayKnown) rule.monthDays = 1u << start.day;
}

/// "BYDAY=SU;BYSETPOS=-1" is "BYDAY=-1SU". A weekday alone is every one of the month, on which no
/// clocks are changed.
bool applyPosition(int position, YearlyRule& rule)
{
    const bool isEveryOne = rule.monthDays == 0 && rule.monthDaysFromEnd == 0
        && std::any_of(rule.weekdays.begin(), rule.weekdays.end(),
            [](const auto& weekday) { return weekday.ordinal == 0; });
    if (!isEveryOne) return position == 0;
    if (position == 0 || rule.weekdays.size() != 1) return false;
    rule.weekdays.front().ordinal = position;
    return true;
}

/// Whether there is one change in every year of the rule, whatever the year.
bool fallsOnceAYear(const YearlyRule& rule)
{
    constexpr std::uint32_t daysOfEveryMonth = (1u << 29) - 2;
    constexpr int weeksOfEveryMonth = 4;
    if (std::popcount(rule.months) != 1) return false;
    if (rule.weekdays.empty())
        return std::popcount(rule.monthDays) == 1 && (rule.monthDays & ~daysOfEveryMonth) == 0
            && rule.monthDaysFromEnd == 0;
    return rule.weekdays.size() == 1 && rule.weekdays.front().ordinal != 0
        && std::abs(rule.weekdays.front().ordinal) <= weeksOfEveryMonth && rule.monthDays == 0
        && rule.monthDaysFromEnd == 0;
}

/// False when the count would have to be counted out.
bool applyCount(int count, YearlyRule& rule)
{
    if (count == 0) return true;
    const auto onset = rule.earliestOnset(rule.first);
    if (!onset) return true;
    if (!fallsOnceAYear(rule)) return false;
    const auto firstYear = CivilDate::fromDaysSince1970((*onset - rule.time) / secondsPerDay).year;
    const CivilDate end {firstYear + std::int64_t(count - 1) * rule.interval + 1, 1, 1};
    rule.last = std::min(rule.last, end.daysSince1970() * secondsPerDay - 1);
    return true;
}

} // namespace

std::optional<std::int64_t> readLocalTime(std::string_view text)
{
    if (text.size() != 15 || text[8] != 'T') return std::nullopt;
    const auto day = dayNumber(text.substr(0, 8));
    const int hour = digits(text.substr(9, 2));
    const int minute = digits(text.substr(11, 2));
    const int second = digits(text.substr(13, 2));
    const auto isWithin = [](int value, int most) { return value >= 0 && value <= most; };
    if (!day || !isWithin(hour, 23) || !isWithin(minute, 59) || !isWithin(second, 59))
        return std::nullopt;
    return *day * secondsPerDay + hour * 3600 + minute * 60 + second;
}

bool readYearlyRule(std::string_view text, YearlyRule& rule)
{
    if (text.size() > Limits::zoneRuleBytes) return false;
    rule.time = (rule.first % secondsPerDay + secondsPerDay) % secondsPerDay;
    Rest rest;
    while (!text.empty()) {
        auto value = takePiece(text, ';');
        const auto name = takePiece(value, '=');
        if (!readPart(name, value, rule, rest)) return false;
    }
    if (!rest.isYearly || !applyPosition(rest.position, rule)) return false;
    addDefaults(rule);
    return applyCount(rest.count, rule);
}

} // namespace Tessel
