#include "Tessel/Session/Text/FileEvent.h"

#include <map>
#include <set>
#include <utility>

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

Failure malformed(std::string reason)
{
    return {.kind = FailureKind::malformed, .reason = std::move(reason)};
}

/// Takes the calendars of a file apart by UID.
class FileReader {
public:
    void read(const TextComponent& calendar);
    /// Names what is no calendar.
    void refuse(const TextComponent& component);
    bool hasCalendar() const { return hasCalendar_; }

    std::vector<FileEvent> events;

private:
    /// What makes one event.
    struct Parts {
        std::string uid;
        std::vector<TextComponent> components = {};
        bool hasMain = false; ///< more than single instances
        bool isSecond = false; ///< there was another of this UID before
    };
    /// One calendar of the file.
    struct Calendar {
        std::string head;
        std::map<std::string, std::string> zones;
        std::vector<Parts> events; ///< in the order of the file

        std::string textOf(const Parts& parts) const;
    };

    using Places = std::map<std::string, std::size_t>; ///< of events by UID and kind

    void add(const TextComponent& component, Calendar& calendar, Places& places);
    static Result<EventText> eventOf(const Parts& parts, const Calendar& calendar);
    std::string nameless(const TextComponent& component);

    std::set<std::pair<std::string, std::string_view>> known_; ///< components by UID
    std::set<std::string> mains_; ///< UIDs and kinds of which there is more than single instances
    std::size_t namelessCount_ = 0;
    bool hasCalendar_ = false;
};

std::string FileReader::nameless(const TextComponent& component)
{
    return component.name() + " " + std::to_string(++namelessCount_) + " without UID";
}

void FileReader::add(const TextComponent& component, Calendar& calendar, Places& places)
{
    const auto uid = EventPart(component).uid();
    auto& all = calendar.events;
    if (uid.empty()) {
        // A thing of its own, which will be refused as such.
        all.push_back({nameless(component), {component}});
        return;
    }
    if (!known_.emplace(uid, component.raw()).second) return;
    const auto kind = uid + "\n" + inCapitals(component.name());
    const bool isMain = !component.line("RECURRENCE-ID");
    auto& place = places.try_emplace(kind, all.size()).first->second;
    if (place < all.size() && isMain && all[place].hasMain) {
        all.push_back({uid, {component}, true, true});
        return;
    }
    if (place == all.size()) all.push_back({uid});
    all[place].components.push_back(component);
    if (!isMain) return;
    all[place].hasMain = true;
    all[place].isSecond = !mains_.insert(kind).second;
}

std::string FileReader::Calendar::textOf(const Parts& parts) const
{
    std::set<std::string> used;
    std::string components;
    for (const auto& part : parts.components) {
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

Result<EventText> FileReader::eventOf(const Parts& parts, const Calendar& calendar)
{
    const auto& first = parts.components.front();
    if (!first.is("VEVENT")) {
        return Failure {.kind = FailureKind::unsupported, .reason = first.name() + " is no event."};
    }
    if (EventPart(first).uid().empty()) return malformed("The event has no UID.");
    if (parts.isSecond) return malformed("The file has two events of this UID.");
    return EventText::read(calendar.textOf(parts));
}

void FileReader::read(const TextComponent& component)
{
    hasCalendar_ = true;
    Calendar calendar;
    for (const auto& line : component.lines()) {
        // A stored object has no method (RFC 4791, 4.1).
        if (!line.is("METHOD") && !line.name().empty()) calendar.head += ended(line.raw());
    }
    Places places;
    for (const auto& each : component.components()) {
        if (!each.is("VTIMEZONE")) {
            add(each, calendar, places);
            continue;
        }
        const auto name = each.line("TZID");
        calendar.zones.emplace(name ? name->value() : std::string(), ended(each.raw()));
    }
    for (const auto& parts : calendar.events)
        events.push_back({parts.uid, eventOf(parts, calendar)});
}

void FileReader::refuse(const TextComponent& component)
{
    auto uid = EventPart(component).uid();
    if (uid.empty()) uid = nameless(component);
    events.push_back(
        {std::move(uid), malformed("The " + component.name() + " stands outside of a VCALENDAR.")});
}

} // namespace

Result<std::vector<FileEvent>> eventsOfFile(const std::string& text)
{
    const auto tree = TextTree::read(text);
    if (!tree) return tree.failure();
    FileReader reader;
    for (const auto& component : tree.value().components())
        component.is("VCALENDAR") ? reader.read(component) : reader.refuse(component);
    if (!reader.hasCalendar()) return malformed("The file is no calendar: it holds no VCALENDAR.");
    return std::move(reader.events);
}

} // namespace Tessel
