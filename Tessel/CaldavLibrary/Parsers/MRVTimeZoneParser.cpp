#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"

#include "Tessel/CaldavLibrary/Extensions/ZoneDefinitions.h"
#include "Tessel/Platform/Foundation/Base/Limits.h"

namespace Tessel {

namespace {

void readZone(const CGICalendarComponent& component, MRVTimeZoneParser::Zones& zones)
{
    const auto value = component.propertyValueForName("TZID");
    if (!value) return;
    auto tzid = plainTZID(*value);
    if (auto read = zoneDefinedBy(component, tzid)) zones.set(std::move(tzid), std::move(*read));
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
    calendar.parseWithLimit(icsString, Limits::calendarNodes);
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
