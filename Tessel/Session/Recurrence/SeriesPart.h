#pragma once

#include "Tessel/Session/Recurrence/Moment.h"
#include "Tessel/Session/Recurrence/SeriesZones.h"
#include "Tessel/Session/Text/EventDuration.h"

#include <vector>

namespace Tessel {

/// What an instance is as long as: up to a moment, or for a time. Without either it is a day long
/// where it begins with a day, else it takes no time.
struct Length {
    std::optional<Moment> end = {};
    std::optional<EventDuration> duration = {};
};

/// A date that RDATE adds; of a period with a length of its own.
struct AddedDate {
    Moment start {};
    std::optional<Length> length;
};

/// One component of a calendar object as far as it says on which days it is.
struct SeriesPart {
    std::uint32_t component = 0; ///< as `Instance::component`
    std::string uid;
    Moment start {}; ///< of a task without one its DUE
    Length length;
    std::optional<EventMoment> recurrenceId; ///< as it is written
    std::optional<Moment> id; ///< of `recurrenceId`
    bool isForFollowing = false; ///< RANGE=THISANDFUTURE
    bool isCancelled = false;
    std::string tzid; ///< of `start`
    std::vector<std::string> rules;
    std::vector<std::string> exceptionRules; ///< EXRULE (RFC 2445, 4.8.5.2)
    std::vector<AddedDate> added;
    std::vector<Moment> excluded;

    bool isRepeating() const { return !rules.empty() || !added.empty(); }
};

/// Events, tasks and journal entries of a text that have a place in time; `zones` has to live as
/// long as they do. An event whose start cannot be read, or is not there, is left out beside
/// events of other UIDs, and else `malformed`; a single instance is when its RECURRENCE-ID says
/// then.
Result<std::vector<SeriesPart>> readParts(const TextTree& tree, SeriesZones& zones);

struct Span {
    std::int64_t start;
    std::int64_t end; ///< never before the start
    std::int64_t localEnd; ///< on the clock of the start
};
/// Of an instance that begins at `start`, and of which `length` is that of a component that begins
/// at `first`.
Span spanOf(const Moment& start, const Moment& first, const Length& length);

} // namespace Tessel
