#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

#include "Tessel/Platform/Foundation/Time/CivilDate.h"
#include "Tessel/Platform/Foundation/Time/DatePattern.h"
#include "Tessel/Platform/Foundation/Time/LocaleWeekRule.h"
#include "Tessel/Platform/Foundation/Time/PatternReader.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace Tessel {

namespace {

constexpr std::int64_t millisecondsPerSecond = 1000;
constexpr std::int64_t secondsPerDay = 86'400;
constexpr int firstGregorianYear = 1582;

/// What clocks and calendars show at some moment in some zone.
struct LocalTime {
    std::int64_t day; ///< since 1970-01-01
    CivilDate date {};
    int hour;
    int minute;
    int second;

    LocalTime(const Date& moment, const TimeZone& zone)
    {
        const auto milliseconds = moment.millisecondsSince1970();
        auto seconds = milliseconds / millisecondsPerSecond
            - (milliseconds % millisecondsPerSecond < 0) + zone.secondsFromGMT(moment);
        day = seconds / secondsPerDay - (seconds % secondsPerDay < 0);
        seconds -= day * secondsPerDay;
        date = CivilDate::fromDaysSince1970(day);
        hour = static_cast<int>(seconds / 3600);
        minute = static_cast<int>(seconds / 60 % 60);
        second = static_cast<int>(seconds % 60);
    }
};

std::int64_t valueOf(char letter, const LocalTime& time, DateFormatter::WeekRules weekRules)
{
    switch (letter) {
    case 'Y':
        return weekBasedYear(time.day,
            weekRules == DateFormatter::WeekRules::systemLocale ? rootLocaleWeekRule()
                                                                : currentLocaleWeekRule());
    case 'M':
        return time.date.month;
    case 'd':
        return time.date.day;
    case 'H':
        return time.hour;
    case 'k':
        return time.hour == 0 ? 24 : time.hour;
    case 'm':
        return time.minute;
    default:
        return time.second;
    }
}

void append(std::string& text, std::int64_t value, int width)
{
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof digits, std::abs(value)).ptr;
    if (value < 0) text += '-';
    for (auto length = end - digits; length < width; ++length)
        text += '0';
    text.append(digits, end);
}

/// Takes a number of `width` digits off the front of `text`; a width of 1 means any. -1 when there
/// is no such number.
int takeNumber(std::string_view& text, int width)
{
    const auto available = std::min<std::size_t>(text.size(), 9);
    const auto wanted = width == 1 ? available : static_cast<std::size_t>(width);
    if (wanted > available) return -1;

    int number = 0;
    std::size_t taken = 0;
    for (; taken < wanted && text[taken] >= '0' && text[taken] <= '9'; ++taken)
        number = number * 10 + (text[taken] - '0');
    if (taken == 0 || (width != 1 && taken != wanted)) return -1;
    text.remove_prefix(taken);
    return number;
}

constexpr int lastYear = 5'828'963; // that ICU can write

struct WrittenTime {
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;

    bool set(char letter, int number)
    {
        const auto assign = [number](int& field, int least, int most) {
            field = number;
            return number >= least && number <= most;
        };
        switch (letter) {
        case 'Y':
            return assign(year, 0, lastYear);
        case 'M':
            return assign(month, 1, 12);
        case 'd':
            return assign(day, 1, 31);
        case 'H':
            return assign(hour, 0, 23);
        case 'k':
            if (!assign(hour, 0, 24)) return false;
            hour %= 24;
            return true;
        case 'm':
            return assign(minute, 0, 59);
        default:
            return assign(second, 0, 59);
        }
    }

    std::optional<std::int64_t> localMilliseconds() const
    {
        const CivilDate date {year, month, day};
        const auto days = date.daysSince1970();
        const bool surelyExists = day <= 28 && year != firstGregorianYear;
        if (!surelyExists && CivilDate::fromDaysSince1970(days) != date) return std::nullopt;
        return (days * secondsPerDay + hour * 3600 + minute * 60 + second) * millisecondsPerSecond;
    }
};

std::optional<WrittenTime> readNumbers(std::string_view text, std::string_view dateFormat)
{
    WrittenTime time;
    DatePattern pattern(dateFormat);
    while (const auto part = pattern.next()) {
        if (part->isLiteral()) {
            if (text.empty() || text.front() != part->literal) return std::nullopt;
            text.remove_prefix(1);
            continue;
        }
        if (!part->isNumber()) return std::nullopt;
        const auto number = takeNumber(text, part->count);
        if (number < 0 || !time.set(part->letter, number)) return std::nullopt;
    }
    if (!text.empty()) return std::nullopt;
    return time;
}

bool isOfNumbersOnly(std::string_view dateFormat)
{
    DatePattern pattern(dateFormat);
    while (const auto part = pattern.next())
        if (!part->isLiteral() && !part->isNumber()) return false;
    return true;
}

} // namespace

std::string DateFormatter::string(const Date& date) const
{
    return string(date, dateFormat, timeZone, weekRules);
}

std::optional<Date> DateFormatter::date(std::string_view text) const
{
    return date(text, dateFormat, timeZone);
}

std::string DateFormatter::string(
    const Date& date, std::string_view dateFormat, const TimeZone& timeZone, WeekRules weekRules)
{
    const LocalTime time(date, timeZone);
    std::string text;
    text.reserve(dateFormat.size());

    DatePattern pattern(dateFormat);
    while (const auto part = pattern.next()) {
        if (part->isLiteral()) {
            text += part->literal;
        } else if (part->isNumber()) {
            append(text, valueOf(part->letter, time, weekRules), part->count);
        } else {
            return {};
        }
    }
    return text;
}

std::optional<Date> DateFormatter::date(
    std::string_view text, std::string_view dateFormat, const TimeZone& timeZone)
{
    if (const auto time = readNumbers(text, dateFormat)) {
        const auto local = time->localMilliseconds();
        if (!local) return std::nullopt;
        return timeZone.dateFromLocalMilliseconds(*local);
    }
    if (isOfNumbersOnly(dateFormat)) return std::nullopt;
    return readByPattern(text, dateFormat, timeZone);
}

} // namespace Tessel
