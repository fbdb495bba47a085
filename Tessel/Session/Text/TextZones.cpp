#include "Tessel/Session/Text/TextZones.h"

#include "Tessel/Session/Text/ContentLine.h"
#include "Tessel/Session/Text/LocalTime.h"

namespace Tessel {

using namespace std::chrono;

namespace {

std::optional<TimeZone> knownZone(std::string_view tzid)
{
    if (auto zone = TimeZone::withIdentifier(tzid)) return zone;
    return TimeZone::withWindowsName(tzid);
}

/// Some programs put their own domain and version before the identifier (RFC 5545, 3.8.3.1).
std::optional<TimeZone> zoneAtEndOf(std::string_view tzid)
{
    constexpr int mostComponents = 3;
    std::optional<TimeZone> found;
    auto slash = tzid.size();
    for (int count = 0; count < mostComponents && slash != tzid.npos && slash > 0; ++count) {
        slash = tzid.rfind('/', slash - 1);
        if (slash == tzid.npos) break;
        if (auto zone = TimeZone::withIdentifier(tzid.substr(slash + 1))) found = std::move(zone);
    }
    return found;
}

std::optional<TimeZone> definedZone(const TextComponent& definition, const std::string& tzid)
{
    std::string text;
    const auto append = [&text](const TextLine& line) {
        text.append(inCapitals(line.name())).append(":");
        text.append(
            line.record().isBegin || line.record().isEnd ? inCapitals(line.value()) : line.value());
        text.append("\n");
    };
    append(definition.begin());
    for (const auto observance : definition.components()) {
        append(observance.begin());
        for (const auto line : observance.lines())
            append(line);
        append(observance.end());
    }
    append(definition.end());
    return TimeZone::fromVTimeZone(text, tzid);
}

} // namespace

std::optional<TextComponent> TextZones::definition(std::string_view tzid)
{
    if (!tree_) return std::nullopt;
    if (!definitions_) {
        definitions_.emplace();
        for (const auto calendar : tree_->components()) {
            for (const auto component : calendar.components()) {
                const auto line = component.is("VTIMEZONE") ? component.line("TZID") : std::nullopt;
                if (!line) continue;
                // Some escape it as a text, some do not.
                definitions_->emplace(line->value(), component);
                definitions_->emplace(plainText(line->value()), component);
            }
        }
    }
    const auto found = definitions_->find(tzid);
    if (found == definitions_->end()) return std::nullopt;
    return found->second;
}

std::set<std::string, std::less<>> TextZones::used() const
{
    std::set<std::string, std::less<>> names;
    if (!tree_) return names;
    const auto& index = tree_->index();
    for (std::uint32_t i = 0; i < index.lines.size(); ++i)
        if (auto name = index.line(i).parameter("TZID")) names.insert(std::move(*name));
    return names;
}

const std::optional<TimeZone>& TextZones::zone(const std::string& tzid)
{
    const auto found = zones_.find(tzid);
    if (found != zones_.end()) return found->second;
    std::optional<TimeZone> zone;
    if (const auto own = definition(tzid)) zone = definedZone(*own, tzid);
    if (!zone) zone = knownZone(tzid);
    if (!zone) zone = zoneAtEndOf(tzid);
    return zones_.emplace(tzid, std::move(zone)).first->second;
}

Date TextZones::dateOf(const EventMoment& moment, const TimeZone& here)
{
    const auto local = milliseconds(moment.local.time_since_epoch()).count();
    if (moment.kind == EventMoment::Kind::utc) return Date::fromMillisecondsSince1970(local);
    const auto* known = &here;
    if (moment.kind == EventMoment::Kind::zoned)
        if (const auto& own = zone(moment.zone)) known = &*own;
    return Date::fromMillisecondsSince1970(momentOf(*known, local));
}

local_seconds TextZones::localAs(const EventMoment& like, const EventMoment& moment)
{
    using Kind = EventMoment::Kind;
    const auto isFixed = [](Kind kind) { return kind == Kind::utc || kind == Kind::zoned; };
    const bool isSameClock = like.kind == moment.kind && like.zone == moment.zone;
    if (isSameClock || !isFixed(like.kind) || !isFixed(moment.kind)) return moment.local;
    auto local = dateOf(moment).millisecondsSince1970();
    if (like.kind == Kind::zoned)
        if (const auto& known = zone(like.zone)) local = localOf(*known, local);
    return floor<seconds>(local_time<milliseconds>(milliseconds(local)));
}

EventMoment TextZones::after(const EventMoment& moment, const EventDuration& duration)
{
    auto later = moment;
    later.local += duration.days;
    if (moment.isDay()) {
        later.local += floor<days>(duration.time);
    } else if (moment.kind != EventMoment::Kind::zoned) {
        later.local += duration.time;
    } else if (duration.time != seconds(0)) {
        const auto time = EventMoment::utc(dateOf(later)).local + duration.time;
        const auto fixed = EventMoment::utc(sys_seconds(time.time_since_epoch()));
        later.local = localAs(moment, fixed);
        if (dateOf(later) != dateOf(fixed)) return fixed;
    }
    return later;
}

std::string zoneDefinition(const std::string& tzid, std::string_view lineEnd)
{
    const auto zone = knownZone(tzid);
    if (!zone) return {};
    std::string text;
    const auto written = zone->vTimeZone(tzid);
    for (std::string_view rest = written; !rest.empty();) {
        const auto end = rest.find("\r\n");
        text += foldedLine(rest.substr(0, end), lineEnd);
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 2);
    }
    return text;
}

} // namespace Tessel
