#include "Tessel/Session/Text/EventMoment.h"

#include <algorithm>
#include <cstdio>

namespace Tessel {

using namespace std::chrono;

namespace {

/// The number of `size` digits at `position`; -1 when there is something else.
int number(std::string_view text, std::size_t position, std::size_t size)
{
    if (position + size > text.size()) return -1;
    int value = 0;
    for (const char c : text.substr(position, size)) {
        if (c < '0' || c > '9') return -1;
        value = 10 * value + (c - '0');
    }
    return value;
}

std::optional<local_days> readDay(std::string_view text)
{
    const int years = number(text, 0, 4);
    const int months = number(text, 4, 2);
    const int days = number(text, 6, 2);
    if (years < 0 || months < 0 || days < 0) return std::nullopt;
    const year_month_day date(year(years), month(static_cast<unsigned>(months)),
        std::chrono::day(static_cast<unsigned>(days)));
    if (!date.ok()) return std::nullopt;
    return local_days(date);
}

} // namespace

EventMoment EventMoment::day(local_days day)
{
    return {Kind::day, day, {}};
}

EventMoment EventMoment::floating(local_seconds local)
{
    return {Kind::floating, local, {}};
}

EventMoment EventMoment::zoned(local_seconds local, std::string zone)
{
    return {Kind::zoned, local, std::move(zone)};
}

EventMoment EventMoment::utc(sys_seconds time)
{
    return {Kind::utc, local_seconds(time.time_since_epoch()), {}};
}

EventMoment EventMoment::utc(const Date& date)
{
    return utc(floor<seconds>(sys_time<milliseconds>(milliseconds(date.millisecondsSince1970()))));
}

std::string EventMoment::value() const
{
    const auto midnight = floor<days>(local);
    const year_month_day date(midnight);
    const hh_mm_ss time(local - midnight);
    char text[32];
    auto size = std::snprintf(text, sizeof text, "%04d%02u%02u",
        std::clamp(static_cast<int>(date.year()), 0, 9999), static_cast<unsigned>(date.month()),
        static_cast<unsigned>(date.day()));
    if (kind != Kind::day) {
        size += std::snprintf(text + size, sizeof text - static_cast<std::size_t>(size),
            "T%02d%02d%02d%s", static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
            kind == Kind::utc ? "Z" : "");
    }
    return std::string(text, static_cast<std::size_t>(size));
}

std::optional<EventMoment> EventMoment::read(std::string_view value, std::string zone)
{
    const auto date = readDay(value);
    if (!date) return std::nullopt;
    if (value.size() == 8) return day(*date);

    const int hour = number(value, 9, 2);
    const int minute = number(value, 11, 2);
    const int second = number(value, 13, 2);
    const bool isTime = (value[8] == 'T' || value[8] == 't') && hour >= 0 && hour < 24
        && minute >= 0 && minute < 60 && second >= 0 && second <= 60;
    if (!isTime) return std::nullopt;
    const auto local = *date + hours(hour) + minutes(minute) + seconds(std::min(second, 59));
    if (value.size() == 16 && (value[15] == 'Z' || value[15] == 'z'))
        return EventMoment {Kind::utc, local, {}};
    if (value.size() != 15) return std::nullopt;
    return zone.empty() ? floating(local) : zoned(local, std::move(zone));
}

} // namespace Tessel
