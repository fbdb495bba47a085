#include "Tessel/Platform/Foundation/Time/ZoneRules.h"

#include <algorithm>

namespace Tessel {

namespace {

/// The latest of the changes that have been looked at.
struct Latest {
    std::int64_t time = std::numeric_limits<std::int64_t>::min();
    int offset = 0;

    /// Looks at the rule's changes up to a time as clocks show it before them.
    void consider(const YearlyRule& rule, std::int64_t localTime)
    {
        if (localTime > rule.last) return; // its last change is among the onsets
        const auto localOnset = rule.latestOnset(localTime);
        if (!localOnset || *localOnset - rule.offsetFrom < time) return;
        time = *localOnset - rule.offsetFrom;
        offset = rule.offsetTo;
    }
};

} // namespace

ZoneRules::ZoneRules(int initialOffset, std::vector<Onset> onsets, std::vector<YearlyRule> rules)
    : initialOffset_(initialOffset)
    , onsets_(std::move(onsets))
    , rules_(std::move(rules))
{
    for (const auto& rule : rules_) {
        if (rule.last == YearlyRule::never) continue;
        if (const auto last = rule.latestOnset(rule.last))
            onsets_.push_back({*last - rule.offsetFrom, rule.offsetTo, rule.isDaylight});
    }
    localOnsets_.resize(onsets_.size());
    std::stable_sort(onsets_.begin(), onsets_.end(),
        [](const Onset& a, const Onset& b) { return a.time < b.time; });
    auto earliest = std::numeric_limits<std::int64_t>::max();
    for (auto i = onsets_.size(); i-- > 0;) {
        earliest = std::min(earliest, onsets_[i].time + onsets_[i].offset);
        localOnsets_[i] = earliest;
    }
}

int ZoneRules::offsetAt(std::int64_t time) const
{
    Latest latest {.offset = initialOffset_};
    const auto next = std::upper_bound(onsets_.begin(), onsets_.end(), time,
        [](std::int64_t time, const Onset& onset) { return time < onset.time; });
    if (next != onsets_.begin()) latest = {next[-1].time, next[-1].offset};
    for (const auto& rule : rules_)
        latest.consider(rule, time + rule.offsetFrom);
    return latest.offset;
}

int ZoneRules::offsetAtLocal(std::int64_t localTime) const
{
    Latest latest {.offset = initialOffset_};
    const auto next = std::upper_bound(localOnsets_.begin(), localOnsets_.end(), localTime);
    if (next != localOnsets_.begin()) {
        const auto& onset = onsets_[std::size_t(next - localOnsets_.begin()) - 1];
        latest = {onset.time, onset.offset};
    }
    // A change rules the local times from the one on that clocks show after it: those that they
    // skip are still read by the offset before, those that they repeat by the one after.
    for (const auto& rule : rules_)
        latest.consider(rule, localTime - rule.offsetTo + rule.offsetFrom);
    return latest.offset;
}

} // namespace Tessel
