#include "Tessel/Session/Text/JoinedCalendar.h"

#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/Session/Text/ContentLine.h"
#include "Tessel/Session/Text/TextTree.h"

#include <algorithm>

namespace Tessel {

namespace {

/// Each line with the end that RFC 5545, 3.1 wants; the last one of an object may have none.
std::string ended(std::string_view raw)
{
    std::string text;
    text.reserve(raw.size() + 2);
    for (const char c : raw) {
        if (c == '\n' && !text.ends_with('\r')) text += '\r';
        text += c;
    }
    if (!text.ends_with('\n')) text += "\r\n";
    return text;
}

} // namespace

JoinedCalendar::JoinedCalendar(const std::string& name, Write write)
    : write_(std::move(write))
{
    write_("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tessel//Session//EN\r\n"
        + contentLine("X-WR-CALNAME", {}, escapedText(name)));
}

Outcome JoinedCalendar::add(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return tree.failure();
    std::map<std::string, std::string> zones;
    std::string others;
    for (const auto& calendar : tree.value().components()) {
        for (const auto& component : calendar.components()) {
            const auto raw = ended(component.raw());
            if (!component.is("VTIMEZONE")) {
                others += raw;
                continue;
            }
            const auto name = component.line("TZID");
            zones[name ? name->value() : std::string()] = raw;
        }
    }
    const bool differs = std::any_of(zones.begin(), zones.end(), [&](const auto& zone) {
        const auto known = zones_.find(zone.first);
        // Of a zone of the database each program has a definition of its own, and means the same.
        return known != zones_.end() && known->second != zone.second
            && !TimeZone::withIdentifier(zone.first);
    });
    if (differs) {
        apart_.push_back(ended(text));
        return {};
    }
    for (const auto& [name, zone] : zones) {
        if (zones_.emplace(name, zone).second) write_(zone);
    }
    write_(others);
    return {};
}

void JoinedCalendar::end()
{
    write_("END:VCALENDAR\r\n");
    for (const auto& text : apart_)
        write_(text);
}

} // namespace Tessel
