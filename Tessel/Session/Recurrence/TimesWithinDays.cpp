#include "Tessel/Session/Recurrence/TimesWithinDays.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"

#include <algorithm>
#include <utility>

namespace Tessel {

namespace {

constexpr std::int64_t second = 1000;
constexpr std::int64_t minute = 60 * second;
constexpr std::int64_t hour = 60 * minute;

/// The values of a BY part; without one `own`, or all where that is none.
template <std::size_t size> std::bitset<size> setOf(std::span<const short> part, int own)
{
    std::bitset<size> set;
    const auto values = valuesOf(part);
    for (const auto value : values)
        if (value >= 0 && std::size_t(value) < size) set.set(std::size_t(value));
    if (values.empty() && own < 0) set.set();
    if (values.empty() && own >= 0) set.set(std::size_t(own));
    return set;
}

/// The rule of the days on which there may be times; none where every day is one.
std::optional<icalrecurrencetype> ruleOfDays(const icalrecurrencetype& rule)
{
    const bool isByYearDay = !valuesOf(rule.by_year_day).empty();
    const auto isGiven = [](std::span<const short> part) { return !valuesOf(part).empty(); };
    if (!isByYearDay && !isGiven(rule.by_month) && !isGiven(rule.by_month_day)
        && !isGiven(rule.by_day) && !isGiven(rule.by_week_no))
        return std::nullopt;
    auto days = rule;
    days.freq = isByYearDay ? ICAL_YEARLY_RECURRENCE : ICAL_DAILY_RECURRENCE;
    days.interval = 1;
    for (auto* part : {days.by_hour, days.by_minute, days.by_second, days.by_set_pos})
        part[0] = ICAL_RECURRENCE_ARRAY_MAX;
    return days;
}

} // namespace

TimesWithinDays::TimesWithinDays(
    const RuleText& rule, std::int64_t start, std::int64_t from, std::int64_t to, bool mayJump)
    : rule_(rule.rule())
    , interval_(rule.interval())
    , start_(start)
    , last_(std::min(to, Limits::recurrenceEnd))
    , day_(dayOf(mayJump ? std::max(start, from) : start))
{
    const auto clock = libicalTime(start, false);
    const bool isSecondly = rule_.freq == ICAL_SECONDLY_RECURRENCE;
    hours_ = setOf<24>(rule_.by_hour, -1);
    minutes_ = setOf<60>(rule_.by_minute, rule_.freq == ICAL_HOURLY_RECURRENCE ? clock.minute : -1);
    seconds_ = setOf<60>(rule_.by_second, isSecondly ? -1 : clock.second);
    if (const auto days = ruleOfDays(rule_))
        days_ = std::make_unique<LibicalDays>(*days, dayOf(start), true, day_, last_, mayJump);
}

std::optional<std::int64_t> TimesWithinDays::nextDay()
{
    if (days_) return days_->next();
    if (day_ > last_) return std::nullopt;
    return std::exchange(day_, day_ + millisecondsOfDay);
}

bool TimesWithinDays::isPeriod(std::int64_t time, std::int64_t length) const
{
    const auto numberOf = [length](std::int64_t at) {
        return (at - dayOf(at)) / length + dayOf(at) / length; // also before 1970
    };
    return (numberOf(time) - numberOf(start_)) % interval_ == 0;
}

void TimesWithinDays::choose()
{
    for (std::size_t i = 0; i < period_.size(); ++i)
        if (period_[i] >= start_ && isChosen(rule_, i, period_.size()))
            times_.push_back(period_[i]);
    steps_ += period_.size();
    period_.clear();
}

void TimesWithinDays::fill(std::int64_t day)
{
    const auto frequency = rule_.freq;
    for (std::int64_t h = 0; h < 24; ++h) {
        const auto hourly = day + h * hour;
        ++steps_;
        if (!hours_[std::size_t(h)]) continue;
        if (frequency == ICAL_HOURLY_RECURRENCE && !isPeriod(hourly, hour)) continue;
        for (std::int64_t m = 0; m < 60; ++m) {
            const auto minutely = hourly + m * minute;
            ++steps_;
            if (!minutes_[std::size_t(m)]) continue;
            if (frequency == ICAL_MINUTELY_RECURRENCE && !isPeriod(minutely, minute)) continue;
            for (std::int64_t s = 0; s < 60; ++s) {
                const auto time = minutely + s * second;
                if (!seconds_[std::size_t(s)]) continue;
                if (frequency != ICAL_SECONDLY_RECURRENCE) {
                    period_.push_back(time);
                } else if (isPeriod(time, second)) {
                    period_.push_back(time);
                    choose();
                }
            }
            if (frequency == ICAL_MINUTELY_RECURRENCE) choose();
        }
        if (frequency == ICAL_HOURLY_RECURRENCE) choose();
    }
}

std::optional<std::int64_t> TimesWithinDays::next()
{
    while (position_ == times_.size()) {
        const auto day = nextDay();
        if (!day || *day > last_ || steps_ >= Limits::recurrenceTimes) return std::nullopt;
        times_.clear();
        position_ = 0;
        fill(*day);
    }
    return times_[position_++];
}

} // namespace Tessel
