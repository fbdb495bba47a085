#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"

#include "Tessel/CaldavLibrary/Extensions/AlarmText.h"
#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Parsers/Multistatus.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/icalendar/CGICalendar.h"

namespace Tessel {

namespace {

using XMLNamespace::caldav;
using XMLNamespace::dav;

std::string text(std::optional<std::string_view> value)
{
    return std::string(value.value_or(std::string_view()));
}

std::optional<std::string> parameter(const CGICalendarProperty& property, std::string_view name)
{
    const auto value = property.parameterValueForName(name);
    if (!value) return std::nullopt;
    return std::string(*value);
}

void readDate(
    std::optional<std::string_view> value, const std::optional<TimeZone>& zone, Date& date)
{
    if (!value) return;
    if (const auto read = iCalDateTimeIfReadable(*value, zone)) date = *read;
}

using Zones = std::optional<MRVTimeZoneParser::Zones>;

/// One end of an event.
struct End {
    Date date;
    std::optional<TimeZone> zone = {};
};

/// What a VEVENT says; the defaults hold for what it does not say.
struct EventReader {
    const Zones& zones;
    std::string uid = {}, summary = {}, status = {}, desc = {};
    Date created = {}, lastModified = {};
    End start = {}, end = {};
    bool allDay = false;
    std::optional<std::string> recurRule = {}, recurrenceId = {};
    std::vector<std::shared_ptr<MRVAttendee>> attendees = {};
    std::vector<std::shared_ptr<MRVAlarm>> alarms = {};

    void read(const CGICalendarProperty& property)
    {
        const auto name = property.name().value_or(std::string_view());
        const auto value = property.value();
        if (name == "SUMMARY")
            summary = text(value);
        else if (name == "STATUS")
            status = text(value);
        else if (name == "DESCRIPTION")
            desc = text(value);
        else if (name == "LAST-MODIFIED")
            readDate(value, std::nullopt, lastModified);
        else if (name == "CREATED")
            readDate(value, std::nullopt, created);
        else if (name == "DTSTART")
            readEnd(property, start);
        else if (name == "DTEND")
            readEnd(property, end);
        else if (name == "RRULE")
            recurRule = text(value);
        else if (name == "RECURRENCE-ID")
            recurrenceId = text(value);
        else if (name == "ATTENDEE")
            attendees.push_back(attendee(property));
        else if (name == "ORGANIZER")
            attendees.push_back(organizer(property));
    }

    void readEnd(const CGICalendarProperty& property, End& side)
    {
        const auto value = property.value();
        if (property.parameters.empty()) return readDate(value, std::nullopt, side.date);
        for (const auto& each : property.parameters.filled()) {
            if (each->isName("VALUE") && each->isValue("DATE")) {
                allDay = true;
                readDate(value, std::nullopt, side.date);
            } else if (each->isName("TZID")) {
                side.zone = value && value->ends_with('Z') ? std::nullopt : zone(each->value());
                readDate(value, side.zone, side.date);
            }
        }
    }

    std::optional<TimeZone> zone(std::optional<std::string_view> identifier) const
    {
        if (!identifier || !zones) return std::nullopt;
        return zones->find(*identifier);
    }

    static std::shared_ptr<MRVAttendee> attendee(const CGICalendarProperty& property)
    {
        return std::make_shared<MRVAttendee>(MRVAttendee {
            .email = parameter(property, "EMAIL").value_or(""),
            .role = parameter(property, "ROLE").value_or(""),
            .type = parameter(property, "CUTYPE"),
            .participationStatus = parameter(property, "PARTSTAT"),
            .scheduleStatus = parameter(property, "SCHEDULE-STATUS"),
            .cn = parameter(property, "CN").value_or(""),
            .href = text(property.value()),
        });
    }

