#include "Tessel/Session/Text/EventEdit.h"

#include "Tessel/Session/Text/ContentLine.h"
#include "Tessel/Session/Text/EventPart.h"

#include <charconv>

namespace Tessel {

// The text of an edit is made of content lines like the texts that it is for: one component with a
// line for each value that is set, and one that names what is cleared.

namespace {

constexpr std::string_view outermost = "X-EVENT-EDIT";
constexpr std::string_view alarmLists[] = {"X-ALARMS", "X-ADDED-ALARMS", "X-REMOVED-ALARMS"};

class EditWriter {
public:
    std::string text;

    void begin(std::string_view name) { text += contentLine("BEGIN", {}, name); }
    void end(std::string_view name) { text += contentLine("END", {}, name); }
    void line(std::string_view name, std::string_view value, const TextParameters& parameters = {})
    {
        text += contentLine(name, parameters, value);
    }

    template <class T, class Write>
    void change(std::string_view name, const Change<T>& change, Write write)
    {
        if (change.isCleared())
            line("X-CLEARED", name);
        else if (change.set())
            write(*change.set());
    }
    void plain(std::string_view name, const Change<std::string>& change)
    {
        this->change(name, change, [&](const auto& value) { line(name, escapedText(value)); });
    }
    void moment(std::string_view name, const EventMoment& moment)
    {
        line(name, moment.value(), parametersOf(moment));
    }
    void moments(std::string_view name, const Change<std::vector<EventMoment>>& change)
    {
        this->change(name, change, [&](const auto& list) {
            for (const auto& one : list)
                moment(name, one);
        });
    }
    void attendee(std::string_view name, const EventAttendee& attendee)
    {
        TextParameters parameters;
        const auto add = [&](std::string_view parameter, const std::string& value) {
            if (!value.empty()) parameters.push_back({std::string(parameter), {value}});
        };
        add("CN", attendee.name);
        add("PARTSTAT", attendee.status);
        add("ROLE", attendee.role);
        add("CUTYPE", attendee.type);
        if (attendee.rsvp) add("RSVP", *attendee.rsvp ? "TRUE" : "FALSE");
        line(name, attendee.address, parameters);
    }
    void alarms(std::string_view name, const std::vector<EventAlarm>& alarms)
    {
        begin(name);
        for (const auto& alarm : alarms) {
            begin("VALARM");
            line("X-BEFORE", std::to_string(alarm.before.count()));
            if (alarm.isFromEnd) line("X-FROM-END", "TRUE");
            if (alarm.at) line("X-AT", std::to_string(alarm.at->millisecondsSince1970()));
            line("ACTION", escapedText(alarm.action));
            if (!alarm.text.empty()) line("DESCRIPTION", escapedText(alarm.text));
            for (const auto& recipient : alarm.recipients)
                line("ATTENDEE", recipient);
            end("VALARM");
        }
        end(name);
    }
};

std::optional<std::int64_t> numberOf(const TextLine& line)
{
    const auto value = line.value();
    std::int64_t number = 0;
    const auto end = std::from_chars(value.data(), value.data() + value.size(), number);
    if (end.ec != std::errc() || end.ptr != value.data() + value.size()) return std::nullopt;
    return number;
}

EventAlarm storedAlarm(const TextComponent& component)
{
    const EventPart part(component);
    EventAlarm alarm {.action = part.text("ACTION").value_or("DISPLAY"),
        .text = part.text("DESCRIPTION").value_or(std::string())};
    alarm.isFromEnd = component.line("X-FROM-END").has_value();
    for (const auto line : component.lines()) {
        if (line.is("ATTENDEE")) alarm.recipients.push_back(line.value());
        if (line.is("X-BEFORE")) alarm.before = std::chrono::seconds(numberOf(line).value_or(0));
        if (const auto at = line.is("X-AT") ? numberOf(line) : std::nullopt)
            alarm.at = Date::fromMillisecondsSince1970(*at);
    }
    return alarm;
}

std::vector<EventAlarm> storedAlarms(const TextComponent& list)
{
    std::vector<EventAlarm> alarms;
    for (const auto component : list.components())
        alarms.push_back(storedAlarm(component));
    return alarms;
}

class EditReader {
public:
    explicit EditReader(const TextComponent& component)
        : component_(component)
        , part_(component)
    {
    }

