#include "Tessel/Session/Recurrence/RuleIterator.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Session/Recurrence/ChosenTimes.h"
#include "Tessel/Session/Recurrence/TimesWithinDays.h"

#include <bitset>

namespace Tessel {

namespace {

/// Of a rule that has as many times in each period, wherever that begins.
struct EvenTimes {
    std::int64_t period; ///< of INTERVAL 1, in milliseconds
    std::int64_t count;
};

/// None for a rule of which only going through its times can tell.
std::optional<EvenTimes> evenTimes(const icalrecurrencetype& rule)
{
    const auto isGiven = [](std::span<const short> part) { return !valuesOf(part).empty(); };
    if (isGiven(rule.by_second) || isGiven(rule.by_minute) || isGiven(rule.by_hour)
        || isGiven(rule.by_month_day) || isGiven(rule.by_year_day) || isGiven(rule.by_week_no)
        || isGiven(rule.by_month) || isGiven(rule.by_set_pos) || rule.rscale)
        return std::nullopt;
    const auto days = valuesOf(rule.by_day);
    if (rule.freq == ICAL_DAILY_RECURRENCE && days.empty()) return EvenTimes {millisecondsOfDay, 1};
    if (rule.freq != ICAL_WEEKLY_RECURRENCE) return std::nullopt;
    std::bitset<8> weekdays;
    for (const short day : days) {
        if (day < ICAL_SUNDAY_WEEKDAY || day > ICAL_SATURDAY_WEEKDAY) return std::nullopt;
        weekdays.set(std::size_t(day));
    }
    return EvenTimes {
        7 * millisecondsOfDay, std::max<std::int64_t>(std::int64_t(weekdays.count()), 1)};
}

} // namespace

RuleIterator::RuleIterator(
    const RuleText& rule, const Moment& start, std::int64_t from, std::int64_t to)
    : rule_(rule)
    , start_(start)
    , from_(from)
    , to_(to)
{
    if (!rule.isReadable() || rule.isImpossible(start)) return;
    const bool mayJump = rule.count() == 0;
    if (rule.isWithinDay() && !start.isDay()) {
        source_ = std::make_unique<TimesWithinDays>(rule, start.local, from, to, mayJump);
    } else if (!rule.isWithinDay() && !valuesOf(rule.rule().by_set_pos).empty()) {
        source_ = std::make_unique<ChosenTimes>(
            rule.rule(), start.local, start.isDay(), from, to, mayJump);
    } else if (!rule.isWithinDay()) {
        source_ = std::make_unique<LibicalDays>(
            rule.rule(), start.local, start.isDay(), from, to, mayJump);
    }
}

std::optional<std::int64_t> RuleIterator::next()
{
    while (source_) {
        const auto time = source_->next();
        if (!time || *time > to_) break;
        if (*time < start_.local) continue;
        // DTSTART counts as the first, whether or not the rule has it (RFC 5545, 3.3.10).
        if (counted_ == 0 && *time != start_.local) ++counted_;
        if (rule_.count() > 0 && counted_ >= rule_.count()) break;
        ++counted_;
        if (rule_.isOver(start_, *time)) break;
        if (*time >= from_) return time;
    }
    source_.reset();
    return std::nullopt;
}

std::optional<std::int64_t> endOfRule(const RuleText& rule, const Moment& start)
{
    if (!rule.isReadable() || rule.isImpossible(start)) return start.local;
    if (rule.hasUntil()) return std::max(start.local, rule.latest(start));
    if (rule.count() == 0) return std::nullopt;
    if (const auto own = evenTimes(rule.rule())) {
        const auto period = rule.interval() * own->period;
        const auto periods = (rule.count() - 1 + own->count - 1) / own->count;
        if (periods > Limits::countedTime / period) return std::nullopt;
        return start.local + periods * period;
    }
    RuleIterator times(rule, start, start.local, start.local + Limits::countedTime);
    auto last = start.local;
    for (std::size_t steps = 0; steps < Limits::countedSteps; ++steps) {
        const auto time = times.next();
        if (!time) return times.isCounted() ? std::optional(last) : std::nullopt;
        last = *time;
    }
    return std::nullopt;
}

} // namespace Tessel
