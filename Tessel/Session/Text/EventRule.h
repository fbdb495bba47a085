#pragma once

#include "Tessel/Session/Text/TextZones.h"

namespace Tessel {

/// From one start of a series to another: what counts from the start goes with it.
struct SeriesMove {
    EventMoment from;
    EventMoment to;

    bool isNone() const { return from == to; }
    std::chrono::days days() const;

    /// Where an instance's moment goes: an exception, a further date, a RECURRENCE-ID. In the form
    /// of `to`, but in UTC where it was.
    EventMoment moved(const EventMoment& moment, TextZones& zones) const;
};

/// `local`, a time on the clock of `form`, in its form.
EventMoment inFormOf(const EventMoment& form, std::chrono::local_seconds local);
/// The moment of an instance in the form that the series' start has.
EventMoment instanceInFormOf(
    const EventMoment& start, const EventMoment& instance, TextZones& zones);

/// When an instance is, on the clock of the start of the series: what instances are compared by.
std::chrono::local_seconds keyOf(
    const EventMoment& start, const EventMoment& instance, TextZones& zones);

/// Where a date of a series is among those of its rule.
struct PlaceInRule {
    int before; ///< so many are earlier; the start of the series is one, as it counts for COUNT
    bool isGiven; ///< whether the rule has the date
};

/// A value of RRULE (RFC 5545, 3.3.10), as its parts.
class EventRule {
public:
    /// None where the value is no rule.
    static std::optional<EventRule> read(std::string_view value);

    std::string value() const;
    std::optional<std::string> part(std::string_view name) const;
    void set(std::string_view name, std::string value);
    void remove(std::string_view name);

    /// Makes it the rule of a series that has moved: UNTIL in the form that the start demands, the
    /// days of a weekly rule, the one day of a monthly or yearly one that the start had, and hours,
    /// minutes and seconds. False where the rule cannot go with the start.
    bool move(const SeriesMove& move, TextZones& zones);
    /// Lets it end before an instance, a moment in the form of `start`.
    void endBefore(const EventMoment& instance, TextZones& zones);
    /// COUNT; none without.
    std::optional<int> count() const;
    /// Where a date on the clock of `start` is; none where it takes too long to find out.
    std::optional<PlaceInRule> placeOf(
        const EventMoment& start, std::chrono::local_seconds date, TextZones& zones) const;
    /// The start, and the dates that it gives until `end`, both on the clock of `start`; none where
    /// it takes too long to find them.
    std::optional<std::vector<std::chrono::local_seconds>> datesOf(
        const EventMoment& start, std::chrono::local_seconds end, TextZones& zones) const;

private:
    void moveUntil(const SeriesMove& move, TextZones& zones);
    void moveDays(const SeriesMove& move);
    bool moveTimes(const SeriesMove& move);
    /// All of its dates until `end`, COUNT and UNTIL aside, unless the visitor says no. False where
    /// it takes too long to find them.
    bool visit(const EventMoment& start, std::chrono::local_seconds end,
        const std::function<bool(std::chrono::local_seconds date)>& visitor) const;
    bool isOver(const EventMoment& start, std::chrono::local_seconds date, TextZones& zones) const;

    std::vector<std::pair<std::string, std::string>> parts_;
};

} // namespace Tessel