    bool isCleared(std::string_view name) const
    {
        for (const auto line : component_.lines())
            if (line.is("X-CLEARED") && line.value() == name) return true;
        return false;
    }
    template <class T>
    void change(std::string_view name, Change<T>& change, std::optional<T> value) const
    {
        if (isCleared(name))
            change = cleared;
        else if (value)
            change = std::move(*value);
    }
    void plain(std::string_view name, Change<std::string>& change) const
    {
        this->change(name, change, part_.text(name));
    }
    void moment(std::string_view name, Change<EventMoment>& change) const
    {
        this->change(name, change, part_.moment(name));
    }
    void moments(std::string_view name, Change<std::vector<EventMoment>>& change) const
    {
        std::vector<EventMoment> moments;
        for (const auto line : component_.lines())
            if (line.is(name))
                for (auto& one : momentsOf(line))
                    moments.push_back(std::move(one));
        if (!moments.empty() || isCleared(name)) change = std::move(moments);
    }

private:
    TextComponent component_;
    EventPart part_;
};

} // namespace

std::string EventEdit::text() const
{
    EditWriter out;
    out.begin(outermost);
    if (instance) out.moment("RECURRENCE-ID", *instance);
    if (andFollowing) out.line("X-AND-FOLLOWING", "TRUE");
    if (isRemoval) out.line("X-REMOVAL", "TRUE");
    out.plain("SUMMARY", summary);
    out.plain("DESCRIPTION", description);
    out.plain("LOCATION", location);
    out.plain("URL", url);
    out.plain("STATUS", status);
    out.change("CATEGORIES", categories, [&](const auto& list) {
        for (const auto& category : list)
            out.line("CATEGORIES", escapedText(category));
    });
    out.change("DTSTART", start, [&](const auto& moment) { out.moment("DTSTART", moment); });
    out.change("DTEND", end, [&](const auto& moment) { out.moment("DTEND", moment); });
    out.plain("RRULE", rule);
    out.moments("RDATE", dates);
    out.moments("EXDATE", exceptions);
    out.change("ORGANIZER", organizer, [&](const auto& one) { out.attendee("ORGANIZER", one); });
    for (const auto& attendee : attendees)
        out.attendee("ATTENDEE", attendee);
    for (const auto& address : removedAttendees)
        out.line("X-REMOVED-ATTENDEE", address);
    if (alarms.set()) out.alarms(alarmLists[0], *alarms.set());
    if (!addedAlarms.empty()) out.alarms(alarmLists[1], addedAlarms);
    if (!removedAlarms.empty()) out.alarms(alarmLists[2], removedAlarms);
    out.end(outermost);
    return std::move(out.text);
}

Result<EventEdit> EventEdit::read(std::string text)
{
    const auto tree = TextTree::read(std::move(text));
    if (!tree) return tree.failure();
    const auto component = *tree.value().components().begin();
    if (!component.is(outermost))
        return Failure {
            .kind = FailureKind::malformed, .reason = "The text is no edit of an event."};

    EventEdit edit;
    const EditReader in(component);
    edit.instance = EventPart(component).recurrenceId();
    edit.andFollowing = component.line("X-AND-FOLLOWING").has_value();
    edit.isRemoval = component.line("X-REMOVAL").has_value();
    in.plain("SUMMARY", edit.summary);
    in.plain("DESCRIPTION", edit.description);
    in.plain("LOCATION", edit.location);
    in.plain("URL", edit.url);
    in.plain("STATUS", edit.status);
    std::vector<std::string> categories;
    for (const auto line : component.lines())
        if (line.is("CATEGORIES")) categories.push_back(plainText(line.value()));
    if (!categories.empty() || in.isCleared("CATEGORIES")) edit.categories = std::move(categories);
    in.moment("DTSTART", edit.start);
    in.moment("DTEND", edit.end);
    in.plain("RRULE", edit.rule);
    in.moments("RDATE", edit.dates);
    in.moments("EXDATE", edit.exceptions);
    in.change("ORGANIZER", edit.organizer, EventPart(component).organizer());
    edit.attendees = EventPart(component).attendees();
    for (const auto line : component.lines())
        if (line.is("X-REMOVED-ATTENDEE")) edit.removedAttendees.push_back(line.value());
    for (const auto list : component.components()) {
        if (list.is(alarmLists[0])) edit.alarms = storedAlarms(list);
        if (list.is(alarmLists[1])) edit.addedAlarms = storedAlarms(list);
        if (list.is(alarmLists[2])) edit.removedAlarms = storedAlarms(list);
    }
    return edit;
}

} // namespace Tessel
