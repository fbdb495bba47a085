#include "Tessel/Session/Text/FollowingChange.h"

#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/EventTimes.h"
#include "Tessel/Session/Text/SeriesEdit.h"

namespace Tessel {

using namespace std::chrono;

std::optional<EventPart> changeFor(const EventText& event, local_seconds key, TextZones& zones)
{
    const auto start = event.main().start();
    if (!start) return std::nullopt;
    std::optional<EventPart> latest;
    local_seconds since {};
    for (const auto& part : event.overrides()) {
        const auto instance = part.recurrenceId();
        if (!instance || !part.isThisAndFuture()) continue;
        const auto own = keyOf(*start, *instance, zones);
        if (own > key || (latest && own <= since)) continue;
        latest = part;
        since = own;
    }
    return latest;
}

EventMoment startBy(const EventPart& change, const EventMoment& instance, TextZones& zones)
{
    const auto first = *change.recurrenceId();
    const auto start = change.start().value_or(first);
    return inFormOf(
        start, zones.localAs(start, instance) + (start.local - zones.localAs(start, first)));
}

Result<EventText> withChangeAsMain(const EventText& event)
{
    TextZones zones(event.tree());
    const auto master = event.main();
    const auto first = *master.start();
    const auto change = changeFor(event, first.local, zones);
    if (!change) return event;
    const SeriesMove move {first, startBy(*change, first, zones)};

    TextPatch patch(event.tree());
    PartEditor editor(event.tree(), *change, patch);
    editor.clear("RECURRENCE-ID");
    const auto start = change->start().value_or(move.to);
    if (const auto end = change->writtenEnd())
        editor.setMoment("DTEND", endAfterMove(start, *end, move.to, zones));
    editor.setMoment("DTSTART", move.to);
    for (const auto line : master.component().lines()) {
        if (line.is("RRULE") || line.is("RDATE") || line.is("EXDATE") || line.is("EXRULE"))
            editor.add(line.name(), line.parameters(), line.value());
    }
    patch.remove(master.component());
    for (const auto& part : event.overrides()) {
        const auto instance = part.recurrenceId();
        if (!instance || part.component() == change->component()) continue;
        PartEditor own(event.tree(), part, patch);
        own.setMoment(
            "RECURRENCE-ID", instanceInFormOf(move.to, move.moved(*instance, zones), zones));
    }
    auto made = EventText::read(patch.apply());
    if (!made) return made;

    TextPatch moved(made.value().tree());
    PartEditor mover(made.value().tree(), made.value().main(), moved);
    if (auto fault = setRecurrence(mover, {}, move, zones)) return *fault;
    return EventText::read(moved.apply());
}

} // namespace Tessel
