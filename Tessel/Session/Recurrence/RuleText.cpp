#include "Tessel/Session/Recurrence/RuleText.h"

#include "Tessel/Session/Text/TextLine.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>

namespace Tessel {

using namespace std::chrono;

namespace {

/// Times come in the order of their parts, which may stand in any order.
void sortPart(std::span<short> part)
{
    const auto size = std::ptrdiff_t(valuesOf(part).size());
    std::sort(part.begin(), part.begin() + size);
    const auto end = std::unique(part.begin(), part.begin() + size);
    if (end != part.end()) *end = ICAL_RECURRENCE_ARRAY_MAX;
}

std::int64_t readInterval(std::string_view digits)
{
    std::int64_t interval = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9' || interval > 1'000'000'000) break;
        interval = interval * 10 + (c - '0');
    }
    return std::max<std::int64_t>(interval, 1);
}

icalrecurrencetype readParts(const std::string& parts)
{
    // Built to stop the process at its first error, libical has to be told not to.
    static const bool isSetUp = [] {
        icalerror_set_errors_are_fatal(0);
        return true;
    }();
    (void)isSetUp;
    return icalrecurrencetype_from_string(parts.c_str());
}

} // namespace

std::span<const short> valuesOf(std::span<const short> part)
{
    return part.first(
        std::size_t(std::find(part.begin(), part.end(), ICAL_RECURRENCE_ARRAY_MAX) - part.begin()));
}

bool isChosen(const icalrecurrencetype& rule, std::size_t index, std::size_t size)
{
    const auto positions = valuesOf(rule.by_set_pos);
    const auto place = std::int64_t(index);
    return positions.empty()
        || std::any_of(positions.begin(), positions.end(), [&](short position) {
               return position == place + 1 || position == place - std::int64_t(size);
           });
}

std::int64_t weekOf(const icalrecurrencetype& rule, std::int64_t local)
{
    const auto day = floor<days>(sys_time<milliseconds>(milliseconds(local)));
    const weekday first(unsigned(rule.week_start - ICAL_SUNDAY_WEEKDAY));
    return milliseconds((day - (weekday(day) - first)).time_since_epoch()).count();
}

icaltimetype libicalTime(std::int64_t local, bool isDay)
{
    const sys_time<milliseconds> time {milliseconds(local)};
    const auto midnight = floor<days>(time);
    const year_month_day date(midnight);
    const hh_mm_ss clock(floor<seconds>(time - midnight));
    auto result = icaltime_null_time();
    result.year = int(date.year());
    result.month = int(unsigned(date.month()));
    result.day = int(unsigned(date.day()));
    result.is_date = isDay;
    if (!isDay) {
        result.hour = int(clock.hours().count());
        result.minute = int(clock.minutes().count());
        result.second = int(clock.seconds().count());
    }
    return result;
}

