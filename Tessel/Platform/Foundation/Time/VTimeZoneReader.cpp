#include "Tessel/Platform/Foundation/Time/VTimeZoneReader.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Time/YearlyRuleText.h"

#include <algorithm>
#include <string>

namespace Tessel {

namespace {

struct Line {
    std::string_view name;
    std::string_view value;
};

/// STANDARD or DAYLIGHT (RFC 5545, 3.6.5) as it is collected.
struct Observance {
    std::string_view kind;
    std::string_view start;
    std::string_view offsetFrom;
    std::string_view offsetTo;
    std::vector<std::string_view> rules;
    std::vector<std::string_view> dates;
};

std::string unfolded(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') continue;
        const bool isFold
            = text[i] == '\n' && i + 1 < text.size() && (text[i + 1] == ' ' || text[i + 1] == '\t');
        if (isFold)
            ++i;
        else
            result += text[i];
    }
    return result;
}

/// The next line of `text` without its parameters.
Line takeLine(std::string_view& text)
{
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));

    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') quoted = !quoted;
        if (line[i] != ':' || quoted) continue;
        const auto head = line.substr(0, i);
        return {head.substr(0, head.find(';')), line.substr(i + 1)};
    }
    return {};
}

/// RDATE holds a list of times, or of periods that begin with one (RFC 5545, 3.8.5.2).
void addDates(std::string_view list, std::vector<std::string_view>& dates)
{
    while (!list.empty()) {
        const auto item = list.substr(0, list.find(','));
        list.remove_prefix(std::min(list.size(), item.size() + 1));
        dates.push_back(item.substr(0, item.find('/')));
    }
}

/// None when one is left open or there are too many.
std::optional<std::vector<Observance>> observances(std::string_view text)
{
    std::vector<Observance> found;
    bool isOpen = false;
    while (!text.empty()) {
        const auto [name, value] = takeLine(text);
        if (name == "BEGIN" && (value == "STANDARD" || value == "DAYLIGHT")) {
            if (isOpen || found.size() == Limits::zoneObservances) return std::nullopt;
            found.push_back({.kind = value});
            isOpen = true;
        } else if (!isOpen) {
            continue;
        } else if (name == "END") {
            if (value != found.back().kind) return std::nullopt;
            isOpen = false;
        } else if (name == "DTSTART") {
            found.back().start = value;
        } else if (name == "TZOFFSETFROM") {
            found.back().offsetFrom = value;
        } else if (name == "TZOFFSETTO") {
            found.back().offsetTo = value;
        } else if (name == "RRULE") {
            found.back().rules.push_back(value);
        } else if (name == "RDATE") {
            addDates(value, found.back().dates);
        }
    }
    if (isOpen) return std::nullopt;
    return found;
}

/// "+0100" or "+010000".
std::optional<int> readOffset(std::string_view text)
{
    if (text.size() != 5 && text.size() != 7) return std::nullopt;
    const std::string clock
        = "19700101T" + std::string(text.substr(1)).append(7 - text.size(), '0');
    const auto size = readLocalTime(clock);
    if (!size || (text.front() != '+' && text.front() != '-')) return std::nullopt;
    return static_cast<int>(text.front() == '-' ? -*size : *size);
}

/// Changes of clocks are local times, whatever a "Z" behind them says.
std::optional<std::int64_t> readOnset(std::string_view text)
{
    if (text.ends_with('Z')) text.remove_suffix(1);
    return readLocalTime(text);
}

/// What the observances of a definition add up to.
class Collector {
public:
    /// False when the observance cannot be read.
    bool add(const Observance& observance)
    {
        const auto start = readOnset(observance.start);
        const auto from = readOffset(observance.offsetFrom);
        const auto to = readOffset(observance.offsetTo);
        if (!start || !from || !to) return false;

        const YearlyRule any {.first = *start,
            .offsetFrom = *from,
            .offsetTo = *to,
            .isDaylight = observance.kind == "DAYLIGHT"};
        if (observance.rules.empty()) addOnset(any, *start);
        for (const auto date : observance.dates) {
            const auto time = readOnset(date);
            if (!time) return false;
            addOnset(any, *time);
        }
        return std::all_of(observance.rules.begin(), observance.rules.end(),
            [&](std::string_view text) { return addRule(any, text); });
    }

    /// None when clocks are never changed, or by more rules at once than can be looked up soon.
    std::optional<ZoneRules> rules() &&
    {
        if (!isAnything() || mostRulesAtOnce() > Limits::zoneRulesAtOnce) return std::nullopt;
        return ZoneRules(initialOffset_, std::move(onsets_), std::move(rules_));
    }

private:
    bool isAnything() const { return !onsets_.empty() || !rules_.empty(); }

    std::size_t mostRulesAtOnce() const
    {
        std::size_t most = 0;
        for (const auto& one : rules_) {
            const auto count = std::count_if(rules_.begin(), rules_.end(), [&](const auto& other) {
                return other.first <= one.first && one.first <= other.last;
            });
            most = std::max(most, static_cast<std::size_t>(count));
        }
        return most;
    }

    void noteFirst(const YearlyRule& rule, std::int64_t localOnset)
    {
        const auto time = localOnset - rule.offsetFrom;
        if (time >= first_) return;
        first_ = time;
        initialOffset_ = rule.offsetFrom;
    }

    void addOnset(const YearlyRule& observance, std::int64_t localOnset)
    {
        noteFirst(observance, localOnset);
        onsets_.push_back(
            {localOnset - observance.offsetFrom, observance.offsetTo, observance.isDaylight});
    }

    bool addRule(YearlyRule rule, std::string_view text)
    {
        if (rules_.size() == Limits::zoneRules || !readYearlyRule(text, rule)) return false;
        if (const auto onset = rule.earliestOnset(rule.first)) {
            noteFirst(rule, *onset);
            rules_.push_back(std::move(rule));
        }
        return true;
    }

    std::int64_t first_ = std::numeric_limits<std::int64_t>::max();
    int initialOffset_ = 0;
    std::vector<ZoneRules::Onset> onsets_;
    std::vector<YearlyRule> rules_;
};

} // namespace

std::optional<ZoneRules> readVTimeZone(std::string_view text)
{
    if (text.size() > Limits::zoneBytes) return std::nullopt;
    const auto lines = unfolded(text);
    const auto found = observances(lines);
    if (!found) return std::nullopt;

    Collector collector;
    for (const auto& observance : *found)
        if (!collector.add(observance)) return std::nullopt;
    return std::move(collector).rules();
}

} // namespace Tessel
