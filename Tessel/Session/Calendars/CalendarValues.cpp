#include "Tessel/Session/Calendars/CalendarValues.h"

#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <algorithm>

namespace Tessel {

namespace {

bool isColor(std::string_view text)
{
    return (text.size() == 7 || text.size() == 9) && text.starts_with('#')
        && text.find_first_not_of("0123456789abcdefABCDEF", 1) == text.npos;
}

bool isWholeNumber(std::string_view text)
{
    if (text.starts_with('-')) text.remove_prefix(1);
    return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

bool begins(std::string_view text, std::string_view component)
{
    text.remove_prefix(std::min(text.find("BEGIN:"), text.size()));
    return text.starts_with(component);
}

/// A calendar with the zone in it; empty for what is no zone.
std::string zoneCalendar(const std::string& given)
{
    if (begins(given, "BEGIN:VCALENDAR")) return given;
    auto definition = given;
    if (!begins(given, "BEGIN:VTIMEZONE")) {
        auto zone = TimeZone::withIdentifier(given);
        if (!zone) zone = TimeZone::withWindowsName(given);
        if (!zone) return {};
        definition = zone->vTimeZone(given);
    }
    if (!definition.ends_with('\n')) definition += "\r\n";
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tessel//Session//EN\r\n" + definition
        + "END:VCALENDAR\r\n";
}

} // namespace

Result<CalendarProperties> sendable(
    CalendarProperties properties, bool isNew, std::string_view what)
{
    const auto malformed = [&](const std::string& why) {
        return Failure {
            .kind = FailureKind::malformed, .reason = std::string(what).append(": ").append(why)};
    };
    if (!isNew && properties.components)
        return malformed("the components are those that it was made with and cannot be changed.");
    if (const auto& color = properties.color; color && !isColor(*color))
        return malformed("the color must be #RRGGBB or #RRGGBBAA, and is " + *color + ".");
    if (const auto& order = properties.order; order && !isWholeNumber(*order))
        return malformed("the order must be a whole number, and is " + *order + ".");
    if (properties.timeZone) {
        auto calendar = zoneCalendar(*properties.timeZone);
        if (calendar.empty()) {
            return malformed("the time zone must be a known name or the text of a calendar, and is "
                + *properties.timeZone + ".");
        }
        properties.timeZone = std::move(calendar);
    }
    return properties;
}

} // namespace Tessel
