#include "Tessel/Session/Recurrence/Series.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Recurrence/RuleIterator.h"

#include <algorithm>
#include <map>

namespace Tessel {

using namespace std::chrono;

namespace {

constexpr std::int64_t slack = 2 * millisecondsOfDay; ///< of zones, and of days by the clock
/// Of a rule: also those before and after the range, and those that are taken out.
constexpr std::size_t mostDates = 5 * Limits::recurrenceInstances;
constexpr std::int64_t earliest = -62'135'596'800'000; // the year 1

Instance instanceOf(const SeriesPart& part, const Moment& start, const Span& span)
{
    return {.start = span.start,
        .end = span.end,
        .localStart = start.local,
        .localEnd = span.localEnd,
        .isAllDay = start.isDay(),
        .isFloating = !start.isFixed(),
        .isCancelled = part.isCancelled,
        .component = part.component};
}

std::int64_t lengthOf(const Moment& start, const Length& length)
{
    const auto span = spanOf(start, start, length);
    return span.end - span.start;
}

bool touches(const Instance& instance, std::int64_t from, std::int64_t to)
{
    return instance.start < to && (instance.end > from || instance.start >= from);
}

/// How far a part moves the instances that follow, on the clock of its start.
std::int64_t shiftOf(const SeriesPart& part)
{
    return part.start.local - part.start.localAs(*part.id);
}

} // namespace

void Series::add(const SeriesPart& part)
{
    if (part.id) {
        changes_.push_back(&part);
    } else {
        main_ = &part;
    }
}

std::int64_t Series::keyOf(const Moment& moment) const
{
    return main_->start.isDay() ? dayOf(moment.local) : moment.time();
}

/// Whether a date of the text names a day of a series of times, as some programs write it.
bool Series::isOnDay(const Moment& moment) const
{
    return moment.isDay() && !main_->start.isDay();
}

Series::Reach Series::reach() const
{
    Reach reach {lengthOf(main_->start, main_->length), 0, 0};
    for (const auto* part : changes_) {
        if (!part->isForFollowing) continue;
        reach.length = std::max(reach.length, lengthOf(part->start, part->length));
        reach.forward = std::max(reach.forward, shiftOf(*part));
        reach.backward = std::min(reach.backward, shiftOf(*part));
    }
    for (const auto& [start, length] : main_->added)
        if (length) reach.length = std::max(reach.length, lengthOf(start, *length));
    return reach;
}

/// Dates from about `from` to about `to`, on the clock of the series, in order.
std::vector<Series::Occurrence> Series::occurrences(std::int64_t from, std::int64_t to) const
{
    std::vector<Occurrence> occurrences;
    const auto add = [&](std::int64_t local, const AddedDate* added) {
        if (local >= from && local <= to) occurrences.push_back({local, keyOf(at(local)), added});
    };
    add(main_->start.local, nullptr);
    for (const auto& text : main_->rules) {
        const RuleText rule(text);
        RuleIterator times(rule, main_->start, from, to);
        for (std::size_t i = 0; i < mostDates; ++i) {
            const auto local = times.next();
            if (!local) break;
            add(*local, nullptr);
        }
    }
    for (const auto& added : main_->added) {
        const auto local = main_->start.localAs(added.start);
        add(main_->start.isDay() ? dayOf(local) : local, &added);
    }
    std::stable_sort(occurrences.begin(), occurrences.end(),
        [](const auto& a, const auto& b) { return a.key < b.key; });
    const auto same = std::unique(occurrences.begin(), occurrences.end(),
        [](const auto& a, const auto& b) { return a.key == b.key; });
    occurrences.erase(same, occurrences.end());
    return occurrences;
}

/// Those that are excluded, or that a part of their own describes.
void Series::takeOut(std::vector<Occurrence>& occurrences, std::int64_t from, std::int64_t to) const
{
    std::vector<std::int64_t> keys;
    std::vector<std::int64_t> days;
    const auto take = [&](const Moment& moment) {
        isOnDay(moment) ? days.push_back(moment.local) : keys.push_back(keyOf(moment));
    };
    for (const auto& excluded : main_->excluded)
        take(excluded);
    for (const auto* part : changes_)
        take(*part->id);
    for (const auto& text : main_->exceptionRules) {
        const RuleText rule(text);
        RuleIterator times(rule, main_->start, from, to);
        for (std::size_t i = 0; i < mostDates; ++i) {
            const auto local = times.next();
            if (!local) break;
            keys.push_back(keyOf(at(*local)));
        }
    }
    if (keys.empty() && days.empty()) return;
    std::sort(keys.begin(), keys.end());
    std::sort(days.begin(), days.end());
    std::erase_if(occurrences, [&](const Occurrence& occurrence) {
        return std::binary_search(keys.begin(), keys.end(), occurrence.key)
            || std::binary_search(days.begin(), days.end(), dayOf(occurrence.local));
    });
}

/// The part that describes this instance and those after it; null for the series itself.
const SeriesPart* Series::changeFor(std::int64_t key) const
{
    const SeriesPart* latest = nullptr;
    for (const auto* part : changes_) {
        if (!part->isForFollowing || keyOf(*part->id) > key) continue;
        if (!latest || keyOf(*part->id) > keyOf(*latest->id)) latest = part;
    }
    return latest;
}

Instance Series::instance(const Occurrence& occurrence) const
{
    const auto original = at(occurrence.local);
    Instance instance {};
    if (const auto* part = changeFor(occurrence.key)) {
        auto start = part->start;
        start.local = start.localAs(original) + shiftOf(*part);
        instance = instanceOf(*part, start, spanOf(start, part->start, part->length));
        instance.isChanged = true;
    } else if (occurrence.added && occurrence.added->length) {
        const auto& [first, length] = *occurrence.added;
        instance = instanceOf(*main_, original, spanOf(original, first, *length));
    } else {
        instance = instanceOf(*main_, original, spanOf(original, main_->start, main_->length));
    }
    instance.isCancelled = instance.isCancelled || main_->isCancelled;
    if (main_->isRepeating()) {
        instance.recurrenceId = EventMoment {original.kind,
            floor<seconds>(local_time<milliseconds>(milliseconds(original.local))), main_->tzid};
    }
    return instance;
}

/// The instance that a part is about.
Instance Series::changed(const SeriesPart& part) const
{
    auto instance = instanceOf(part, part.start, spanOf(part.start, part.start, part.length));
    instance.isChanged = true;
    instance.recurrenceId = part.recurrenceId;
    // As the others of the series have it, where that says the same.
    if (main_ && main_->start.isFixed() && part.id->isFixed()) {
        instance.recurrenceId = EventMoment {main_->start.kind,
            floor<seconds>(local_time<milliseconds>(milliseconds(main_->start.localAs(*part.id)))),
            main_->tzid};
    }
    return instance;
}

void Series::addInstances(
    std::int64_t from, std::int64_t to, std::size_t most, std::vector<Instance>& instances) const
{
    const auto add = [&](const Instance& instance) {
        if (instances.size() < most && touches(instance, from, to)) instances.push_back(instance);
    };
    for (const auto* part : changes_)
        add(changed(*part));
    if (!main_) return;
    if (!main_->isRepeating() && changes_.empty() && main_->excluded.empty())
        return add(instance({main_->start.local, main_->start.time(), nullptr}));

    const auto reach = this->reach();
    const auto first = std::max(from, earliest) - reach.length - reach.forward - slack;
    const auto last = std::min(to, Limits::recurrenceEnd) - reach.backward + slack;
    auto dates = occurrences(first, last);
    takeOut(dates, first, last);
    for (const auto& date : dates)
        add(instance(date));
}

Bounds Series::bounds() const
{
    auto bounds = Bounds::never();
    const auto include = [&](std::int64_t first, std::int64_t last) {
        bounds.first = std::min(bounds.first, first);
        bounds.last = std::max(bounds.last, last);
    };
    for (const auto* part : changes_) {
        const auto instance = changed(*part);
        include(instance.start, instance.end);
    }
    if (!main_) return bounds;
    if (!main_->isRepeating() && changes_.empty()) {
        const auto span = spanOf(main_->start, main_->start, main_->length);
        return {span.start, span.end};
    }
    const auto reach = this->reach();
    const auto start = main_->start.time();
    const auto includeDates = [&](std::int64_t first, std::int64_t last) {
        include(first + reach.backward, last + reach.forward + reach.length);
    };
    includeDates(start, start);
    for (const auto& [added, length] : main_->added)
        includeDates(added.time(), added.time());
    for (const auto& text : main_->rules) {
        const auto end = endOfRule(RuleText(text), main_->start);
        if (!end) return {bounds.first, Bounds::always().last};
        includeDates(start, main_->start.timeAt(*end));
    }
    return bounds;
}

std::vector<Series> seriesOf(const std::vector<SeriesPart>& parts)
{
    std::vector<Series> series;
    std::map<std::string_view, std::size_t> numbers;
    std::map<std::string_view, std::size_t> mains;
    for (const auto& part : parts) {
        // A second one that repeats, under one UID, is on its own.
        const bool isMain = !part.id;
        const bool isSecond = isMain && !mains.try_emplace(part.uid, 0).second;
        const auto [place, isNew] = numbers.try_emplace(part.uid, series.size());
        if (isNew || isSecond) series.emplace_back();
        (isSecond ? series.back() : series[place->second]).add(part);
    }
    return series;
}

} // namespace Tessel
