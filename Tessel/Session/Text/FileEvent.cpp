#include "Tessel/Session/Text/FileEvent.h"

#include <map>
#include <set>

namespace Tessel {

namespace {

/// The last line of a file may have no end.
std::string ended(std::string_view raw)
{
    std::string text(raw);
    if (!text.ends_with('\n')) text += "\r\n";
    return text;
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
struct PartsByUID {
    std::string head;
    std::map<std::string, std::string> zones;
    std::vector<std::string> uids; ///< in the order of the file
    std::map<std::string, std::vector<TextComponent>> parts;

    explicit PartsByUID(const TextComponent& calendar)
    {
        for (const auto& line : calendar.lines()) {
            // A stored object has no method (RFC 4791, 4.1).
            if (!line.is("METHOD") && !line.name().empty()) head += ended(line.raw());
        }
        std::size_t nameless = 0;
        for (const auto& component : calendar.components()) {
            if (component.is("VTIMEZONE")) {
                const auto name = component.line("TZID");
                zones.emplace(name ? name->value() : std::string(), ended(component.raw()));
                continue;
            }
            auto uid = EventPart(component).uid();
            // What has no UID is a thing of its own, and will be refused as such.
            if (uid.empty())
                uid = component.name() + " " + std::to_string(++nameless) + " without UID";
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

    Result<EventText> eventOf(const std::string& uid) const
    {
        const auto& first = parts.at(uid).front();
        if (!first.is("VEVENT")) {
            return Failure {
                .kind = FailureKind::unsupported, .reason = first.name() + " is no event."};
        }
        if (EventPart(first).uid().empty())
            return Failure {.kind = FailureKind::malformed, .reason = "The event has no UID."};
        return EventText::read(textOf(uid));
    }
};

} // namespace

Result<std::vector<FileEvent>> eventsOfFile(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return tree.failure();
    std::vector<FileEvent> events;
    for (const auto& calendar : tree.value().components()) {
        const PartsByUID parts(calendar);
        for (const auto& uid : parts.uids)
            events.push_back({uid, parts.eventOf(uid)});
    }
    return events;
}

} // namespace Tessel
