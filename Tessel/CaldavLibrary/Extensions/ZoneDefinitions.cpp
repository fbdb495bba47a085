#include "Tessel/CaldavLibrary/Extensions/ZoneDefinitions.h"

#include "Tessel/Platform/Foundation/Files/Bundle.h"
#include "Tessel/Platform/Foundation/Time/VTimeZoneWriter.h"
#include "Tessel/Platform/Foundation/Time/ZoneDatabase.h"
#include "Tessel/icalendar/CGICalendar.h"

namespace Tessel {

namespace {

std::string rulesText(const CGICalendarComponent& component)
{
    std::string text = "BEGIN:VTIMEZONE\n";
    const auto append = [&text](std::string_view name, std::string_view value) {
        text.append(name).append(":").append(value).append("\n");
    };
    for (const auto& observance : component.components) {
        if (!observance) continue;
        const auto type = observance->type().value_or(std::string_view());
        append("BEGIN", type);
        for (const auto& property : observance->properties.filled()) {
            if (property && property->name())
                append(*property->name(), property->value().value_or(""));
        }
        append("END", type);
    }
    append("END", "VTIMEZONE");
    return text;
}

/// Some programs put their own domain and version before the identifier (RFC 5545, 3.8.3.1).
std::optional<TimeZone> zoneAtEndOf(std::string_view tzid)
{
    constexpr int mostComponents = 3;
    std::optional<TimeZone> found;
    auto slash = tzid.size();
    for (int count = 0; count < mostComponents && slash != tzid.npos && slash > 0; ++count) {
        slash = tzid.rfind('/', slash - 1);
        if (slash == tzid.npos) break;
        if (auto zone = TimeZone::withIdentifier(tzid.substr(slash + 1))) found = std::move(zone);
    }
    return found;
}

std::string_view lastPathComponent(std::string_view identifier)
{
    while (identifier.ends_with('/'))
        identifier.remove_suffix(1);
    return identifier.substr(identifier.rfind('/') + 1);
}

std::vector<std::shared_ptr<CGICalendarComponent>> definitionsIn(const CGICalendar& calendar)
{
    std::vector<std::shared_ptr<CGICalendarComponent>> definitions;
    for (const auto& object : calendar.objects) {
        const auto found = object->timezones();
        definitions.insert(definitions.end(), found.begin(), found.end());
    }
    return definitions;
}

} // namespace

std::string plainTZID(std::string_view text)
{
    std::string tzid(text);
    std::erase(tzid, '\r');
    if (tzid.size() >= 2 && tzid.front() == '"' && tzid.back() == '"')
        tzid = tzid.substr(1, tzid.size() - 2);
    return tzid;
}

std::optional<TimeZone> zoneDefinedBy(
    const CGICalendarComponent& definition, const std::string& tzid)
{
    if (auto known = TimeZone::withIdentifier(tzid)) return known;
    if (auto windows = TimeZone::withWindowsName(tzid)) return windows;
    if (auto own = TimeZone::fromVTimeZone(rulesText(definition), tzid)) return own;
    return zoneAtEndOf(tzid);
}

std::vector<std::shared_ptr<CGICalendarComponent>> bundledDefinitions(const TimeZone& zone)
{
    const auto zones = Bundle::library().bundle("ZoneinfoBundle.bundle");
    const auto path = zones.pathForResource(lastPathComponent(zone.identifier()), "ics");
    if (!path) return {};
    const auto calendar = CGICalendar::initWithPath(*path);
    if (!calendar) return {};
    return definitionsIn(*calendar);
}

std::shared_ptr<CGICalendarComponent> ownDefinition(const TimeZone& zone)
{
    for (auto& definition : bundledDefinitions(zone)) {
        if (definition->propertyValueForName("TZID") == zone.identifier()) return definition;
    }
    const auto rules = ZoneDatabase::rules(zone.identifier());
    if (!rules) return nullptr;
    CGICalendar calendar;
    calendar.parseWithString(
        "BEGIN:VCALENDAR\r\n" + writeVTimeZone(zone.identifier(), *rules) + "END:VCALENDAR\r\n");
    const auto made = definitionsIn(calendar);
    return made.empty() ? nullptr : made.front();
}

} // namespace Tessel
