#pragma once

#include "Tessel/Session/Text/EventText.h"

namespace Tessel {

class PartEditor;
struct SeriesMove;

// What `EventText::apply` is made of. Edits are checked by then.

/// An edit of the whole event or series.
Result<EventText> editSeries(const EventText& event, const EventEdit& edit, const Date& now);

/// An edit of the one instance that the edit names.
Result<EventText> editInstance(const EventText& event, const EventEdit& edit, const Date& now);

/// An edit of an instance and of all that follow.
Result<EditedEvent> editFollowing(const EventText& event, const EventEdit& edit, const Date& now);

Failure noSuchInstance(const EventMoment& instance);

/// Writes what the edit sets, times and recurrence aside. Of an instance that is different from
/// its series, `master`, only what it has as the series has it.
void applyFields(PartEditor& editor, const EventEdit& edit, const EventPart* master = nullptr);

/// The series without the exceptions, and without what is different on single days, of days that
/// its start, rules and further dates do not give.
Result<EventText> withoutLostInstances(const EventText& event);

/// Writes the rule, the dates and the exceptions that the edit sets; those that it leaves go with
/// the start of the series.
std::optional<Failure> setRecurrence(
    PartEditor& editor, const EventEdit& edit, const SeriesMove& move, TextZones& zones);

/// The changed text with the definitions of the zones that the edit needs.
Result<EventText> withZones(std::string text, const EventEdit& edit);

/// An event that nobody has seen yet: without the lines that count changes.
Result<EventText> asNew(const EventText& event);

} // namespace Tessel
