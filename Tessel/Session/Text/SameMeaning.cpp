#include "Tessel/Session/Text/SameMeaning.h"

#include "Tessel/Session/Text/ContentLine.h"
#include "Tessel/Session/Text/TextTree.h"

#include <algorithm>
#include <optional>

namespace Tessel {

namespace {

using Statements = std::vector<std::string>;

bool counts(const std::string& name)
{
    constexpr std::string_view others[]
        = {"", "DTSTAMP", "LAST-MODIFIED", "CREATED", "SEQUENCE", "SCHEDULE-STATUS"};
    return !name.starts_with("X-")
        && std::find(std::begin(others), std::end(others), name) == std::end(others);
}

std::string parametersOf(const TextLine& line)
{
    Statements found;
    for (const auto& parameter : line.parameters()) {
        auto text = inCapitals(parameter.name);
        for (const auto& value : parameter.values)
            text.append("=").append(value);
        if (counts(text.substr(0, text.find('='))) && text != "VALUE=DATE-TIME")
            found.push_back(";" + text);
    }
    std::sort(found.begin(), found.end());
    std::string all;
    for (const auto& each : found)
        all += each;
    return all;
}

Statements split(std::string_view text, char separator)
{
    Statements parts;
    for (std::size_t start = 0; start <= text.size();) {
        const auto end = std::min(text.find(separator, start), text.size());
        parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

/// The value of a line, or the values of one that is a list.
Statements valuesOf(const TextLine& line)
{
    const auto value = line.value();
    if (line.is("CATEGORIES")) return plainTexts(value);
    if (line.is("EXDATE") || line.is("RDATE")) return split(value, ',');
    if (!line.is("RRULE") && !line.is("EXRULE")) return {plainText(value)};
    auto parts = split(inCapitals(value), ';');
    std::sort(parts.begin(), parts.end());
    std::string rule;
    for (const auto& part : parts)
        rule.append(part).append(";");
    return {rule};
}

std::string meaningOf(const TextComponent& component)
{
    Statements statements;
    for (const auto& line : component.lines()) {
        const auto name = inCapitals(line.name());
        if (!counts(name)) continue;
        const auto head = name + parametersOf(line) + ":";
        for (const auto& value : valuesOf(line))
            statements.push_back(head + value);
    }
    for (const auto& inner : component.components())
        statements.push_back(meaningOf(inner));
    std::sort(statements.begin(), statements.end());
    auto all = inCapitals(component.name()) + "{";
    for (const auto& statement : statements)
        all.append(statement).append(1, '\0');
    return all + "}";
}

std::optional<Statements> meaningOf(std::string_view text)
{
    const auto tree = TextTree::read(std::string(text));
    if (!tree) return std::nullopt;
    Statements events;
    for (const auto& calendar : tree.value().components()) {
        for (const auto& component : calendar.components()) {
            if (!component.is("VTIMEZONE")) events.push_back(meaningOf(component));
        }
    }
    std::sort(events.begin(), events.end());
    return events;
}

/// The next line that is no stamp, without its end; none at the end of the text.
std::optional<std::string_view> nextLine(std::string_view& text)
{
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        auto line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        const auto name = line.substr(0, line.find_first_of(":;"));
        if (!isSameName(name, "DTSTAMP") && !isSameName(name, "LAST-MODIFIED")) return line;
    }
    return std::nullopt;
}

} // namespace

bool meanTheSame(std::string_view a, std::string_view b)
{
    if (a == b) return true;
    const auto one = meaningOf(a);
    return one && one == meaningOf(b);
}

bool isSameButStamps(std::string_view a, std::string_view b)
{
    while (true) {
        const auto one = nextLine(a);
        if (one != nextLine(b)) return false;
        if (!one) return true;
    }
}

} // namespace Tessel
