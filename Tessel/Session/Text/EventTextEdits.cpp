#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/Session/Text/EditCheck.h"
#include "Tessel/Session/Text/EventText.h"
#include "Tessel/Session/Text/SeriesEdit.h"
#include "Tessel/Session/Text/TextPatch.h"

// What EventText makes of edits: apart from its reading, on which edits are built.
namespace Tessel {

namespace {

/// Cyrus refuses what begins and does not last.
EventEdit withEnd(EventEdit edit)
{
    const auto* const start = edit.start.set();
    if (start->isDay() || !edit.end.isLeft()) return edit;
    auto end = *start;
    end.local += std::chrono::hours(1);
    edit.end = end;
    return edit;
}

} // namespace

Result<EventText> EventText::make(const EventEdit& edit, const Date& now)
{
    if (!edit.start.set()) return malformedEdit("A new event needs a start.");
    if (edit.instance) return malformedEdit("A new event has no instances yet.");
    const auto moment = EventMoment::utc(now).value();
    auto empty = read("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tessel//Session//EN\r\n"
                      "BEGIN:VEVENT\r\nUID:"
        + makeUUID() + "\r\nDTSTAMP:" + moment + "\r\nCREATED:" + moment
        + "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
    TextZones zones(empty.value().tree());
    if (auto fault = faultOf(edit, zones)) return *fault;
    auto made = editSeries(empty.value(), withEnd(edit), now);
    if (!made) return made;
    return asNew(made.value());
}

Result<EventText> asNew(const EventText& event)
{
    TextPatch patch(event.tree());
    auto parts = event.overrides();
    parts.push_back(event.main());
    for (const auto& part : parts) {
        for (const auto line : part.component().lines())
            if (line.is("SEQUENCE") || line.is("LAST-MODIFIED")) patch.remove(line);
    }
    return EventText::read(patch.apply());
}

Result<EditedEvent> EventText::apply(const EventEdit& edit, const Date& now) const
{
    TextZones zones(tree_);
    if (auto fault = faultOf(edit, zones)) return *fault;
    if (edit.andFollowing) return editFollowing(*this, edit, now);
    auto edited = edit.instance ? editInstance(*this, edit, now) : editSeries(*this, edit, now);
    if (!edited) return edited.failure();
    return EditedEvent {std::move(edited).value()};
}

} // namespace Tessel
