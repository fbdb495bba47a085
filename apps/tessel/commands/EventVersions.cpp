#include "apps/tessel/commands/EventVersions.h"

#include "apps/tessel/commands/UserTimes.h"
#include "apps/tessel/output/SafeText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace Tessel::App {

namespace {

/// In the order in which they are told; what else there is comes after them.
constexpr std::pair<std::string_view, const char*> labels[] {{"SUMMARY", "summary"},
    {"DTSTART", "start"}, {"DTEND", "end"}, {"DURATION", "duration"}, {"LOCATION", "location"},
    {"STATUS", "status"}, {"RRULE", "repeats"}, {"EXDATE", "but not"}, {"RDATE", "also"},
    {"DESCRIPTION", "description"}, {"ATTENDEE", "invited"}};

/// They follow from everything else.
constexpr std::array<std::string_view, 6> unsaid {
    "UID", "DTSTAMP", "LAST-MODIFIED", "CREATED", "SEQUENCE", "RECURRENCE-ID"};

/// What a version says: by the instance, the place among the labels, and the label.
using Key = std::tuple<std::string, std::size_t, std::string>;
using Sayings = std::map<Key, std::string>;

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// A value for a person.
std::string plain(const EventPart& part, const TextLine& line)
{
    const auto start = part.start();
    const auto end = part.writtenEnd();
    if (line.is("DTSTART") && start) return shownMoment(*start);
    if (line.is("DTEND") && end) return shownEnd(*end, start.value_or(*end));
    for (const auto* name : {"SUMMARY", "LOCATION", "DESCRIPTION"}) {
        if (line.is(name)) return part.text(name).value_or("");
    }
    const auto answer = line.is("ATTENDEE") ? line.parameter("PARTSTAT") : std::nullopt;
    return line.value() + (answer ? " (" + *answer + ")" : "");
}

void read(const EventPart& part, Sayings& sayings)
{
    const auto id = part.recurrenceId();
    const auto day = id ? " of " + shownMoment(*id) : std::string();
    const auto add = [&](const std::string& name, const std::string& value) {
        const auto* const known = std::find_if(std::begin(labels), std::end(labels),
            [&](const auto& each) { return each.first == name; });
        const auto label = known == std::end(labels) ? lowerCase(name) : known->second;
        auto& all = sayings[{id ? isoMoment(*id) : "", known - std::begin(labels), label + day}];
        all += (all.empty() ? "" : ", ") + value;
    };
    for (const auto& line : part.component().lines()) {
        const auto name = inCapitals(line.name());
        if (std::find(unsaid.begin(), unsaid.end(), name) == unsaid.end())
            add(name, plain(part, line));
    }
    for (const auto& component : part.component().components()) {
        const auto trigger = component.line("TRIGGER");
        add(component.is("VALARM") ? "alarm" : component.name(),
            trigger ? trigger->value() : "there is one");
    }
}

Sayings sayingsOf(const std::string& text)
{
    Sayings sayings;
    const auto event = EventText::read(text);
    if (!event) return sayings;
    read(event.value().main(), sayings);
    for (const auto& part : event.value().overrides())
        read(part, sayings);
    return sayings;
}

std::array<std::string, 2> versions(const BothTexts& texts, const std::string& base)
{
    const auto& [mine, theirs] = texts;
    return {"  yours: " + changeIn(mine, base.empty() ? theirs : base),
        "  theirs: " + changeIn(theirs, base.empty() ? mine : base)};
}

} // namespace

std::string changeIn(const std::string& after, const std::string& before)
{
    constexpr std::size_t longestValue = 100;
    constexpr std::size_t longestLine = 1'000;
    if (after.empty()) return "removed";
    if (!EventText::read(after)) return "cannot be read";
    const auto now = sayingsOf(after);
    const auto then = sayingsOf(before);
    std::vector<std::pair<Key, std::string>> changes;
    for (const auto& [key, value] : now) {
        const auto found = then.find(key);
        if (found == then.end() || found->second != value) changes.emplace_back(key, value);
    }
    for (const auto& [key, value] : then) {
        if (!now.contains(key)) changes.emplace_back(key, "none");
    }
    std::sort(changes.begin(), changes.end());
    std::string line;
    for (const auto& [key, value] : changes)
        line += (line.empty() ? "" : "; ") + std::get<2>(key) + ": "
            + shortened(value, longestValue);
    return line.empty() ? "the same" : shortened(line, longestLine);
}

void noteVersions(const Output& out, const BothTexts& texts, const std::string& base)
{
    if (out.isJson()) return;
    for (const auto& line : versions(texts, base))
        out.note(line);
}

void listVersions(const Output& out, const BothTexts& texts, const std::string& base)
{
    for (const auto& line : versions(texts, base))
        out.line(line);
}

} // namespace Tessel::App
