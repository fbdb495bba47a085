#include "Tessel/Platform/Foundation/Time/VTimeZoneText.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

#include <algorithm>
#include <vector>

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

std::string_view withoutZ(std::string_view dateTime)
{
    return dateTime.substr(0, dateTime.size() - dateTime.ends_with('Z'));
}

bool isDateTime(std::string_view text)
{
    return DateFormatter::date(withoutZ(text), "YYYYMMdd'T'HHmmss", TimeZone::UTC()).has_value();
}

/// "+0100" or "+010000".
bool isOffset(std::string_view text)
{
    if (text.empty() || (text.front() != '+' && text.front() != '-')) return false;
    const auto clock = text.substr(1);
    return DateFormatter::date(clock, "HHmm", TimeZone::UTC()).has_value()
        || DateFormatter::date(clock, "HHmmss", TimeZone::UTC()).has_value();
}

bool isRule(std::string_view text)
{
    return text.size() <= Limits::zoneRuleBytes && text.find("FREQ=YEARLY") != text.npos
        && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789=,;+-") == text.npos;
}

int year(std::string_view dateTime)
{
    int number = 0;
    for (const char digit : dateTime.substr(0, 4))
        number = number * 10 + (digit - '0');
    return number;
}

/// How often the rule changes clocks before it ends; one without an end goes on by itself. None
/// when the end is no time.
std::optional<int> transitions(std::string_view rule, std::string_view start)
{
    const auto found = rule.find("UNTIL=");
    if (found == rule.npos) return 1;
    auto until = rule.substr(found + 6);
    until = until.substr(0, until.find(';'));
    if (!isDateTime(until)) return std::nullopt;
    return std::max(1, year(until) - year(start) + 1);
}

/// How often the observance changes clocks; none when it cannot be read.
std::optional<int> transitions(const Observance& observance)
{
    if (!isDateTime(observance.start) || !isOffset(observance.offsetFrom)
        || !isOffset(observance.offsetTo))
        return std::nullopt;

    int count = 1;
    for (const auto rule : observance.rules) {
        if (!isRule(rule)) return std::nullopt;
        const auto ofRule = transitions(rule, observance.start);
        if (!ofRule) return std::nullopt;
        count += *ofRule;
    }
    for (const auto date : observance.dates) {
        if (!isDateTime(date)) return std::nullopt;
        ++count;
    }
    return count;
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

void append(std::string& text, std::string_view name, std::string_view value)
{
    text.append(name).append(":").append(value).append("\r\n");
}

void append(std::string& text, const Observance& observance)
{
    append(text, "BEGIN", observance.kind);
    append(text, "DTSTART", withoutZ(observance.start));
    append(text, "TZOFFSETFROM", observance.offsetFrom);
    append(text, "TZOFFSETTO", observance.offsetTo);
    for (const auto rule : observance.rules)
        append(text, "RRULE", rule);
    for (const auto date : observance.dates)
        append(text, "RDATE", date);
    append(text, "END", observance.kind);
}

} // namespace

std::optional<std::string> plainVTimeZoneText(std::string_view text)
{
    if (text.size() > Limits::zoneBytes) return std::nullopt;
    const auto lines = unfolded(text);
    const auto found = observances(lines);
    if (!found || found->empty()) return std::nullopt;

    std::string plain = "BEGIN:VTIMEZONE\r\nTZID:Zone\r\n";
    int total = 0;
    for (const auto& observance : *found) {
        const auto count = transitions(observance);
        if (!count || (total += *count) > Limits::zoneTransitions) return std::nullopt;
        append(plain, observance);
    }
    append(plain, "END", "VTIMEZONE");
    return plain;
}

} // namespace Tessel
