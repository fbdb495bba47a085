#include "Tessel/Session/Recurrence/ChosenTimes.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

constexpr std::int64_t longestPeriod = 366 * millisecondsOfDay;

void set(std::span<short> part, int value)
{
    part[0] = short(value);
    part[1] = ICAL_RECURRENCE_ARRAY_MAX;
}

bool isGiven(std::span<const short> part)
{
    return !valuesOf(part).empty();
}

} // namespace

ChosenTimes::ChosenTimes(const icalrecurrencetype& rule, std::int64_t start, bool isDay,
    std::int64_t from, std::int64_t to, bool mayJump)
    : rule_(rule)
    , all_(wholeRule(start, isDay), periodOf(start), isDay, periodOf(std::max(from, start)),
          to + longestPeriod, mayJump)
    , ahead_(all_.next())
{
}

std::int64_t ChosenTimes::periodOf(std::int64_t time) const
{
    if (rule_.freq == ICAL_WEEKLY_RECURRENCE) return weekOf(rule_, time);
    const auto day = floor<days>(sys_time<milliseconds>(milliseconds(time)));
    const year_month_day date(day);
    auto first = day;
    if (rule_.freq == ICAL_YEARLY_RECURRENCE) {
        first = sys_days(date.year() / January / 1);
    } else if (rule_.freq == ICAL_MONTHLY_RECURRENCE) {
        first = sys_days(date.year() / date.month() / 1);
    }
    return milliseconds(first.time_since_epoch()).count();
}

/// Without BYSETPOS, and with what the start would say were it not the period's.
icalrecurrencetype ChosenTimes::wholeRule(std::int64_t start, bool isDay) const
{
    auto rule = rule_;
    rule.by_set_pos[0] = ICAL_RECURRENCE_ARRAY_MAX;
    const auto time = libicalTime(start, isDay);
    if (!isDay) {
        if (!isGiven(rule.by_hour)) set(rule.by_hour, time.hour);
        if (!isGiven(rule.by_minute)) set(rule.by_minute, time.minute);
        if (!isGiven(rule.by_second)) set(rule.by_second, time.second);
    }
    const bool isOfDays = isGiven(rule.by_day) || isGiven(rule.by_month_day)
        || isGiven(rule.by_year_day) || rule.freq == ICAL_DAILY_RECURRENCE;
    const bool isOfWeeks = rule.freq == ICAL_WEEKLY_RECURRENCE || isGiven(rule.by_week_no);
    if (isOfWeeks && !isGiven(rule.by_day)) {
        set(rule.by_day, icaltime_day_of_week(time));
    } else if (!isOfDays) {
        set(rule.by_month_day, time.day);
        if (rule.freq == ICAL_YEARLY_RECURRENCE && !isGiven(rule.by_month))
            set(rule.by_month, time.month);
    }
    return rule;
}

std::optional<std::int64_t> ChosenTimes::next()
{
    while (position_ == chosen_.size()) {
        if (!ahead_) return std::nullopt;
        std::vector<std::int64_t> times;
        const auto period = periodOf(*ahead_);
        for (; ahead_ && periodOf(*ahead_) == period; ahead_ = all_.next())
            if (times.empty() || times.back() != *ahead_) times.push_back(*ahead_);
        chosen_.clear();
        position_ = 0;
        for (std::size_t i = 0; i < times.size(); ++i)
            if (isChosen(rule_, i, times.size())) chosen_.push_back(times[i]);
    }
    return chosen_[position_++];
}

} // namespace Tessel
