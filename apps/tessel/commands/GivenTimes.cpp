#include "apps/tessel/commands/GivenTimes.h"

#include "apps/tessel/accounts/Stop.h"
#include "apps/tessel/commands/UserTimes.h"

#include <algorithm>
#include <cctype>
#include <charconv>

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
    const bool isUTC = shape.ends_with('Z');
    if (isUTC) shape.pop_back();
    if (std::find(std::begin(shapes), std::end(shapes), shape) == std::end(shapes)) return {};
    std::string value;
    for (const char c : text) {
        if (c != '-' && c != ':') value += c == ' ' ? 'T' : c;
    }
    if (shape.size() == 16) value.insert(value.size() - (isUTC ? 1 : 0), "00");
    return value;
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

} // namespace Tessel::App
