#include "Tessel/Session/Recurrence/LibicalDays.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

/// Where libical may begin so that it finds every time from `from` on: years of weeks overlap.
std::int64_t safeBeginning(const icalrecurrencetype& rule, std::int64_t from)
{
    auto beginning = floor<days>(sys_time<milliseconds>(milliseconds(from))) - days(1);
    if (!valuesOf(rule.by_week_no).empty()) {
        beginning = sys_days((year_month_day(beginning).year() - years(1)) / January / 1);
    } else if (rule.freq == ICAL_WEEKLY_RECURRENCE) {
        beginning -= days(7);
    }
    return milliseconds(beginning.time_since_epoch()).count();
}

} // namespace

LibicalDays::LibicalDays(const icalrecurrencetype& rule, std::int64_t start, bool isDay,
    std::int64_t from, std::int64_t to, bool mayJump)
{
    if (to < start) return;
    auto bounded = rule;
    // libical knows no days counted from the end of the month in DAILY; a MONTHLY rule has the same
    // days, of which INTERVAL takes some.
    const auto monthDays = valuesOf(rule.by_month_day);
    if (rule.freq == ICAL_DAILY_RECURRENCE
        && std::any_of(monthDays.begin(), monthDays.end(), [](short day) { return day < 0; })) {
        bounded.freq = ICAL_MONTHLY_RECURRENCE;
        bounded.interval = 1;
        every_ = std::max<std::int64_t>(rule.interval, 1);
        first_ = dayOf(start);
        unit_ = millisecondsOfDay;
    }
    // Where the start is early in the week and WKST late, libical takes the week after for its.
    if (rule.freq == ICAL_WEEKLY_RECURRENCE && rule.interval > 1) {
        bounded.interval = 1;
        every_ = rule.interval;
        first_ = weekOf(rule, start);
        unit_ = 7 * millisecondsOfDay;
    }
    // Where a rule has both, libical finds no day of the year in most months.
    if (!valuesOf(rule.by_year_day).empty() && !rule.rscale) {
        for (const short month : valuesOf(rule.by_month))
            if (month >= 1 && month <= 12) months_.set(std::size_t(month));
        bounded.by_month[0] = ICAL_RECURRENCE_ARRAY_MAX;
    }
    // It looks for the next time for ever, but not beyond UNTIL. Its own years end in 2582.
    bounded.until = libicalTime(std::min(to, Limits::recurrenceEnd) + millisecondsOfDay, isDay);
    iterator_.reset(icalrecur_iterator_new(bounded, libicalTime(start, isDay)));
    if (!iterator_ || !mayJump) return;
    const auto beginning = safeBeginning(rule, from);
    if (beginning > start)
        icalrecur_iterator_set_start(iterator_.get(), libicalTime(beginning, isDay));
}

std::optional<std::int64_t> LibicalDays::next()
{
    while (iterator_ && steps_++ < Limits::recurrenceSteps) {
        const auto time = icalrecur_iterator_next(iterator_.get());
        if (icaltime_is_null_time(time)) break;
        if (months_.any() && !months_[std::size_t(time.month)]) continue;
        const auto local = localOfLibical(time);
        // A value that a part has twice gives its times twice, and they would be counted so.
        if (last_ && local <= *last_) continue;
        last_ = local;
        if (every_ == 1 || (local - first_) / unit_ % every_ == 0) return local;
    }
    iterator_.reset();
    return std::nullopt;
}

} // namespace Tessel
