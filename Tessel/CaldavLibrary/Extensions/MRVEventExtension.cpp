#include "Tessel/CaldavLibrary/Extensions/AlarmText.h"
#include "Tessel/CaldavLibrary/Extensions/DateExtension.h"
#include "Tessel/CaldavLibrary/Extensions/ZoneDefinitions.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/icalendar/CGICalendarObject.h"

namespace Tessel {

namespace {

using Property = std::shared_ptr<CGICalendarProperty>;
using Component = std::shared_ptr<CGICalendarComponent>;
using Text = std::optional<std::string_view>;

Property property(std::string_view name, Text value)
{
    auto made = std::make_shared<CGICalendarProperty>();
    made->setName(name);
    made->setValue(value);
    return made;
}

void addParameter(CGICalendarProperty& property, std::string_view name, std::string_view value)
{
    auto made = std::make_shared<CGICalendarParameter>();
    made->setName(name);
    made->setValue(value);
    property.addParameter(made);
}

Property dateProperty(
    std::string_view name, const Date& date, const std::optional<TimeZone>& timeZone, bool allDay)
{
    if (allDay) {
        auto day = property(name, descriptionICalDateFormat(date, timeZone));
        addParameter(*day, "VALUE", "DATE");
        return day;
    }
    auto moment = property(name, descriptionICalDateTimeFormat(date, timeZone));
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
    auto made
        = property(attendee.isOrganizer ? "ORGANIZER" : "ATTENDEE", "mailto:" + attendee.email);
    if (attendee.isOrganizer) return made;
    addParameter(*made, "PARTSTAT", "NEEDS-ACTION");
    addParameter(*made, "CN", attendee.cn);
    addParameter(*made, "ROLE", attendee.role);
    if (attendee.type) addParameter(*made, "CUTYPE", *attendee.type);
    return made;
}

Component VEVENT(const MRVEvent& event)
{
    auto component = CGICalendarComponent::componentWithType("VEVENT");
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
            if (alarm) component->addComponent(AlarmText::VALARM(*alarm, event.startTimeZone));
    }
    return component;
}

/// None without both zones. The end's zone is left out where the two show the same time NOW,
/// whatever they do at the time of the event.
std::optional<std::vector<Component>> VTIMEZONE(const MRVEvent& event)
{
    if (!event.startTimeZone || !event.endTimeZone) return std::nullopt;
    auto definitions = bundledDefinitions(*event.startTimeZone);
    const Date now;
    if (event.startTimeZone->secondsFromGMT(now) != event.endTimeZone->secondsFromGMT(now)) {
        const auto more = bundledDefinitions(*event.endTimeZone);
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
