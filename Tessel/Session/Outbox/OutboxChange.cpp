#include "Tessel/Session/Outbox/OutboxChange.h"

#include "Tessel/Session/Exchange/Href.h"
#include "Tessel/Session/Store/CalendarText.h"
#include "Tessel/Session/Text/EventText.h"
#include "Tessel/Session/Writes/MoveEvent.h"

namespace Tessel {

std::string folderOf(const std::string& place)
{
    return place.substr(0, place.rfind('/') + 1);
}

bool liesIn(const std::string& place, const std::string& calendar)
{
    return isSameCalendar(folderOf(place), calendar);
}

bool isSameCalendar(const std::string& a, const std::string& b)
{
    const auto withSlash = [](const std::string& href) {
        return normalPath(href.ends_with('/') ? href : href + "/");
    };
    return withSlash(a) == withSlash(b);
}

std::string placeAfter(const PendingChange& change)
{
    return change.kind == ChangeKind::move ? placeOfMoved(change.href, change.destination)
                                           : change.href;
}

std::string textAfter(const PendingChange& change)
{
    if (change.kind == ChangeKind::remove) return {};
    if (change.kind == ChangeKind::move) return change.baseText;
    if (change.kind == ChangeKind::create || isWholeText(change)) return change.content;
    const auto event = EventText::read(change.baseText);
    const auto edit = EventEdit::read(change.content);
    if (!event || !edit) return change.baseText;
    const auto edited = event.value().apply(edit.value());
    return edited ? edited.value().event.text() : change.baseText;
}

bool isSamePlace(const std::string& a, const std::string& b)
{
    return a == b || normalPath(a) == normalPath(b);
}

bool concerns(const PendingChange& change, const std::string& place)
{
    return isSamePlace(change.href, place) || isSamePlace(placeAfter(change), place);
}

bool isUntouched(const PendingChange& change)
{
    return change.state == ChangeState::waiting && change.attempts == 0;
}

bool isWholeText(const PendingChange& change)
{
    return isCalendarText(change.content);
}

} // namespace Tessel
