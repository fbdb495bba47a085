#pragma once

#include "Tessel/Session/Text/EventMoment.h"

#include <cstdint>
#include <optional>

namespace Tessel {

/// One event, task or journal entry on one of its days. Times are milliseconds since 1970.
struct Instance {
    std::int64_t start
        = 0; ///< UTC; for days and floating times as the clock of the given zone has it
    std::int64_t end = 0; ///< not before `start`; of days the moment at which the last one is over
    /// What clocks show then where the event is, written as if that were UTC: of an all-day event
    /// the days themselves, from midnight to midnight.
    std::int64_t localStart = 0;
    std::int64_t localEnd = 0; ///< likewise
    bool isAllDay = false; ///< it lasts whole days
    bool isFloating = false; ///< at that time of the clock wherever one is; so are all-day events
    bool isCancelled = false; ///< it, or its series
    /// Which instance of the series this is, in the form that RECURRENCE-ID has in this text, and
    /// `EventEdit::instance` takes; none for what does not repeat.
    std::optional<EventMoment> recurrenceId = {};
    /// Which of the components directly in the text's calendars describes it, counted from 0: the
    /// series' own, or one that changes this instance or this and those that follow.
    std::uint32_t component = 0;
    bool isChanged = false; ///< `component` has a RECURRENCE-ID
};

} // namespace Tessel
