#include "apps/tessel/commands/UserTimes.h"

#include "apps/tessel/accounts/Stop.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>

namespace Tessel::App {

namespace {

using namespace std::chrono;

local_days today()
{
    const auto clock = userClock(Date().millisecondsSince1970());
    return local_days(floor<days>(milliseconds(clock)));
}

/// In the user's own zone, or in UTC where that has no name that others know.
EventMoment inZone(const EventMoment& moment, const std::string& zone)
{
    if (moment.kind != EventMoment::Kind::floating) return moment;
    if (zone == "UTC") return EventMoment::utc(sys_seconds(moment.local.time_since_epoch()));
    if (!zone.empty()) {
        if (!TimeZone::withIdentifier(zone))
            throw Stop::usage(
                "There is no time zone " + zone + ". Give a name such as Europe/Berlin.");
        return EventMoment::zoned(moment.local, zone);
    }
    const auto here = TimeZone::local();
    if (here.identifier() != "UTC" && TimeZone::withIdentifier(here.identifier()))
        return EventMoment::zoned(moment.local, here.identifier());
    return EventMoment::utc(
        here.dateFromLocalMilliseconds(milliseconds(moment.local.time_since_epoch()).count()));
}

/// "2027-03-01 12:00" as RFC 5545 writes it; none for what has another shape.
std::string compact(const std::string& text)
{
    constexpr std::string_view shapes[]
        = {"0000-00-00", "0000-00-00T00:00", "0000-00-00T00:00:00", "00000000", "00000000T000000"};
    auto shape = text;
    for (auto& c : shape) {
        if (c >= '0' && c <= '9') c = '0';
        if (c == ' ') c = 'T';
    }
    auto rest = text;
    const bool isUTC = shape.ends_with('Z');
    if (isUTC) shape.pop_back();
    if (std::find(std::begin(shapes), std::end(shapes), shape) == std::end(shapes)) return {};
    std::string value;
    for (const char c : rest) {
        if (c != '-' && c != ':') value += c == ' ' ? 'T' : c;
    }
    if (shape.size() == 16) value.insert(value.size() - (isUTC ? 1 : 0), "00");
    return value;
}

template <class... Values> std::string formatted(const char* pattern, Values... values)
{
    std::array<char, 64> text {};
    std::snprintf(text.data(), text.size(), pattern, values...);
    return text.data();
}

year_month_day dayOf(std::int64_t clock)
{
    return year_month_day(sys_days(floor<days>(milliseconds(clock))));
}

std::int64_t clockOf(const EventMoment& moment)
{
    return milliseconds(moment.local.time_since_epoch()).count();
}

} // namespace

EventMoment momentOf(const std::string& text, const std::string& zone)
{
    if (text == "today") return EventMoment::day(today());
    if (text == "tomorrow") return EventMoment::day(today() + days(1));
    if (text.starts_with('+')) {
        constexpr int most = 36'600;
        int count = 0;
        const auto* const end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data() + 1, end, count);
        if (error == std::errc() && rest == end && count >= 0 && count <= most)
            return EventMoment::day(today() + days(count));
    }
    if (const auto moment = EventMoment::read(compact(text))) return inZone(*moment, zone);
    throw Stop::usage(
        "No date: " + text + ". Give one such as 2027-03-01, 2027-03-01T12:00 or tomorrow.");
}

EventDuration durationOf(const std::string& text)
{
    std::string date = "P";
    std::string time;
    for (const char c : text) {
        const auto unit = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        time += unit;
        if (unit == 'D' || unit == 'W') date += std::exchange(time, {});
    }
    auto duration = EventDuration::read(text);
    if (!duration) duration = EventDuration::read(date + (time.empty() ? "" : "T" + time));
    if (!duration || duration->total() < seconds(0))
        throw Stop::usage("No length of time: " + text + ". Give one such as 15m, 1h30m or 2d.");
    return *duration;
}

std::int64_t userMilliseconds(const EventMoment& moment)
{
    if (moment.kind == EventMoment::Kind::utc) return clockOf(moment);
    const auto zone = moment.zone.empty() ? std::nullopt : TimeZone::withIdentifier(moment.zone);
    return zone.value_or(TimeZone::local())
        .dateFromLocalMilliseconds(clockOf(moment))
        .millisecondsSince1970();
}

std::int64_t userClock(std::int64_t time)
{
    const auto date = Date::fromMillisecondsSince1970(time);
    return time + std::int64_t {1000} * TimeZone::local().secondsFromGMT(date);
}

std::string shownMoment(const EventMoment& moment)
{
    const auto clock = clockOf(moment);
    if (moment.isDay()) return isoDay(clock);
    auto text = isoDay(clock) + " " + hourOf(clock);
    if (moment.kind == EventMoment::Kind::utc) return text + " UTC";
    if (moment.kind == EventMoment::Kind::zoned && moment.zone != TimeZone::local().identifier())
        text += " " + moment.zone;
    return text;
}

std::string isoMoment(const EventMoment& moment)
{
    const auto clock = clockOf(moment);
    if (moment.isDay()) return isoDay(clock);
    const hh_mm_ss time(floor<seconds>(milliseconds(clock % millisecondsOfDay)));
    return isoDay(clock)
        + formatted("T%02d:%02d:%02d", int(time.hours().count()), int(time.minutes().count()),
            int(time.seconds().count()))
        + (moment.kind == EventMoment::Kind::utc ? "Z" : "");
}

std::string isoTime(std::int64_t time)
{
    const auto clock = userClock(time);
    const auto minutes = (clock - time) / 60'000;
    return isoMoment(EventMoment::floating(local_seconds(floor<seconds>(milliseconds(clock)))))
        + formatted("%c%02d:%02d", minutes < 0 ? '-' : '+', int(std::abs(minutes) / 60),
            int(std::abs(minutes) % 60));
}

std::string isoDay(std::int64_t clock)
{
    const auto day = dayOf(clock);
    return formatted("%04d-%02u-%02u", int(day.year()), unsigned(day.month()), unsigned(day.day()));
}

std::string hourOf(std::int64_t clock)
{
    const auto inDay = milliseconds(clock) - floor<days>(milliseconds(clock));
    const auto minutes = duration_cast<std::chrono::minutes>(inDay).count();
    return formatted("%02d:%02d", int(minutes / 60), int(minutes % 60));
}

std::string longDay(std::int64_t clock)
{
    constexpr const char* weekdays[] {
        "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    constexpr const char* months[] {"January", "February", "March", "April", "May", "June", "July",
        "August", "September", "October", "November", "December"};
    const auto day = dayOf(clock);
    return formatted("%s, %u %s %d", weekdays[weekday(sys_days(day)).c_encoding()],
        unsigned(day.day()), months[unsigned(day.month()) - 1], int(day.year()));
}

} // namespace Tessel::App
