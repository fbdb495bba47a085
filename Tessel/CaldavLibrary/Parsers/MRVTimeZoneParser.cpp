#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"

namespace Tessel {

namespace {

/// Without the carriage returns that the engine keeps where a line was folded, and without quotes.
std::string plainTZID(std::string_view text)
{
    std::string tzid(text);
    std::erase(tzid, '\r');
    if (tzid.size() >= 2 && tzid.front() == '"' && tzid.back() == '"')
        tzid = tzid.substr(1, tzid.size() - 2);
    return tzid;
}

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
        for (const auto& property : observance->properties) {
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

std::optional<TimeZone> zone(const std::string& tzid, const CGICalendarComponent& component)
{
    if (auto known = TimeZone::withIdentifier(tzid)) return known;
    if (auto windows = TimeZone::withWindowsName(tzid)) return windows;
    if (auto own = TimeZone::fromVTimeZone(rulesText(component), tzid)) return own;
    return zoneAtEndOf(tzid);
}

void readZone(const CGICalendarComponent& component, MRVTimeZoneParser::Zones& zones)
{
    const auto value = component.propertyValueForName("TZID");
    if (!value) return;
    auto tzid = plainTZID(*value);
    if (auto read = zone(tzid, component)) zones.set(std::move(tzid), std::move(*read));
}

} // namespace

std::optional<TimeZone> MRVTimeZoneParser::Zones::find(std::string_view tzid) const
{
    if (zones_.empty()) return std::nullopt;
    const auto place = places_.find(plainTZID(tzid));
    if (place == places_.end()) return std::nullopt;
    return zones_[place->second].second;
}

void MRVTimeZoneParser::Zones::set(std::string tzid, TimeZone zone)
{
    const auto [place, isNew] = places_.try_emplace(tzid, zones_.size());
    if (isNew)
        zones_.emplace_back(std::move(tzid), std::move(zone));
    else
        zones_[place->second].second = std::move(zone);
}

MRVTimeZoneParser::MRVTimeZoneParser(std::string text)
    : icsString(std::move(text))
{
}

std::optional<MRVTimeZoneParser::Zones> MRVTimeZoneParser::parseTimeZones() const
{
    CGICalendar calendar;
    calendar.parseWithString(icsString);
    auto zones = timeZones(calendar);
    if (zones.empty()) return std::nullopt;
    return zones;
}

MRVTimeZoneParser::Zones MRVTimeZoneParser::timeZones(const CGICalendar& calendar)
{
    Zones zones;
    for (const auto& object : calendar.objects) {
        if (!object) continue;
        if (object->isTimezone()) readZone(*object, zones);
        for (const auto& component : object->components) {
            if (component && component->isTimezone()) readZone(*component, zones);
        }
    }
    return zones;
}

} // namespace Tessel
