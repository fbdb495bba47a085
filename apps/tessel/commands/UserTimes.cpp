#include "apps/tessel/commands/UserTimes.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace Tessel::App {

using namespace std::chrono;

namespace {

std::string isoClock(std::int64_t clock)
{
    return isoMoment(EventMoment::floating(clockAt(clock)));
}

} // namespace

std::int64_t clockOf(const EventMoment& moment)
{
    return milliseconds(moment.local.time_since_epoch()).count();
}

local_seconds clockAt(std::int64_t clock)
{
    return local_seconds(floor<seconds>(milliseconds(clock)));
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

std::string shownEnd(const EventMoment& end, const EventMoment& start)
{
    auto last = end;
    if (end.isDay() && end.local > start.local) last.local -= days(1);
    return shownMoment(last);
}

std::string isoMoment(const EventMoment& moment)
{
    auto text = moment.value();
    for (const auto& [place, sign] : {std::pair(13U, ":"), {11U, ":"}, {6U, "-"}, {4U, "-"}}) {
        if (place < text.size()) text.insert(place, sign);
    }
    return text;
}

std::string isoTime(std::int64_t time)
{
    const auto clock = userClock(time);
    const auto minutes = int((clock - time) / 60'000);
    std::array<char, 16> offset {};
    std::snprintf(offset.data(), offset.size(), "%c%02d:%02d", minutes < 0 ? '-' : '+',
        std::abs(minutes) / 60, std::abs(minutes) % 60);
    return isoClock(clock) + offset.data();
}

std::string shownDeadline(std::int64_t time)
{
    const auto passed = ceil<minutes>(milliseconds(time));
    const auto clock = userClock(milliseconds(passed).count());
    const bool isToday = isoDay(clock) == isoDay(userClock(Date().millisecondsSince1970()));
    return (isToday ? "" : isoDay(clock) + " ") + hourOf(clock);
}

std::string isoDay(std::int64_t clock)
{
    return isoClock(clock).substr(0, 10);
}

std::string hourOf(std::int64_t clock)
{
    return isoClock(clock).substr(11, 5);
}

std::string longDay(std::int64_t clock)
{
    const auto time = std::time_t(floor<seconds>(milliseconds(clock)).count());
    std::tm day {};
    ::gmtime_r(&time, &day);
    const auto pattern = "%A, " + std::to_string(day.tm_mday) + " %B %Y";
    std::array<char, 64> text {};
    std::strftime(text.data(), text.size(), pattern.c_str(), &day);
    return text.data();
}

} // namespace Tessel::App
