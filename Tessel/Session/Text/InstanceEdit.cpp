#include "Tessel/Session/Text/EditCheck.h"
#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/EventTimes.h"
#include "Tessel/Session/Text/FollowingChange.h"
#include "Tessel/Session/Text/PartEditor.h"
#include "Tessel/Session/Text/SeriesEdit.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

bool isException(
    const EventText& event, const EventMoment& start, local_seconds key, TextZones& zones)
{
    const auto exceptions = event.main().recurrence().exceptions;
    return std::any_of(exceptions.begin(), exceptions.end(), [&](const EventMoment& exception) {
        if (exception.isDay() && !start.isDay()) return exception.local == floor<days>(key);
        return keyOf(start, exception, zones) == key;
    });
}

/// When an instance ends that RDATE gives with an end of its own.
std::optional<EventMoment> endOfPeriod(
    const EventText& event, const EventMoment& instance, TextZones& zones)
{
    for (const auto line : event.main().component().lines()) {
        if (!line.is("RDATE")) continue;
        const auto zone = line.parameter("TZID").value_or(std::string());
        const auto value = line.value();
        for (std::size_t at = 0; at < value.size();) {
            const auto end = std::min(value.find(',', at), value.size());
            const auto slash = std::min(value.find('/', at), end);
            const auto start = EventMoment::read(value.substr(at, slash - at), zone);
            const auto last
                = value.substr(std::min(slash + 1, end), end - std::min(slash + 1, end));
            at = end + 1;
            if (!start || last.empty() || keyOf(instance, *start, zones) != instance.local)
                continue;
            const auto duration = EventDuration::read(last);
            const auto written
                = duration ? zones.after(*start, *duration) : EventMoment::read(last, zone);
            if (written) return inFormOf(instance, zones.localAs(instance, *written));
        }
    }
    return std::nullopt;
}

/// What describes the instance, as a part of its own.
std::string instanceText(const EventText& event, const EventMoment& instance, TextZones& zones)
{
    const auto change = changeFor(event, instance.local, zones);
    const auto part = change.value_or(event.main());
    TextPatch patch(event.tree());
    PartEditor editor(event.tree(), part, patch);
    for (const auto* property : {"RRULE", "RDATE", "EXDATE", "EXRULE"})
        editor.clear(property);
    const auto start = change ? startBy(*change, instance, zones) : instance;
    const auto end = part.writtenEnd();
    const auto ownEnd = change ? std::nullopt : endOfPeriod(event, instance, zones);
    editor.setMoment("DTSTART", start);
    if (ownEnd) editor.clear("DURATION");
    if (ownEnd)
        editor.setMoment("DTEND", *ownEnd);
    else if (end)
        editor.setMoment("DTEND", endAfterMove(part.start().value_or(start), *end, start, zones));
    if (change) // without its RANGE
        editor.replace(
            *part.component().line("RECURRENCE-ID"), parametersOf(instance), instance.value());
    else
        editor.setMoment("RECURRENCE-ID", instance);
    return patch.apply(part.component());
}

TextLine lastLineOfEvents(const EventText& event)
{
    const auto overrides = event.overrides();
    return (overrides.empty() ? event.main() : overrides.back()).component().end();
}

Result<EventText> removeInstance(
    const EventText& event, const EventMoment& instance, const Date& now, TextZones& zones)
{
    const auto master = event.main();
    TextPatch patch(event.tree());
    const auto key = keyOf(*master.start(), instance, zones);
    for (const auto& part : event.overrides()) {
        const auto own = part.recurrenceId();
        if (own && keyOf(*master.start(), *own, zones) == key) patch.remove(part.component());
    }
    PartEditor editor(event.tree(), master, patch);
    const auto moment = inFormOf(*master.start(), key);
    editor.add("EXDATE", parametersOf(moment), moment.value());
    editor.countUp();
    editor.finish(now);
    return EventText::read(patch.apply());
}

/// Of a text that holds single instances only.
Result<EventText> removeLoneInstance(const EventText& event, const EventPart& part)
{
    if (event.overrides().size() == 1)
        return malformedEdit("This is the only instance of the text: remove its resource.");
    TextPatch patch(event.tree());
    patch.remove(part.component());
    return EventText::read(patch.apply());
}

/// A second part for the same instance would be a second instance.
Failure describesMore(const EventMoment& instance)
{
    return {.kind = FailureKind::unsupported,
        .reason = "What is different on " + instance.value()
            + " is so on all days that follow, too: change or remove these with it."};
}

Result<EventText> editPart(
    const EventText& event, const EventPart& part, const EventEdit& edit, const Date& now)
{
    TextZones zones(event.tree());
    TextPatch patch(event.tree());
    PartEditor editor(event.tree(), part, patch);
    applyFields(editor, edit);
    const auto start = part.start();
    const auto* const newStart = edit.start.set() ? edit.start.set() : start ? &*start : nullptr;
    if (newStart)
        if (auto fault = setTimes(editor, *newStart, edit.end, zones)) return *fault;
    editor.finish(now);
    if (patch.isEmpty()) return event;
    return withZones(patch.apply(), edit);
}

} // namespace

Result<EventText> editInstance(const EventText& event, const EventEdit& edit, const Date& now)
{
    const auto& instance = *edit.instance;
    const auto found = event.overrideOf(instance);
    const auto master = event.main();
    if (master.recurrenceId()) {
        if (!found) return noSuchInstance(instance);
        if (edit.isRemoval) return removeLoneInstance(event, *found);
        return editPart(event, *found, edit, now);
    }
    const auto start = master.start();
    if (!start) return noSuchInstance(instance);
    TextZones zones(event.tree());
    const auto key = keyOf(*start, instance, zones);
    if (!event.isSeries() && !found) {
        if (key != start->local) return noSuchInstance(instance);
        if (edit.isRemoval)
            return malformedEdit("This is the only instance of the event: remove its resource.");
        return editPart(event, master, edit, now);
    }
    if (key < start->local || isException(event, *start, key, zones))
        return noSuchInstance(instance);
    if (found && found->isThisAndFuture()) return describesMore(instance);
    if (edit.isRemoval) return removeInstance(event, instance, now, zones);
    if (found) return editPart(event, *found, edit, now);

    TextPatch patch(event.tree());
    patch.insertAfter(lastLineOfEvents(event), instanceText(event, inFormOf(*start, key), zones));
    auto added = EventText::read(patch.apply());
    if (!added) return added;
    const auto own = added.value().overrides().back();
    auto edited = editPart(added.value(), own, edit, now);
    // Nothing was different: then the instance needs no part of its own.
    if (edited && edited.value().text() == added.value().text()) return event;
    return edited;
}

} // namespace Tessel
