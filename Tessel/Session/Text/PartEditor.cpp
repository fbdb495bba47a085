#include "Tessel/Session/Text/PartEditor.h"

#include "Tessel/Session/Text/ContentLine.h"

#include <algorithm>

namespace Tessel {

namespace {

constexpr std::string_view mailto = "mailto:";

TextLine placeForLines(const TextComponent& component)
{
    for (const auto inner : component.components())
        return inner.begin();
    return component.end();
}

std::string_view withoutMailto(std::string_view address)
{
    if (isSameName(address.substr(0, mailto.size()), mailto)) address.remove_prefix(mailto.size());
    return address;
}

std::string uriOf(std::string_view address)
{
    const bool isMail = address.find('@') != address.npos && address.find(':') == address.npos;
    return std::string(isMail ? mailto : "") + std::string(address);
}

void setParameter(TextParameters& parameters, std::string_view name, std::string_view value)
{
    if (value.empty()) return;
    for (auto& parameter : parameters) {
        if (!isSameName(parameter.name, name)) continue;
        parameter.values = {std::string(value)};
        return;
    }
    parameters.push_back({std::string(name), {std::string(value)}});
}

} // namespace

bool isAlarm(const EventAlarm& alarm, const EventAlarm& wanted)
{
    const bool isSameTime = alarm.at == wanted.at
        && (alarm.at || (alarm.before == wanted.before && alarm.isFromEnd == wanted.isFromEnd));
    return isSameTime && isSameName(alarm.action, wanted.action)
        && (wanted.text.empty() || alarm.text == wanted.text)
        && (wanted.recipients.empty() || alarm.recipients == wanted.recipients);
}

bool isSameAddress(std::string_view a, std::string_view b)
{
    return isSameName(withoutMailto(a), withoutMailto(b));
}

PartEditor::PartEditor(const TextTree& tree, const EventPart& part, TextPatch& patch)
    : lineEnd_(tree.lineEnd())
    , part_(part)
    , patch_(patch)
    , beforeComponents_(placeForLines(part.component()))
{
}

std::string PartEditor::line(
    std::string_view name, const TextParameters& parameters, std::string_view value) const
{
    return contentLine(name, parameters, value, lineEnd_);
}

void PartEditor::replace(
    const TextLine& line, const TextParameters& parameters, std::string_view value)
{
    patch_.replace(line, this->line(line.name(), parameters, value));
    isChanged_ = true;
}

void PartEditor::remove(const TextLine& line)
{
    patch_.remove(line);
    isChanged_ = true;
}

void PartEditor::add(
    std::string_view property, const TextParameters& parameters, std::string_view value)
{
    patch_.insertBefore(beforeComponents_, line(property, parameters, value));
    isChanged_ = true;
}

void PartEditor::clear(std::string_view property)
{
    for (const auto line : part_.component().lines())
        if (line.is(property)) remove(line);
}

/// The first line of the property gets the value, others of the same name go.
void PartEditor::set(std::string_view property, const TextParameters& parameters,
    std::string_view value, std::initializer_list<std::string_view> dropped)
{
    bool isSet = false;
    for (const auto line : part_.component().lines()) {
        if (!line.is(property)) continue;
        if (isSet) {
            remove(line);
            continue;
        }
        auto kept = line.parameters();
        std::erase_if(kept, [&](const TextParameter& parameter) {
            return std::any_of(dropped.begin(), dropped.end(),
                [&](std::string_view name) { return isSameName(name, parameter.name); });
        });
        kept.insert(kept.end(), parameters.begin(), parameters.end());
        replace(line, kept, value);
        isSet = true;
    }
    if (!isSet) add(property, parameters, value);
}

void PartEditor::setText(std::string_view property, const Change<std::string>& change)
{
    if (property == "SUMMARY" && change.set()) summary_ = *change.set();
    if (change.isLeft()) return;
    const auto value = change.set() ? escapedText(*change.set()) : std::string();
    if (value.empty()) return clear(property);
    if (part_.text(property) != plainText(value))
        set(property, {}, value, {"ALTREP", "ENCODING", "CHARSET"});
}

void PartEditor::setPlain(std::string_view property, const Change<std::string>& change)
{
    if (change.isLeft()) return;
    if (!change.set() || change.set()->empty()) return clear(property);
    const auto line = part_.component().line(property);
    if (!line || line->value() != *change.set()) set(property, {}, *change.set(), {});
}

void PartEditor::setMoment(std::string_view property, const EventMoment& moment)
{
    if (part_.moment(property) != moment)
        set(property, parametersOf(moment), moment.value(), {"VALUE", "TZID"});
}

void PartEditor::setDuration(const EventDuration& duration)
{
    if (part_.duration() != duration) set("DURATION", {}, duration.value(), {});
}

void PartEditor::setMoments(std::string_view property, const std::vector<EventMoment>& moments)
{
    clear(property);
    for (auto next = moments.begin(); next != moments.end();) {
        // One line for what has the same parameters.
        const auto alike = [&](const EventMoment& other) {
            return other.kind == next->kind && other.zone == next->zone;
        };
        const auto end = std::find_if_not(next, moments.end(), alike);
        const auto parameters = parametersOf(*next);
        std::string value;
        for (; next != end; ++next)
            value.append(value.empty() ? "" : ",").append(next->value());
        add(property, parameters, value);
    }
}

void PartEditor::keepMoments(
    const TextLine& line, const std::function<bool(const EventMoment&)>& stays)
{
    const auto zone = line.parameter("TZID").value_or(std::string());
    const auto value = line.value();
    std::string kept;
    for (std::string_view rest = value;;) {
        const auto end = rest.find(',');
        const auto one = rest.substr(0, end);
        const auto moment = EventMoment::read(one.substr(0, one.find('/')), zone);
        if (!moment || stays(*moment)) kept.append(kept.empty() ? "" : ",").append(one);
        if (end == rest.npos) break;
        rest.remove_prefix(end + 1);
    }
    if (kept.empty())
        remove(line);
    else if (kept != value)
        replace(line, line.parameters(), kept);
}

void PartEditor::setCategories(const std::vector<std::string>& categories)
{
    if (part_.categories() == categories) return;
    std::string value;
    for (const auto& category : categories)
        value.append(value.empty() ? "" : ",").append(escapedText(category));
    if (value.empty())
        clear("CATEGORIES");
    else
        set("CATEGORIES", {}, value, {});
}

void PartEditor::setAttendee(
    std::string_view property, std::optional<TextLine> line, const EventAttendee& attendee)
{
    auto parameters = line ? line->parameters() : TextParameters();
    const auto before = parameters;
    setParameter(parameters, "CN", attendee.name);
    setParameter(parameters, "CUTYPE", attendee.type);
    setParameter(parameters, "ROLE", attendee.role);
    setParameter(parameters, "PARTSTAT", attendee.status);
    if (attendee.rsvp) setParameter(parameters, "RSVP", *attendee.rsvp ? "TRUE" : "FALSE");
    const bool isSame = line && isSameAddress(line->value(), attendee.address);
    if (!line)
        add(property, parameters, uriOf(attendee.address));
    else if (!isSame || parameters != before)
        replace(*line, parameters, isSame ? line->value() : uriOf(attendee.address));
}

void PartEditor::setOrganizer(const EventAttendee& organizer)
{
    setAttendee("ORGANIZER", part_.component().line("ORGANIZER"), organizer);
}

void PartEditor::putAttendee(const EventAttendee& attendee)
{
    for (const auto line : part_.component().lines()) {
        if (line.is("ATTENDEE") && isSameAddress(line.value(), attendee.address))
            return setAttendee("ATTENDEE", line, attendee);
    }
    setAttendee("ATTENDEE", std::nullopt, attendee);
}

void PartEditor::removeAttendee(std::string_view address)
{
    for (const auto line : part_.component().lines())
        if (line.is("ATTENDEE") && isSameAddress(line.value(), address)) remove(line);
}

void PartEditor::setAlarms(const std::vector<EventAlarm>& alarms)
{
    auto missing = alarms;
    for (const auto component : part_.component().components()) {
        if (!component.is("VALARM")) continue;
        const auto alarm = alarmOf(component);
        const auto wanted = std::find_if(missing.begin(), missing.end(),
            [&](const EventAlarm& one) { return alarm && isAlarm(*alarm, one); });
        if (wanted != missing.end()) {
            missing.erase(wanted);
        } else {
            patch_.remove(component);
            isChanged_ = true;
        }
    }
    for (const auto& alarm : missing)
        addAlarm(alarm);
}

void PartEditor::addAlarm(const EventAlarm& alarm)
{
    patch_.insertBefore(part_.component().end(), alarmText(alarm));
    isChanged_ = true;
}

void PartEditor::removeAlarm(const EventAlarm& wanted)
{
    for (const auto component : part_.component().components()) {
        if (!component.is("VALARM")) continue;
        const auto alarm = alarmOf(component);
        if (!alarm || !isAlarm(*alarm, wanted)) continue;
        patch_.remove(component);
        isChanged_ = true;
    }
}

std::string PartEditor::alarmText(const EventAlarm& alarm) const
{
    auto text = line("BEGIN", {}, "VALARM") + line("ACTION", {}, alarm.action);
    if (alarm.at) {
        text += line("TRIGGER", {{"VALUE", {"DATE-TIME"}}}, EventMoment::utc(*alarm.at).value());
    } else {
        // Days by the clock would move an alarm where clocks change; hours do not.
        const auto trigger = EventDuration {{}, -alarm.before}.value();
        text += line("TRIGGER",
            alarm.isFromEnd ? TextParameters {{"RELATED", {"END"}}} : TextParameters(), trigger);
    }
    auto shown = alarm.text.empty() ? summary_ : alarm.text;
    if (shown.empty()) shown = part_.summary().value_or(std::string());
    // RFC 5545, 3.6.6 asks for both in every such alarm, whatever the event has.
    if (shown.empty()) shown = "Reminder";
    if (alarm.action != "AUDIO") text += line("DESCRIPTION", {}, escapedText(shown));
    if (alarm.action == "EMAIL") text += line("SUMMARY", {}, escapedText(shown));
    for (const auto& recipient : alarm.recipients)
        text += line("ATTENDEE", {}, uriOf(recipient));
    return text + line("END", {}, "VALARM");
}

void PartEditor::finish(const Date& now)
{
    if (!isChanged_) return;
    const auto moment = EventMoment::utc(now);
    setMoment("DTSTAMP", moment);
    setMoment("LAST-MODIFIED", moment);
    if (isSignificant_)
        set("SEQUENCE", {}, std::to_string(std::int64_t {part_.sequence()} + 1), {});
}

} // namespace Tessel
