#pragma once

#include "Tessel/Session/Text/PartEditor.h"
#include "Tessel/Session/Text/TextZones.h"

namespace Tessel {

/// When a part ends; see `EventText::end`.
std::optional<EventMoment> endOf(const EventPart& part, TextZones& zones);

/// From `start` to `end` by the clock where both are on one, else as time goes by.
std::chrono::seconds lengthBetween(
    const EventMoment& start, const EventMoment& end, TextZones& zones);

/// The end that goes with a new start: as long after it as before, a day or an hour where an event
/// begins or ceases to last all day.
EventMoment endAfterMove(const EventMoment& start, const EventMoment& end,
    const EventMoment& newStart, TextZones& zones);

/// Gives a part its times. `end` is none where the part is to keep its length. A failure tells why
/// the end cannot be.
std::optional<Failure> setTimes(
    PartEditor& editor, const EventMoment& start, const Change<EventMoment>& end, TextZones& zones);

} // namespace Tessel
