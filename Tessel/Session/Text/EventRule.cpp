#include "Tessel/Session/Text/EventRule.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <memory>
#include <tuple>

#include <libical/ical.h>

namespace Tessel {

using namespace std::chrono;

namespace {

constexpr std::array<std::string_view, 7> weekdays {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};

/// UNTIL of a rule whose series has starts in the form of `start` (RFC 5545, 3.3.10).
std::string untilValue(const EventMoment& start, local_seconds local, TextZones& zones)
{
    auto moment = inFormOf(start, local);
    if (moment.kind == EventMoment::Kind::zoned) moment = EventMoment::utc(zones.dateOf(moment));
    return moment.value();
}

/// Which weekday of its month a day is, from 1.
int ordinalOf(const year_month_day& day)
{
    return static_cast<int>((static_cast<unsigned>(day.day()) - 1) / 7 + 1);
}

/// Whether its month has no later day of that name.
bool isLastOfItsKind(const year_month_day& day)
{
    return day.day() + days(7) > year_month_day_last(day.year(), month_day_last(day.month())).day();
}

std::string_view weekdayOf(local_days day)
{
    return weekdays[weekday(day).c_encoding()];
}

/// A list of numbers, each more by `by`; empty where one is none, or gets out of [0, `limit`).
std::string counted(std::string_view list, int by, int limit)
{
    std::string result;
    for (;;) {
        const auto end = std::min(list.find(','), list.size());
        int number = 0;
        const auto read = std::from_chars(list.data(), list.data() + end, number);
        number += by;
        if (read.ec != std::errc() || read.ptr != list.data() + end || number < 0
            || number >= limit)
            return {};
        result.append(result.empty() ? "" : ",").append(std::to_string(number));
        if (end == list.size()) return result;
        list.remove_prefix(end + 1);
    }
}

std::string rotated(std::string_view list, int by)
{
    std::string result;
    for (;;) {
        const auto end = list.find(',');
        const auto day = inCapitals(std::string(list.substr(0, end)));
        std::size_t number = 0;
        while (number < weekdays.size() && day != weekdays[number])
            ++number;
        if (number == weekdays.size()) return {};
        const auto moved = (static_cast<int>(number) + by % 7 + 7) % 7;
        result.append(result.empty() ? "" : ",").append(weekdays[static_cast<std::size_t>(moved)]);
        if (end == list.npos) return result;
        list.remove_prefix(end + 1);
    }
}

} // namespace

days SeriesMove::days() const
{
    return floor<std::chrono::days>(to.local) - floor<std::chrono::days>(from.local);
}

EventMoment inFormOf(const EventMoment& form, local_seconds local)
{
    auto moment = form;
    moment.local = form.isDay() ? local_seconds(floor<days>(local)) : local;
    return moment;
}

EventMoment instanceInFormOf(
    const EventMoment& start, const EventMoment& instance, TextZones& zones)
{
    if (instance.isDay() && !start.isDay())
        return inFormOf(start, instance.local + (start.local - floor<days>(start.local)));
    return inFormOf(start, zones.localAs(start, instance));
}

local_seconds keyOf(const EventMoment& start, const EventMoment& instance, TextZones& zones)
{
    return instanceInFormOf(start, instance, zones).local;
}

EventMoment SeriesMove::moved(const EventMoment& moment, TextZones& zones) const
{
    if (isNone()) return moment;
    // A day in a timed series stands for all that begins on it.
    if (moment.isDay() && !from.isDay())
        return EventMoment::day(floor<std::chrono::days>(moment.local) + days());
    const auto result = inFormOf(to, zones.localAs(from, moment) + (to.local - from.local));
    const bool staysUTC
        = moment.kind == EventMoment::Kind::utc && to.kind == EventMoment::Kind::zoned;
    return staysUTC ? EventMoment::utc(zones.dateOf(result)) : result;
}

std::optional<EventRule> EventRule::read(std::string_view value)
{
    EventRule rule;
    while (!value.empty()) {
        const auto end = value.find(';');
        const auto part = value.substr(0, end);
        const auto equals = part.find('=');
        if (equals == part.npos && !part.empty()) return std::nullopt;
        if (!part.empty())
            rule.parts_.emplace_back(part.substr(0, equals), part.substr(equals + 1));
        value.remove_prefix(end == value.npos ? value.size() : end + 1);
    }
    if (!rule.part("FREQ")) return std::nullopt;
    const auto read = icalrecurrencetype_from_string(rule.value().c_str());
    if (read.freq == ICAL_NO_RECURRENCE) return std::nullopt;
    return rule;
}

std::string EventRule::value() const
{
    std::string value;
    for (const auto& [name, text] : parts_)
        value.append(value.empty() ? "" : ";").append(name).append("=").append(text);
    return value;
}

std::optional<std::string> EventRule::part(std::string_view name) const
{
    for (const auto& [written, value] : parts_)
        if (isSameName(written, name)) return value;
    return std::nullopt;
}

void EventRule::set(std::string_view name, std::string value)
{
    for (auto& [written, old] : parts_) {
        if (!isSameName(written, name)) continue;
        old = std::move(value);
        return;
    }
    parts_.emplace_back(name, std::move(value));
}

void EventRule::remove(std::string_view name)
{
    std::erase_if(parts_, [&](const auto& part) { return isSameName(part.first, name); });
}

bool EventRule::move(const SeriesMove& move, TextZones& zones)
{
    const auto before = placeOf(move.from, move.from.local, zones);
    moveUntil(move, zones);
    if (move.days() != days(0)) moveDays(move);
    if (!moveTimes(move)) return false;
    const auto after = placeOf(move.to, move.to.local, zones);
    return !before || !after || !before->isGiven || after->isGiven;
}

void EventRule::moveUntil(const SeriesMove& move, TextZones& zones)
{
    const auto value = part("UNTIL");
    const auto until = value ? EventMoment::read(*value) : std::nullopt;
    if (!until) return;
    // Whoever writes a day where a time belongs means all of that day.
    const auto local = until->isDay() && !move.from.isDay()
        ? until->local + (days(1) - seconds(1))
        : zones.localAs(move.from, *until) + (move.to.local - move.from.local);
    auto written = untilValue(move.to, local, zones);
    if (written != *value) set("UNTIL", std::move(written));
}

void EventRule::moveDays(const SeriesMove& move)
{
    const auto from = floor<days>(move.from.local);
    const auto to = floor<days>(move.to.local);
    const year_month_day fromDate(from);
    const year_month_day toDate(to);
    const auto byDay = part("BYDAY");
    const auto byMonthDay = part("BYMONTHDAY");
    const auto byMonth = part("BYMONTH");
    const auto number = [](auto value) { return std::to_string(static_cast<unsigned>(value)); };

    if (isSameName(part("FREQ").value_or(""), "WEEKLY")) {
        if (byDay)
            if (auto days = rotated(*byDay, static_cast<int>(move.days().count())); !days.empty())
                set("BYDAY", std::move(days));
        return;
    }
    if (byMonthDay == number(fromDate.day())) set("BYMONTHDAY", number(toDate.day()));
    if (byMonth == number(fromDate.month())) set("BYMONTH", number(toDate.month()));
    const auto nth
        = [](int number, local_days day) { return std::to_string(number).append(weekdayOf(day)); };
    if (byDay && isSameName(*byDay, nth(ordinalOf(fromDate), from)))
        set("BYDAY", nth(ordinalOf(toDate), to));
    else if (byDay && isSameName(*byDay, nth(-1, from)))
        set("BYDAY", nth(isLastOfItsKind(toDate) ? -1 : ordinalOf(toDate), to));
}

/// Hours, minutes and seconds go on as far as those of the start do; false where they would come
/// into another day, hour or minute.
bool EventRule::moveTimes(const SeriesMove& move)
{
    const auto timeOf = [](const EventMoment& moment) {
        return hh_mm_ss(moment.local - floor<days>(moment.local));
    };
    const auto from = timeOf(move.from);
    const auto to = timeOf(move.to);
    const auto by
        = [](auto before, auto after) { return static_cast<int>((after - before).count()); };
    const std::tuple<const char*, int, int> units[] = {{"BYHOUR", by(from.hours(), to.hours()), 24},
        {"BYMINUTE", by(from.minutes(), to.minutes()), 60},
        {"BYSECOND", by(from.seconds(), to.seconds()), 60}};
    for (const auto& [name, moved, limit] : units) {
        const auto list = part(name);
        if (!list) continue;
        if (move.to.isDay()) {
            // Days have no hours (RFC 5545, 3.3.10), and of several a day one would be left.
            if (list->find(',') != list->npos) return false;
            remove(name);
        } else if (moved != 0) {
            auto numbers = counted(*list, moved, limit);
            if (numbers.empty()) return false;
            set(name, std::move(numbers));
        }
    }
    return true;
}

void EventRule::endBefore(const EventMoment& instance, TextZones& zones)
{
    remove("COUNT");
    const auto step = instance.isDay() ? seconds(days(1)) : seconds(1);
    set("UNTIL", untilValue(instance, instance.local - step, zones));
}

std::optional<int> EventRule::count() const
{
    const auto value = part("COUNT");
    int count = 0;
    if (!value
        || std::from_chars(value->data(), value->data() + value->size(), count).ec != std::errc())
        return std::nullopt;
    return count;
}

bool EventRule::isOver(const EventMoment& start, local_seconds date, TextZones& zones) const
{
    const auto value = part("UNTIL");
    const auto until = value ? EventMoment::read(*value) : std::nullopt;
    if (!until) return false;
    return until->isDay() ? floor<days>(date) > until->local : date > zones.localAs(start, *until);
}

bool EventRule::visit(const EventMoment& start, local_seconds end,
    const std::function<bool(local_seconds date)>& visitor) const
{
    constexpr int most = 100'000;
    const auto freq = inCapitals(part("FREQ").value_or(""));
    // Of these libical may search for ever.
    if (freq == "SECONDLY" || freq == "MINUTELY" || freq == "HOURLY") return false;
    // Of these it chooses others than the rule does.
    const bool hasTimes = part("BYHOUR") || part("BYMINUTE") || part("BYSECOND");
    if (part("BYSETPOS") && (freq == "WEEKLY" || hasTimes)) return false;
    auto endless = *this;
    endless.remove("COUNT");
    endless.remove("UNTIL");
    auto rule = icalrecurrencetype_from_string(endless.value().c_str());
    const auto inLibical = [&](local_seconds local) {
        const auto kind = start.isDay() ? EventMoment::Kind::day : EventMoment::Kind::floating;
        return icaltime_from_string(EventMoment {kind, local, {}}.value().c_str());
    };
    rule.until = inLibical(end + days(1)); // so that it does not search on
    const std::unique_ptr<icalrecur_iterator, void (*)(icalrecur_iterator*)> iterator(
        icalrecur_iterator_new(rule, inLibical(start.local)), icalrecur_iterator_free);
    if (!iterator) return false;
    for (int steps = 0; steps < most; ++steps) {
        const auto time = icalrecur_iterator_next(iterator.get());
        if (icaltime_is_null_time(time)) return true;
        const auto local = local_days(year(time.year) / time.month / time.day) + hours(time.hour)
            + minutes(time.minute) + seconds(time.second);
        if (local > end || !visitor(local)) return true;
    }
    return false;
}

std::optional<PlaceInRule> EventRule::placeOf(
    const EventMoment& start, local_seconds date, TextZones& zones) const
{
    PlaceInRule place {date > start.local ? 1 : 0, false};
    const auto all = count();
    const bool isKnown = visit(start, date, [&](local_seconds local) {
        if (local == date)
            place.isGiven = !isOver(start, date, zones) && (!all || place.before < *all);
        if (local > start.local && local < date) ++place.before;
        return true;
    });
    return isKnown ? std::optional(place) : std::nullopt;
}

std::optional<std::vector<local_seconds>> EventRule::datesOf(
    const EventMoment& start, local_seconds end, TextZones& zones) const
{
    std::vector<local_seconds> dates {start.local};
    const auto all = count();
    const bool isKnown = visit(start, end, [&](local_seconds local) {
        if (local <= start.local) return true;
        if (isOver(start, local, zones) || (all && int(dates.size()) >= *all)) return false;
        dates.push_back(local);
        return true;
    });
    return isKnown ? std::optional(std::move(dates)) : std::nullopt;
}

} // namespace Tessel