std::int64_t localOfLibical(const icaltimetype& time)
{
    const sys_days date(year(time.year) / time.month / time.day);
    const auto local = date + hours(time.hour) + minutes(time.minute) + seconds(time.second);
    return milliseconds(local.time_since_epoch()).count();
}

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the rule is read below, and is large
RuleText::RuleText(std::string_view value)
{
    std::string parts;
    std::string skip;
    while (!value.empty()) {
        const auto part = value.substr(0, value.find(';'));
        value.remove_prefix(std::min(part.size() + 1, value.size()));
        const auto equals = std::min(part.find('='), part.size());
        const auto name = part.substr(0, equals);
        const auto content = part.substr(std::min(equals + 1, part.size()));
        if (isSameName(name, "INTERVAL")) {
            // libical has 15 bits for it, too few for a day's seconds, and takes no rule with more.
            interval_ = readInterval(content);
        } else if (isSameName(name, "RSCALE")) {
            rscale_ = content; // libical loses the copy that it makes
        } else if (isSameName(name, "SKIP")) {
            skip = content; // which it takes only after that
        } else if (part.find_first_not_of(' ') != part.npos) {
            parts.append(parts.empty() ? "" : ";").append(part);
        }
    }
    rule_ = readParts(parts);
    rule_.interval = short(std::min<std::int64_t>(interval_, std::numeric_limits<short>::max()));
    if (!rscale_.empty()) {
        rule_.rscale = rscale_.data();
        rule_.skip = skip.empty() ? ICAL_SKIP_OMIT : icalrecur_string_to_skip(skip.c_str());
        if (rule_.skip == ICAL_SKIP_UNDEFINED) rule_.freq = ICAL_NO_RECURRENCE;
    }
    count_ = rule_.count;
    for (const auto part : {std::span<short>(rule_.by_hour), std::span<short>(rule_.by_minute),
             std::span<short>(rule_.by_second)})
        sortPart(part);
    rule_.count = 0;
    // Days of the month without a month are those of every month (RFC 5545, 3.3.10); libical takes
    // the month of the start.
    if (rule_.freq == ICAL_YEARLY_RECURRENCE && !valuesOf(rule_.by_month_day).empty()
        && valuesOf(rule_.by_month).empty() && valuesOf(rule_.by_week_no).empty()
        && valuesOf(rule_.by_year_day).empty() && !rule_.rscale) {
        for (short month = 1; month <= 12; ++month)
            rule_.by_month[month - 1] = month;
        rule_.by_month[12] = ICAL_RECURRENCE_ARRAY_MAX;
    }
    if (icaltime_is_null_time(rule_.until)) return;
    const auto local
        = floor<seconds>(local_time<milliseconds>(milliseconds(localOfLibical(rule_.until))));
    const auto kind = rule_.until.is_date ? EventMoment::Kind::day
        : icaltime_is_utc(rule_.until)    ? EventMoment::Kind::utc
                                          : EventMoment::Kind::floating;
    until_ = EventMoment {kind, local, {}};
    rule_.until = icaltime_null_time();
}

bool RuleText::isOver(const Moment& start, std::int64_t local) const
{
    if (!until_) return false;
    const auto until = milliseconds(until_->local.time_since_epoch()).count();
    if (until_->isDay() || start.isDay()) return dayOf(local) > dayOf(until);
    if (until_->kind == EventMoment::Kind::utc && start.isFixed())
        return start.timeAt(local) > until;
    return local > until;
}

std::int64_t RuleText::latest(const Moment& start) const
{
    const auto until = milliseconds(until_->local.time_since_epoch()).count();
    if (until_->isDay() || start.isDay()) return dayOf(until) + millisecondsOfDay;
    // The first of two equal times may be meant by the second's.
    if (until_->kind == EventMoment::Kind::utc && start.isFixed())
        return start.localAt(until) + millisecondsOfDay;
    return until;
}

bool RuleText::isImpossible(const Moment& start) const
{
    constexpr std::array longest {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const auto months = valuesOf(rule_.by_month);
    if (months.empty() || rule_.rscale) return false;
    auto monthDays = valuesOf(rule_.by_month_day);
    const short ownDay = short(libicalTime(start.local, true).day);
    const bool isOfItsDay = rule_.freq >= ICAL_MONTHLY_RECURRENCE && monthDays.empty()
        && valuesOf(rule_.by_day).empty() && valuesOf(rule_.by_year_day).empty()
        && valuesOf(rule_.by_week_no).empty();
    if (isOfItsDay) monthDays = {&ownDay, 1};
    // Steps of some months may miss all that are named.
    const auto step = std::gcd(interval_, std::int64_t(12));
    const int ownMonth = libicalTime(start.local, true).month;
    if (rule_.freq == ICAL_MONTHLY_RECURRENCE
        && std::none_of(months.begin(), months.end(),
            [&](short month) { return (month - ownMonth) % step == 0; }))
        return true;
    if (monthDays.empty()) return false;
    return std::all_of(months.begin(), months.end(), [&](short month) {
        return month < 1 || month > 12
            || std::all_of(monthDays.begin(), monthDays.end(),
                [&](short day) { return std::abs(day) > longest[std::size_t(month - 1)]; });
    });
}

} // namespace Tessel
