#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/PartEditor.h"
#include "Tessel/Session/Text/SeriesEdit.h"

#include <algorithm>
#include <unordered_set>

namespace Tessel {

using namespace std::chrono;

namespace {

/// What start, rules and further dates of a series give, exceptions or not, as far as moments of
/// the text may name it.
class GivenInstances {
public:
    GivenInstances(const EventText& event, const EventMoment& start)
        : start_(start)
        , zones_(event.tree())
    {
        const auto recurrence = event.main().recurrence();
        dates_.insert(start.local.time_since_epoch().count());
        for (const auto& date : recurrence.dates)
            dates_.insert(numberOf(date));
        const auto end = lastNamed(event, recurrence);
        for (const auto& value : recurrence.rules) {
            const auto rule = EventRule::read(value);
            const auto given = rule ? rule->datesOf(start, end, zones_) : std::nullopt;
            isKnown_ = isKnown_ && given;
            if (!given) continue;
            for (const auto date : *given)
                dates_.insert(date.time_since_epoch().count());
            // A day stands for all that begins on it.
            hasHours_ = hasHours_ || rule->part("BYHOUR");
        }
    }

    bool has(const EventMoment& moment)
    {
        const bool isOpen = !isKnown_ || (hasHours_ && moment.isDay() && !start_.isDay());
        return isOpen || dates_.contains(numberOf(moment));
    }

private:
    std::int64_t numberOf(const EventMoment& moment)
    {
        return keyOf(start_, moment, zones_).time_since_epoch().count();
    }

    local_seconds lastNamed(const EventText& event, const EventRecurrence& recurrence)
    {
        auto last = start_.local;
        for (const auto& exception : recurrence.exceptions)
            last = std::max(last, keyOf(start_, exception, zones_));
        for (const auto& part : event.overrides())
            if (const auto instance = part.recurrenceId())
                last = std::max(last, keyOf(start_, *instance, zones_));
        return last;
    }

    const EventMoment start_;
    TextZones zones_;
    std::unordered_set<std::int64_t> dates_; ///< seconds on the clock of the start
    bool isKnown_ = true;
    bool hasHours_ = false;
};

} // namespace

Result<EventText> withoutLostInstances(const EventText& event)
{
    const auto master = event.main();
    const auto start = master.start();
    if (!start) return event;
    TextPatch patch(event.tree());
    if (!event.isSeries()) {
        for (const auto& part : event.overrides())
            patch.remove(part.component());
    } else {
        GivenInstances given(event, *start);
        PartEditor editor(event.tree(), master, patch);
        for (const auto line : master.component().lines())
            if (line.is("EXDATE"))
                editor.keepMoments(line, [&](const auto& moment) { return given.has(moment); });
        for (const auto& part : event.overrides()) {
            const auto instance = part.recurrenceId();
            if (instance && !given.has(*instance)) patch.remove(part.component());
        }
    }
    if (patch.isEmpty()) return event;
    return EventText::read(patch.apply());
}

} // namespace Tessel
