#include "Tessel/Platform/Foundation/Time/VTimeZoneWriter.h"

#include "Tessel/Platform/Foundation/Time/CivilDate.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <vector>

namespace Tessel {

namespace {

constexpr std::int64_t secondsPerDay = 86'400;
constexpr int daysPerWeek = 7;

/// A change of clocks as it came, or as a rule brings it.
struct Change {
    std::int64_t time; ///< in UTC
    int offsetFrom;
    int offsetTo;
    bool isDaylight; ///< clocks are moved forward for a season, whatever the database calls it

    std::int64_t localTime() const { return time + offsetFrom; }
    bool isAlike(const Change& other) const
    {
        return offsetFrom == other.offsetFrom && offsetTo == other.offsetTo
            && isDaylight == other.isDaylight;
    }
};

std::string offsetText(int offset)
{
    const int size = std::abs(offset);
    char text[16];
    std::snprintf(text, sizeof text, "%c%02d%02d%02d", offset < 0 ? '-' : '+', size / 3600,
        size / 60 % 60, size % 60);
    // Some readers know no seconds, and no zone has any since 1972.
    if (size % 60 == 0) text[5] = 0;
    return text;
}

std::int64_t dayOf(std::int64_t localTime)
{
    return localTime / secondsPerDay - (localTime % secondsPerDay < 0);
}

std::string timeText(std::int64_t localTime)
{
    const auto day = dayOf(localTime);
    const auto date = CivilDate::fromDaysSince1970(day);
    const auto second = static_cast<int>(localTime - day * secondsPerDay);
    char text[32];
    std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02d", static_cast<int>(date.year),
        date.month, date.day, second / 3600, second / 60 % 60, second % 60);
    return text;
}

void append(std::string& text, std::string_view name, std::string_view value)
{
    text.append(name).append(":").append(value).append("\r\n");
}

void appendObservance(std::string& text, const Change& first, const std::string& recurrence)
{
    const auto* const kind = first.isDaylight ? "DAYLIGHT" : "STANDARD";
    append(text, "BEGIN", kind);
    append(text, "DTSTART", timeText(first.localTime()));
    append(text, "TZOFFSETFROM", offsetText(first.offsetFrom));
    append(text, "TZOFFSETTO", offsetText(first.offsetTo));
    text += recurrence;
    append(text, "END", kind);
}

/// One observance for changes that are alike, the first of which is `changes.front()`.
void appendAlike(std::string& text, const std::vector<Change>& changes)
{
    constexpr std::size_t datesPerLine = 4; // within 75 bytes
    std::string dates;
    for (std::size_t i = 1; i < changes.size(); ++i) {
        dates += i % datesPerLine == 1 ? "RDATE:" : ",";
        dates += timeText(changes[i].localTime());
        if (i % datesPerLine == 0 || i + 1 == changes.size()) dates += "\r\n";
    }
    appendObservance(text, changes.front(), dates);
}

/// The changes from 1970 on that the zone lists.
std::vector<Change> listedChanges(const ZoneRules& rules)
{
    std::vector<Change> changes;
    int offset = rules.initialOffset();
    bool isDaylight = false;
    for (const auto& onset : rules.onsets()) {
        // Some zones have a winter time that is their standard time less an hour.
        const bool isForward = onset.isDaylight == isDaylight ? isDaylight : onset.offset > offset;
        if (onset.time > 0 && onset.offset != offset)
            changes.push_back({onset.time, offset, onset.offset, isForward});
        offset = onset.offset;
        isDaylight = onset.isDaylight;
    }
    return changes;
}

/// The latest change before `time` if the rules had always held.
std::optional<Change> ruledChangeBefore(std::int64_t time, std::vector<YearlyRule> rules)
{
    std::optional<Change> latest;
    for (auto& rule : rules) {
        rule.first = 0;
        const auto onset = rule.latestOnset(time + rule.offsetFrom - 1);
        if (onset && (!latest || *onset - rule.offsetFrom > latest->time))
            latest = {*onset - rule.offsetFrom, rule.offsetFrom, rule.offsetTo,
                rule.offsetTo > rule.offsetFrom};
    }
    return latest;
}

/// Where among `changes` those begin that the rules bring, too.
std::size_t beginOfRuled(const std::vector<Change>& changes, const std::vector<YearlyRule>& rules)
{
    auto begin = changes.size();
    auto time = rules.empty() ? 0 : rules.front().first - rules.front().offsetFrom;
    while (begin > 0) {
        const auto ruled = ruledChangeBefore(time, rules);
        const auto& change = changes[begin - 1];
        if (!ruled || ruled->time != change.time || !ruled->isAlike(change)) break;
        time = change.time;
        --begin;
    }
    return begin;
}

/// The days of each month on which the rule's change can fall: those of one week, moved by a time
/// beyond midnight. None where February's length decides.
std::map<int, std::vector<int>> daysByMonth(const YearlyRule& rule, int dayShift)
{
    constexpr int lengths[] = {31, 31, 0, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 31};
    constexpr int february = 2;
    const int month = std::countr_zero(rule.months);
    const int ordinal = rule.weekdays.front().ordinal;
    const int first = dayShift + 1
        + (ordinal > 0 ? daysPerWeek * (ordinal - 1) : lengths[month] + daysPerWeek * ordinal);
    std::map<int, std::vector<int>> days;
    for (int day = first; day < first + daysPerWeek; ++day) {
        if (day < 1)
            days[(month + 10) % 12 + 1].push_back(day + lengths[month - 1]);
        else if (day > lengths[month])
            days[month % 12 + 1].push_back(day - lengths[month]);
        else
            days[month].push_back(day);
    }
    if (month == february || days.contains(february)) days.clear();
    return days;
}

std::string joined(const std::vector<int>& numbers)
{
    std::string text;
    for (const int number : numbers)
        text.append(text.empty() ? "" : ",").append(std::to_string(number));
    return text;
}

/// Recurrences by month that fall where the rule does; none when they cannot be told.
std::map<int, std::string> recurrences(const YearlyRule& rule)
{
    constexpr const char* names[] = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
    if (std::popcount(rule.months) != 1 || rule.weekdays.size() != 1) return {};
    const int month = std::countr_zero(rule.months);
    const auto [weekday, ordinal] = rule.weekdays.front();
    const auto dayShift = static_cast<int>(dayOf(rule.time));
    if (dayShift == 0) return {{month, "BYDAY=" + std::to_string(ordinal) + names[weekday]}};

    const auto* const name
        = names[((weekday + dayShift) % daysPerWeek + daysPerWeek) % daysPerWeek];
    std::map<int, std::string> texts;
    for (const auto& [shifted, days] : daysByMonth(rule, dayShift))
        texts[shifted] = "BYMONTHDAY=" + joined(days) + ";BYDAY=" + name;
    return texts;
}

/// The rule's first change in `month`.
Change firstInMonth(const YearlyRule& rule, int month)
{
    constexpr int leastYears = 40; // until every weekday had every day of the month
    auto onset = rule.earliestOnset(rule.first).value_or(rule.first);
    for (int year = 0; year < leastYears; ++year) {
        if (CivilDate::fromDaysSince1970(dayOf(onset)).month == month) break;
        onset = rule.earliestOnset(onset + 1).value_or(onset);
    }
    return {
        onset - rule.offsetFrom, rule.offsetFrom, rule.offsetTo, rule.offsetTo > rule.offsetFrom};
}

/// The zone's rules, if all can be told as recurrences.
std::vector<YearlyRule> rulesToTell(const ZoneRules& zone)
{
    auto rules = zone.rules();
    const bool canBeTold = std::none_of(rules.begin(), rules.end(),
        [](const YearlyRule& rule) { return recurrences(rule).empty(); });
    if (!canBeTold) rules.clear();
    return rules;
}

} // namespace

