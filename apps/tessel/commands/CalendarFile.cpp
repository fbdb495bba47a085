#include "apps/tessel/commands/CalendarFile.h"

#include <algorithm>

namespace Tessel::App {

namespace {

constexpr const char* product = "PRODID:-//Tessel//tessel//EN\r\n";

std::string tzidOf(const TextComponent& zone)
{
    const auto line = zone.line("TZID");
    return line ? line->value() : std::string();
}

std::string ended(std::string_view raw)
{
    std::string text(raw);
    if (!text.ends_with('\n')) text += "\r\n";
    return text;
}

std::string escaped(const std::string& text)
{
    std::string value;
    for (const char c : text) {
        if (c == '\\' || c == ';' || c == ',') value += '\\';
        if (static_cast<unsigned char>(c) >= 0x20) value += c;
    }
    return value;
}

/// The zones that lines of the component name.
void collectZones(const TextComponent& component, std::set<std::string>& zones)
{
    for (const auto& line : component.lines()) {
        if (auto zone = line.parameter("TZID")) zones.insert(std::move(*zone));
    }
    for (const auto& each : component.components())
        collectZones(each, zones);
}

/// One calendar of a file: what stands in it, by UID.
struct Sorted {
    std::string head;
    std::map<std::string, std::string> zones;
    std::vector<std::string> uids; ///< in the order of the file
    std::map<std::string, std::vector<TextComponent>> parts;

    explicit Sorted(const TextComponent& calendar)
    {
        for (const auto& line : calendar.lines()) {
            // A stored object has no method (RFC 4791, 4.1).
            if (!line.is("METHOD") && !line.name().empty()) head += ended(line.raw());
        }
        std::size_t nameless = 0;
        for (const auto& component : calendar.components()) {
            if (component.is("VTIMEZONE")) {
                zones.emplace(tzidOf(component), ended(component.raw()));
                continue;
            }
            auto uid = EventPart(component).uid();
            // What has no UID is a thing of its own, and will be refused as such.
            if (uid.empty())
                uid = "(" + component.name() + " " + std::to_string(++nameless) + " without UID)";
            auto& place = parts[uid];
            if (place.empty()) uids.push_back(uid);
            place.push_back(component);
        }
    }

    std::string textOf(const std::string& uid) const
    {
        std::set<std::string> used;
        std::string components;
        for (const auto& part : parts.at(uid)) {
            collectZones(part, used);
            components += ended(part.raw());
        }
        std::string text = "BEGIN:VCALENDAR\r\n" + head;
        for (const auto& name : used) {
            const auto zone = zones.find(name);
            if (zone != zones.end()) text += zone->second;
        }
        return text + components + "END:VCALENDAR\r\n";
    }
};

} // namespace

Result<std::vector<FileEvent>> eventsOf(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return tree.failure();
    std::vector<FileEvent> events;
    for (const auto& calendar : tree.value().components()) {
        const Sorted sorted(calendar);
        for (const auto& uid : sorted.uids) {
            const auto& first = sorted.parts.at(uid).front();
            if (!first.is("VEVENT")) {
                events.push_back({uid,
                    Failure {.kind = FailureKind::unsupported,
                        .reason = "It is a " + first.name() + ", no event."}});
            } else if (!EventPart(first).component().line("UID")) {
                events.push_back({uid,
                    Failure {.kind = FailureKind::malformed, .reason = "The event has no UID."}});
            } else {
                events.push_back({uid, EventText::read(sorted.textOf(uid))});
            }
        }
    }
    return events;
}

JoinedCalendar::JoinedCalendar(const std::string& name, Write write)
    : write_(std::move(write))
{
    write_(std::string("BEGIN:VCALENDAR\r\nVERSION:2.0\r\n") + product
        + "X-WR-CALNAME:" + escaped(name) + "\r\n");
}

Outcome JoinedCalendar::add(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return tree.failure();
    std::map<std::string, std::string> zones;
    for (const auto& calendar : tree.value().components()) {
        for (const auto& component : calendar.components()) {
            if (component.is("VTIMEZONE")) zones[tzidOf(component)] = ended(component.raw());
        }
    }
    const bool differs = std::any_of(zones.begin(), zones.end(), [&](const auto& zone) {
        const auto known = zones_.find(zone.first);
        return known != zones_.end() && known->second != zone.second;
    });
    if (differs) {
        apart_.push_back(ended(text));
        return {};
    }
    for (const auto& [name, zone] : zones) {
        if (zones_.emplace(name, zone).second) write_(zone);
    }
    for (const auto& calendar : tree.value().components()) {
        for (const auto& component : calendar.components()) {
            if (!component.is("VTIMEZONE")) write_(ended(component.raw()));
        }
    }
    return {};
}

void JoinedCalendar::end()
{
    write_("END:VCALENDAR\r\n");
    for (const auto& text : apart_)
        write_(text);
}

} // namespace Tessel::App
