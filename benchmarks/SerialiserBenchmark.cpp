#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"
#include "Tessel/Platform/Foundation/Files/Bundle.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/Libical.h"
#include "benchmarks/Table.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

/// The file that both sides read the definition of a timed event's zone from, for each event.
std::filesystem::path zoneFile()
{
    return Bundle::library()
        .bundle("ZoneinfoBundle.bundle")
        .pathForResource("Berlin", "ics")
        .value();
}

LibicalTree zoneDefinition(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const auto calendar = libicalTree(text);
    auto* const definition
        = icalcomponent_get_first_component(calendar.get(), ICAL_VTIMEZONE_COMPONENT);
    icalcomponent_remove_component(calendar.get(), definition);
    return LibicalTree(definition);
}

icaltimetype time(const Date& date, icaltimezone* zone)
{
    return icaltime_from_timet_with_zone(date.millisecondsSince1970() / 1000, 0, zone);
}

icalproperty* zoned(icalproperty* property)
{
    icalproperty_add_parameter(property, icalparameter_new_tzid("Europe/Berlin"));
    return property;
}

icalproperty* participant(const MRVAttendee& attendee)
{
    const auto address = "mailto:" + attendee.email;
    if (attendee.isOrganizer) return icalproperty_new_organizer(address.c_str());
    auto* const property = icalproperty_new_attendee(address.c_str());
    icalproperty_add_parameter(property, icalparameter_new_partstat(ICAL_PARTSTAT_NEEDSACTION));
    icalproperty_add_parameter(property, icalparameter_new_cn(attendee.cn.c_str()));
    icalproperty_add_parameter(property, icalparameter_new_role(ICAL_ROLE_REQPARTICIPANT));
    icalproperty_add_parameter(property, icalparameter_new_cutype(ICAL_CUTYPE_INDIVIDUAL));
    return property;
}

icalcomponent* reminder(const MRVAlarm& alarm)
{
    auto* const component = icalcomponent_new(ICAL_VALARM_COMPONENT);
    icalcomponent_add_property(component, icalproperty_new_description(alarm.desc.c_str()));
    icalcomponent_add_property(component, icalproperty_new_action(ICAL_ACTION_DISPLAY));
    icaltriggertype trigger {};
    trigger.duration = icaldurationtype_from_int(static_cast<int>(*alarm.relativeTriggerTime));
    icalcomponent_add_property(component, icalproperty_new_trigger(trigger));
    return component;
}

LibicalTree built(
    const MRVEvent& event, icaltimezone* zone, const std::filesystem::path& definition)
{
    auto* const utc = icaltimezone_get_utc_timezone();
    auto* const vevent = icalcomponent_new(ICAL_VEVENT_COMPONENT);
    const auto add = [&](icalproperty* property) { icalcomponent_add_property(vevent, property); };
    add(zoned(icalproperty_new_dtstart(time(event.startDate, zone))));
    add(zoned(icalproperty_new_dtend(time(event.endDate, zone))));
    add(icalproperty_new_description(event.desc->c_str()));
    add(icalproperty_new_summary(event.summary.c_str()));
    add(icalproperty_new_uid(event.uid.c_str()));
    add(icalproperty_new_dtstamp(time(event.createdDate, utc)));
    add(icalproperty_new_lastmodified(time(event.lastModifiedDate, utc)));
    if (event.recurRule) {
        add(icalproperty_new_rrule(icalrecurrencetype_from_string(event.recurRule->c_str())));
    }
    add(icalproperty_new_status(ICAL_STATUS_CONFIRMED));
    for (const auto& attendee : *event.attendees)
        add(participant(*attendee));
    for (const auto& alarm : *event.alarms)
        icalcomponent_add_component(vevent, reminder(*alarm));

    LibicalTree calendar(icalcomponent_new(ICAL_VCALENDAR_COMPONENT));
    icalcomponent_add_property(calendar.get(), icalproperty_new_version("2.0"));
    icalcomponent_add_property(calendar.get(), icalproperty_new_prodid("-//Morv//Caldav//EN"));
    icalcomponent_add_component(calendar.get(), zoneDefinition(definition).release());
    icalcomponent_add_component(calendar.get(), vevent);
    return calendar;
}

} // namespace

int main()
{
    const auto events
        = MRVEventsParser(multigetAnswer(corpusEvents / 10), nullptr).parseEvents().value();
    auto* const zone = icaltimezone_get_builtin_timezone("Europe/Berlin");
    const auto definition = zoneFile();
    const auto ours = [&] {
        for (const auto& event : events)
            keep(event->iCalendarString());
    };
    const auto libical = [&] {
        for (const auto& event : events)
            keep(libicalText(built(*event, zone, definition)));
    };
    printRow("event to text, both read its zone's file: libical", measure(ours, libical, 9), "s",
        timesFaster(3));
}