    static std::shared_ptr<MRVAttendee> organizer(const CGICalendarProperty& property)
    {
        return std::make_shared<MRVAttendee>(MRVAttendee {
            .email = parameter(property, "EMAIL").value_or(""),
            .role = "organizer",
            .cn = parameter(property, "CN").value_or(""),
            .href = text(property.value()),
            .isOrganizer = true,
        });
    }
};

EventReader readEvent(const CGICalendarComponent& vevent, const Zones& zones)
{
    const auto uid = vevent.propertyValueForName("UID");
    if (!uid) fatalError("an event of the server has no UID");
    EventReader reader {.zones = zones};
    reader.uid = *uid;
    for (const auto& property : vevent.properties.filled())
        reader.read(*property);
    reader.alarms = AlarmText::alarms(vevent);
    return reader;
}

/// The tree of a text; empty when it holds more than is read.
CGICalendar treeOf(const std::string& calendarData)
{
    CGICalendar calendar;
    calendar.parseWithLimit(calendarData, Limits::calendarNodes);
    return calendar;
}

Zones zonesOf(const CGICalendar& tree)
{
    auto zones = MRVTimeZoneParser::timeZones(tree);
    if (zones.empty()) return std::nullopt;
    return zones;
}

/// The one event of a tree; none when there are several.
std::optional<EventReader> onlyEvent(const CGICalendar& tree, const Zones& zones)
{
    std::optional<EventReader> first;
    bool hasMore = false;
    for (const auto& object : tree.objects) {
        for (const auto& component : object->components) {
            if (!component->isEvent()) continue;
            // Every event is read, since a broken one counts wherever it stands.
            auto read = readEvent(*component, zones);
            hasMore = first.has_value();
            if (!first) first.emplace(std::move(read));
        }
    }
    if (hasMore) return std::nullopt;
    return first;
}

std::shared_ptr<MRVEvent> eventOf(const CGICalendar& tree, const Zones& zones,
    std::string calendarData, std::string eTag, std::string href,
    std::shared_ptr<MRVCalendar> calendar)
{
    auto read = onlyEvent(tree, zones);
    if (!read) return nullptr;
    return std::make_shared<MRVEvent>(MRVEvent {
        .uid = std::move(read->uid),
        .href = std::move(href),
        .eTag = std::move(eTag),
        .calendarData = std::move(calendarData),
        .desc = std::move(read->desc),
        .status = std::move(read->status),
        .summary = std::move(read->summary),
        .recurrenceId = std::move(read->recurrenceId),
        .createdDate = read->created,
        .lastModifiedDate = read->lastModified,
        .startDate = read->start.date,
        .endDate = read->end.date,
        .startTimeZone = std::move(read->start.zone),
        .endTimeZone = std::move(read->end.zone),
        .attendees = std::move(read->attendees),
        .alarms = std::move(read->alarms),
        .recurRule = std::move(read->recurRule),
        .calendar = std::move(calendar),
        .allDay = read->allDay,
    });
}

} // namespace

std::optional<MRVEventsParser::Events> MRVEventsParser::parseEvents()
{
    Events result;
    Multistatus::forEachSuccessfulProp(
        rootElement(), [&](const auto& href, const GDataXMLElement& prop) {
            const auto resourceType = Multistatus::text(prop, "resourcetype", dav);
            if (!href || (resourceType && !resourceType->empty())) return;
            const auto eTag = prop.first("getetag", dav);
            const auto element = prop.first("calendar-data", caldav);
            if (!eTag || !element) return;

            auto calendarData = element->stringValue().value_or("");
            const auto tree = treeOf(calendarData);
            timeZones = zonesOf(tree);
            auto found = eventOf(tree, timeZones, std::move(calendarData),
                eTag->stringValue().value_or(""), href->stringValue().value_or(""), calendar);
            if (found) result.push_back(std::move(found));
        });
    if (result.empty()) return std::nullopt;
    return result;
}

std::shared_ptr<MRVEvent> MRVEventsParser::event(std::string calendarData, std::string eTag,
    std::string href, std::shared_ptr<MRVCalendar> calendar)
{
    const auto tree = treeOf(calendarData);
    return eventOf(tree, zonesOf(tree), std::move(calendarData), std::move(eTag), std::move(href),
        std::move(calendar));
}

} // namespace Tessel
