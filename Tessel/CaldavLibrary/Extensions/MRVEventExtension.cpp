#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/CaldavLibrary/MRVUtilities.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/icalendar/CGICalendarObject.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace Tessel {

namespace {

using Property = std::shared_ptr<CGICalendarProperty>;
using Component = std::shared_ptr<CGICalendarComponent>;
using Text = std::optional<std::string_view>;

Property property(std::string_view name, Text value)
{
    const auto made = std::make_shared<CGICalendarProperty>();
    made->setName(name);
    made->setValue(value);
    return made;
}

void addParameter(CGICalendarProperty& property, std::string_view name, std::string_view value)
{
    const auto made = std::make_shared<CGICalendarParameter>();
    made->setName(name);
    made->setValue(value);
    property.addParameter(made);
}

Property dateProperty(
    std::string_view name, const Date& date, const std::optional<TimeZone>& timeZone, bool allDay)
{
    if (allDay) {
        const auto day = property(name, descriptionICalDateFormat(date, timeZone));
        addParameter(*day, "VALUE", "DATE");
        return day;
    }
    const auto moment = property(name, descriptionICalDateTimeFormat(date, timeZone));
    if (timeZone) addParameter(*moment, "TZID", timeZone->identifier());
    return moment;
}

Property DTSTART(const MRVEvent& event)
{
    return dateProperty("DTSTART", event.startDate, event.startTimeZone, event.allDay);
}

Property DTEND(const MRVEvent& event)
{
    return dateProperty("DTEND", event.endDate, event.endTimeZone, event.allDay);
}

Property DESCRIPTION(const MRVEvent& event)
{
    return property("DESCRIPTION", event.desc);
}

/// The creation date, not the time of writing.
Property DTSTAMP(const MRVEvent& event)
{
    return property("DTSTAMP", descriptionICalDateTimeFormat(event.createdDate));
}

Property LASTMODIFIED(const MRVEvent& event)
{
    return property("LAST-MODIFIED", descriptionICalDateTimeFormat(event.lastModifiedDate));
}

Property participant(const MRVAttendee& attendee)
{
    const auto made
        = property(attendee.isOrganizer ? "ORGANIZER" : "ATTENDEE", "mailto:" + attendee.email);
    if (attendee.isOrganizer) return made;
    addParameter(*made, "PARTSTAT", "NEEDS-ACTION");
    addParameter(*made, "CN", attendee.cn);
    addParameter(*made, "ROLE", attendee.role);
    if (attendee.type) addParameter(*made, "CUTYPE", *attendee.type);
    return made;
}

/// Whole seconds, truncated toward zero.
std::int64_t wholeSeconds(double offset)
{
    constexpr double limit = 0x1p63;
    const bool fits = offset >= -limit && offset < limit;
    if (!fits) fatalError("the offset of an alarm is no whole number of seconds");
    return static_cast<std::int64_t>(offset);
}

/// A duration in which every part keeps its own sign, all parts but weeks always written:
/// "-P0DT0H-15M0S", "+P1W".
std::string durationText(double offset)
{
    constexpr std::int64_t week = 604800;
    auto seconds = wholeSeconds(offset);
    std::string text = offset > 0 ? "+P" : "-P";
    if (seconds % week == 0) return text + std::to_string(seconds / week) + "W";

    constexpr std::pair<std::int64_t, const char*> units[]
        = {{86400, "DT"}, {3600, "H"}, {60, "M"}, {1, "S"}};
    for (const auto& [unit, designator] : units) {
        text += std::to_string(seconds / unit) + designator;
        seconds %= unit;
    }
    return text;
}

/// A fixed time is written in the event's zone without naming it.
std::optional<std::string> triggerText(const MRVAlarm& alarm, const MRVEvent& event)
{
    if (alarm.absoluteTriggerTime) {
        return descriptionICalDateTimeFormat(*alarm.absoluteTriggerTime, event.startTimeZone);
    }
    if (alarm.relativeTriggerTime) return durationText(*alarm.relativeTriggerTime);
    return std::nullopt;
}

Component VALARM(const MRVAlarm& alarm, const MRVEvent& event)
{
    const auto component = CGICalendarComponent::componentWithType("VALARM");
    component->addProperty(property("DESCRIPTION", alarm.desc));
    if (alarm.action == MRVAlarmAction::display) {
        component->addProperty(property("ACTION", "DISPLAY"));
    }
    component->addProperty(property("TRIGGER", triggerText(alarm, event)));
    return component;
}

Component VEVENT(const MRVEvent& event)
{
    const auto component = CGICalendarComponent::componentWithType("VEVENT");
    component->properties.reserve(9 + (event.attendees ? event.attendees->size() : 0));
    component->addProperty(DTSTART(event));
    component->addProperty(DTEND(event));
    component->addProperty(DESCRIPTION(event));
    component->addProperty(property("SUMMARY", event.summary));
    component->addProperty(property("UID", event.uid));
    component->addProperty(DTSTAMP(event));
    component->addProperty(LASTMODIFIED(event));
    if (event.recurRule) component->addProperty(property("RRULE", *event.recurRule));
    component->addProperty(property("STATUS", event.status));
    if (event.attendees) {
        for (const auto& attendee : *event.attendees) {
            if (attendee) component->addProperty(participant(*attendee));
        }
    }
    if (event.alarms) {
        for (const auto& alarm : *event.alarms)
            if (alarm) component->addComponent(VALARM(*alarm, event));
    }
    return component;
}

/// None without both zones. The end's zone is left out where the two show the same time NOW,
/// whatever they do at the time of the event.
std::optional<std::vector<Component>> VTIMEZONE(const MRVEvent& event)
{
    if (!event.startTimeZone || !event.endTimeZone) return std::nullopt;
    auto definitions = MRVUtilities::vTimeZone(*event.startTimeZone);
    const Date now;
    if (event.startTimeZone->secondsFromGMT(now) != event.endTimeZone->secondsFromGMT(now)) {
        const auto more = MRVUtilities::vTimeZone(*event.endTimeZone);
        definitions.insert(definitions.end(), more.begin(), more.end());
    }
    return definitions;
}

} // namespace

std::optional<std::string> MRVEvent::iCalendarString() const
{
    CGICalendarObject calendar("-//Morv//Caldav//EN", "2.0");
    const auto master = VEVENT(*this);
    if (!allDay) {
        const auto definitions = VTIMEZONE(*this);
        if (!definitions) return std::nullopt;
        for (const auto& definition : *definitions)
            calendar.addComponent(definition);
    }
    calendar.addComponent(master);
    if (occurrences) {
        for (const auto& occurrence : *occurrences)
            if (occurrence) calendar.addComponent(VEVENT(*occurrence));
    }
    return calendar.description();
}

} // namespace Tessel
