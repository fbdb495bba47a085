#include "Tessel/Session/Text/EditCheck.h"
#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/EventTimes.h"
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

/// The master's lines as those of the instance.
std::string instanceText(const EventText& event, const EventMoment& instance, TextZones& zones)
{
    const auto master = event.main();
    TextPatch patch(event.tree());
    PartEditor editor(event.tree(), master, patch);
    for (const auto* property : {"RRULE", "RDATE", "EXDATE", "EXRULE"})
        editor.clear(property);
    const auto start = *master.start();
    const auto end = master.writtenEnd();
    editor.setMoment("DTSTART", instance);
    if (end) editor.setMoment("DTEND", endAfterMove(start, *end, instance, zones));
    editor.setMoment("RECURRENCE-ID", instance);
    return patch.apply(master.component());
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
        if (own && keyOf(*master.start(), *own, zones) == key && !part.isThisAndFuture())
            patch.remove(part.component());
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
    if (edit.isRemoval) return removeInstance(event, instance, now, zones);
    if (found && !found->isThisAndFuture()) return editPart(event, *found, edit, now);

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
