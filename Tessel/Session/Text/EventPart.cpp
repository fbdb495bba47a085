#include "Tessel/Session/Text/EventPart.h"

#include "Tessel/Session/Text/ContentLine.h"

#include <charconv>

namespace Tessel {

namespace {

constexpr std::string_view mailto = "mailto:";

std::string zoneOf(const TextLine& line)
{
    return line.parameter("TZID").value_or(std::string());
}

} // namespace

TextParameters parametersOf(const EventMoment& moment)
{
    if (moment.isDay()) return {{"VALUE", {"DATE"}}};
    if (moment.kind == EventMoment::Kind::zoned) return {{"TZID", {moment.zone}}};
    return {};
}

std::vector<EventMoment> momentsOf(const TextLine& line)
{
    std::vector<EventMoment> moments;
    std::string buffer;
    const auto zone = zoneOf(line);
    for (auto rest = line.value(buffer);;) {
        const auto end = rest.find(',');
        const auto one = rest.substr(0, end);
        if (auto moment = EventMoment::read(one.substr(0, one.find('/')), zone))
            moments.push_back(std::move(*moment));
        if (end == rest.npos) return moments;
        rest.remove_prefix(end + 1);
    }
}

EventAttendee attendeeOf(const TextLine& line)
{
    EventAttendee attendee {.address = line.value()};
    if (isSameName(attendee.address.substr(0, mailto.size()), mailto))
        attendee.address.erase(0, mailto.size());
    for (const auto& parameter : line.parameters()) {
        const auto& value = parameter.values.front();
        if (isSameName(parameter.name, "CN"))
            attendee.name = value;
        else if (isSameName(parameter.name, "PARTSTAT"))
            attendee.status = inCapitals(value);
        else if (isSameName(parameter.name, "ROLE"))
            attendee.role = inCapitals(value);
        else if (isSameName(parameter.name, "CUTYPE"))
            attendee.type = inCapitals(value);
        else if (isSameName(parameter.name, "RSVP"))
            attendee.rsvp = isSameName(value, "TRUE");
    }
    return attendee;
}

std::optional<EventAlarm> alarmOf(const TextComponent& component)
{
    const EventPart part(component);
    const auto trigger = component.line("TRIGGER");
    if (!trigger) return std::nullopt;
    EventAlarm alarm;
    const auto value = trigger->value();
    if (const auto moment = EventMoment::read(value)) {
        // RFC 5545, 3.8.6.3 has it in UTC; whoever leaves the Z out means nothing else.
        alarm.at = Date::fromSecondsSince1970(moment->local.time_since_epoch().count());
    } else if (const auto duration = EventDuration::read(value)) {
        alarm.before = -duration->total();
        const auto related = trigger->parameter("RELATED");
        alarm.isFromEnd = related && isSameName(*related, "END");
    } else {
        return std::nullopt;
    }
    alarm.action = inCapitals(part.text("ACTION").value_or("DISPLAY"));
    alarm.text = part.text("DESCRIPTION").value_or(std::string());
    for (auto& attendee : part.attendees())
        alarm.recipients.push_back(std::move(attendee.address));
    return alarm;
}

std::string EventPart::uid() const
{
    return text("UID").value_or(std::string());
}

std::optional<std::string> EventPart::url() const
{
    const auto line = component_.line("URL");
    if (!line) return std::nullopt;
    return line->value();
}

std::optional<std::string> EventPart::status() const
{
    auto status = text("STATUS");
    if (status) status = inCapitals(std::move(*status));
    return status;
}

std::vector<std::string> EventPart::categories() const
{
    std::vector<std::string> categories;
    for (const auto line : component_.lines()) {
        if (!line.is("CATEGORIES")) continue;
        for (auto& category : plainTexts(line.value()))
            if (!category.empty()) categories.push_back(std::move(category));
    }
    return categories;
}

std::optional<EventDuration> EventPart::duration() const
{
    const auto line = component_.line("DURATION");
    if (!line) return std::nullopt;
    return EventDuration::read(line->value());
}

bool EventPart::isAllDay() const
{
    const auto begin = start();
    return begin && begin->isDay();
}

EventRecurrence EventPart::recurrence() const
{
    EventRecurrence recurrence;
    const auto append = [](std::vector<EventMoment>& to, std::vector<EventMoment> moments) {
        to.insert(to.end(), std::move_iterator(moments.begin()), std::move_iterator(moments.end()));
    };
    for (const auto line : component_.lines()) {
        if (line.is("RRULE"))
            recurrence.rules.push_back(line.value());
        else if (line.is("RDATE"))
            append(recurrence.dates, momentsOf(line));
        else if (line.is("EXDATE"))
            append(recurrence.exceptions, momentsOf(line));
    }
    return recurrence;
}

std::optional<EventAttendee> EventPart::organizer() const
{
    const auto line = component_.line("ORGANIZER");
    if (!line) return std::nullopt;
    return attendeeOf(*line);
}

std::vector<EventAttendee> EventPart::attendees() const
{
    std::vector<EventAttendee> attendees;
    for (const auto line : component_.lines())
        if (line.is("ATTENDEE")) attendees.push_back(attendeeOf(line));
    return attendees;
}

std::vector<EventAlarm> EventPart::alarms() const
{
    std::vector<EventAlarm> alarms;
    for (const auto component : component_.components()) {
        if (!component.is("VALARM")) continue;
        if (auto alarm = alarmOf(component)) alarms.push_back(std::move(*alarm));
    }
    return alarms;
}

int EventPart::sequence() const
{
    const auto line = component_.line("SEQUENCE");
    if (!line) return 0;
    const auto value = line->value();
    int number = 0;
    std::from_chars(value.data(), value.data() + value.size(), number);
    return number < 0 ? 0 : number;
}

bool EventPart::isThisAndFuture() const
{
    const auto line = component_.line("RECURRENCE-ID");
    if (!line) return false;
    const auto range = line->parameter("RANGE");
    return range && isSameName(*range, "THISANDFUTURE");
}

std::optional<std::string> EventPart::text(std::string_view property) const
{
    const auto line = component_.line(property);
    if (!line) return std::nullopt;
    std::string buffer;
    return plainText(line->value(buffer));
}

std::optional<EventMoment> EventPart::moment(std::string_view property) const
{
    const auto line = component_.line(property);
    if (!line) return std::nullopt;
    std::string buffer;
    return EventMoment::read(line->value(buffer), zoneOf(*line));
}

} // namespace Tessel
