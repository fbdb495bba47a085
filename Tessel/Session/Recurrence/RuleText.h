#pragma once

#include "Tessel/Session/Recurrence/Moment.h"

#include <libical/ical.h>

#include <span>
#include <string>
#include <string_view>

namespace Tessel {

/// An RRULE's value, read by libical.
class RuleText {
public:
    explicit RuleText(std::string_view value);
    RuleText(const RuleText&) = delete;
    RuleText& operator=(const RuleText&) = delete;

    bool isReadable() const { return rule_.freq != ICAL_NO_RECURRENCE; }
    /// Without COUNT and UNTIL.
    const icalrecurrencetype& rule() const { return rule_; }
    std::int64_t interval() const { return interval_; }
    int count() const { return count_; } ///< 0 for none
    bool hasUntil() const { return until_.has_value(); }
    /// Whether UNTIL lies before a time on the clock of the series.
    bool isOver(const Moment& start, std::int64_t local) const;
    /// The last time on the clock of the series that UNTIL may let through.
    std::int64_t latest(const Moment& start) const;

    bool isWithinDay() const { return rule_.freq <= ICAL_HOURLY_RECURRENCE; }
    /// Whether it names days that no year has, such as 31 February, of which libical looks through
    /// every month of centuries.
    bool isImpossible(const Moment& start) const;

private:
    icalrecurrencetype rule_;
    std::string rscale_;
    int count_ = 0;
    std::int64_t interval_ = 1;
    std::optional<EventMoment> until_;
};

/// The values of a BY part.
std::span<const short> valuesOf(std::span<const short> part);

/// Whether BYSETPOS, if there is one, takes the time at `index` of `size` in its period.
bool isChosen(const icalrecurrencetype& rule, std::size_t index, std::size_t size);

/// The midnight at which the week of a time begins, by WKST.
std::int64_t weekOf(const icalrecurrencetype& rule, std::int64_t local);

icaltimetype libicalTime(std::int64_t local, bool isDay);
std::int64_t localOfLibical(const icaltimetype& time);

} // namespace Tessel
