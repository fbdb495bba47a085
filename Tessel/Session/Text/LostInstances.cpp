#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Recurrence/Moment.h"
#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/PartEditor.h"
#include "Tessel/Session/Text/SeriesEdit.h"

#include <algorithm>
#include <limits>
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
        const auto candidates = candidatesIn(event);
        if (candidates.empty()) return;
        const auto [first, last] = std::minmax_element(candidates.begin(), candidates.end());
        const auto found = instances(
            alone(event), *first - millisecondsOfDay, *last + millisecondsOfDay, TimeZone::UTC());
        if (!found) {
            end_ = std::numeric_limits<std::int64_t>::min();
            return;
        }
        for (const auto& each : found.value()) {
            times_.insert(each.start);
            clocks_.insert(each.localStart);
            days_.insert(dayOf(each.localStart));
        }
        if (found.value().size() >= Limits::recurrenceInstances) end_ = found.value().back().start;
    }

    bool has(const EventMoment& moment)
    {
        const auto time = timeOf(moment);
        if (time >= end_) return true;
        if (moment.isDay() && !start_.isDay()) return days_.contains(dayOf(inMilliseconds(moment)));
        return times_.contains(time)
            || clocks_.contains(inMilliseconds(instanceInFormOf(start_, moment, zones_)));
    }

private:
    static std::int64_t inMilliseconds(const EventMoment& moment)
    {
        return duration_cast<milliseconds>(moment.local.time_since_epoch()).count();
    }
    std::int64_t timeOf(const EventMoment& moment)
    {
        return zones_.dateOf(instanceInFormOf(start_, moment, zones_)).millisecondsSince1970();
    }

    std::vector<std::int64_t> candidatesIn(const EventText& event)
    {
        std::vector<std::int64_t> times;
        for (const auto& exception : event.main().recurrence().exceptions)
            times.push_back(timeOf(exception));
        for (const auto& part : event.overrides())
            if (const auto instance = part.recurrenceId()) times.push_back(timeOf(*instance));
        return times;
    }

    /// The text without exceptions and without what is different on single days.
    static std::string alone(const EventText& event)
    {
        TextPatch patch(event.tree());
        for (const auto line : event.main().component().lines())
            if (line.is("EXDATE") || line.is("EXRULE")) patch.remove(line);
        for (const auto& part : event.overrides())
            patch.remove(part.component());
        return patch.apply();
    }

    const EventMoment start_;
    TextZones zones_;
    std::unordered_set<std::int64_t> times_;
    std::unordered_set<std::int64_t> clocks_;
    std::unordered_set<std::int64_t> days_;
    std::int64_t end_ = Limits::recurrenceEnd; ///< from then on nobody has counted
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
