#pragma once

#include "Tessel/Session/Recurrence/RuleText.h"
#include "Tessel/Session/Recurrence/TimeSource.h"

#include <memory>
#include <optional>

namespace Tessel {

/// The times of one RRULE (RFC 5545, 3.3.10) on the clock of the series, in milliseconds since 1970
/// as if that were UTC. Which days a rule has is libical's business; hours, minutes and seconds of
/// rules that repeat within the day, COUNT, UNTIL and the bounds of all that are done here.
class RuleIterator {
public:
    /// The times in [`from`, `to`].
    RuleIterator(const RuleText& rule, const Moment& start, std::int64_t from, std::int64_t to);

    /// The next one; none at the end, or when `Limits::recurrenceSteps` are used up.
    std::optional<std::int64_t> next();
    /// Whether COUNT has been reached.
    bool isCounted() const { return counted_ >= rule_.count(); }

private:
    const RuleText& rule_;
    Moment start_;
    std::int64_t from_;
    std::int64_t to_;
    std::unique_ptr<TimeSource> source_;
    std::int64_t counted_ = 0;
};

/// The latest time that the rule may have, on the clock of the series; none for one that goes on
/// for ever, or so long that nobody has counted.
std::optional<std::int64_t> endOfRule(const RuleText& rule, const Moment& start);

} // namespace Tessel