std::string writeVTimeZone(std::string_view identifier, const ZoneRules& zone)
{
    std::string text;
    append(text, "BEGIN", "VTIMEZONE");
    append(text, "TZID", identifier);
    const int offsetOf1970 = zone.offsetAt(0);
    appendObservance(text, {-offsetOf1970, offsetOf1970, offsetOf1970, false}, "");

    auto single = listedChanges(zone);
    auto rules = rulesToTell(zone);
    const auto begin = beginOfRuled(single, rules);
    for (auto& rule : rules)
        if (begin < single.size()) rule.first = single[begin].time + rule.offsetFrom;
    single.resize(begin);
    while (!single.empty()) {
        const auto first = single.front();
        const auto rest = std::stable_partition(single.begin(), single.end(),
            [&](const Change& change) { return change.isAlike(first); });
        appendAlike(text, {single.begin(), rest});
        single.erase(single.begin(), rest);
    }
    for (const auto& rule : rules) {
        for (const auto& [month, recurrence] : recurrences(rule)) {
            appendObservance(text, firstInMonth(rule, month),
                "RRULE:FREQ=YEARLY;BYMONTH=" + std::to_string(month) + ";" + recurrence + "\r\n");
        }
    }
    append(text, "END", "VTIMEZONE");
    return text;
}

} // namespace Tessel
