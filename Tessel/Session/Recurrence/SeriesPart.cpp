#include "Tessel/Session/Recurrence/SeriesPart.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

std::int64_t inMilliseconds(auto time)
{
    return duration_cast<milliseconds>(time).count();
}

template <class Visit> void eachItem(std::string_view list, Visit visit)
{
    for (;;) {
        const auto comma = list.find(',');
        visit(list.substr(0, comma));
        if (comma == list.npos) return;
        list.remove_prefix(comma + 1);
    }
}

Failure unreadable(const std::string& start)
{
    constexpr std::size_t longest = 40;
    const bool isShort = start.size() <= longest;
    return {.kind = FailureKind::malformed,
        .reason
        = "The start of the event cannot be read" + (isShort ? ": \"" + start + "\"." : ".")};
}

/// Reads the lines of one component.
class PartReader {
public:
    PartReader(SeriesZones& zones, SeriesPart& part)
        : zones_(zones)
        , part_(part)
    {
    }

    void read(const TextLine& line);
    /// False where the component has no place in time, as a task may have none.
    Result<bool> finish(const TextComponent& component);

private:
    std::optional<Moment> moment(std::string_view value, const std::string& tzid);
    std::optional<Moment> moment(const TextLine& line)
    {
        return moment(line.value(), line.parameter("TZID").value_or(""));
    }
    void readId(const TextLine& line);
    void readAdded(const TextLine& line);
    void readExcluded(const TextLine& line);

    SeriesZones& zones_;
    SeriesPart& part_;
    std::optional<Moment> start_;
};

std::optional<Moment> PartReader::moment(std::string_view value, const std::string& tzid)
{
    const auto read = EventMoment::read(value);
    if (!read) return std::nullopt;
    Moment moment {inMilliseconds(read->local.time_since_epoch()), read->kind, &zones_.local()};
    if (moment.kind == EventMoment::Kind::floating && !tzid.empty()) {
        moment.kind = EventMoment::Kind::zoned;
        moment.zone = &zones_.zone(tzid);
    }
    return moment;
}

void PartReader::readId(const TextLine& line)
{
    auto tzid = line.parameter("TZID").value_or("");
    part_.id = moment(line.value(), tzid);
    if (!part_.id) return;
    part_.recurrenceId = EventMoment::read(line.value());
    if (part_.id->kind == EventMoment::Kind::zoned) {
        part_.recurrenceId->kind = EventMoment::Kind::zoned;
        part_.recurrenceId->zone = std::move(tzid);
    }
    part_.isForFollowing = isSameName(line.parameter("RANGE").value_or(""), "THISANDFUTURE");
}

void PartReader::readAdded(const TextLine& line)
{
    const auto tzid = line.parameter("TZID").value_or("");
    eachItem(line.value(), [&](std::string_view item) {
        const auto slash = item.find('/');
        const auto start = moment(item.substr(0, slash), tzid);
        if (!start) return;
        auto& added = part_.added.emplace_back(AddedDate {*start, std::nullopt});
        if (slash == item.npos) return;
        item.remove_prefix(slash + 1);
        added.length = Length {moment(item, tzid), EventDuration::read(item)};
    });
}

void PartReader::readExcluded(const TextLine& line)
{
    const auto tzid = line.parameter("TZID").value_or("");
    eachItem(line.value(), [&](std::string_view item) {
        if (const auto excluded = moment(item, tzid)) part_.excluded.push_back(*excluded);
    });
}

void PartReader::read(const TextLine& line)
{
    if (line.is("DTSTART")) {
        start_ = moment(line);
        part_.tzid = line.parameter("TZID").value_or("");
    } else if (line.is("DTEND") || line.is("DUE")) {
        part_.length.end = moment(line);
    } else if (line.is("DURATION")) {
        part_.length.duration = EventDuration::read(line.value());
    } else if (line.is("UID")) {
        part_.uid = line.value();
    } else if (line.is("STATUS")) {
        part_.isCancelled = isSameName(line.value(), "CANCELLED");
    } else if (line.is("RECURRENCE-ID")) {
        readId(line);
    } else if (line.is("RRULE")) {
        part_.rules.push_back(line.value());
    } else if (line.is("EXRULE")) {
        part_.exceptionRules.push_back(line.value());
    } else if (line.is("RDATE")) {
        readAdded(line);
    } else if (line.is("EXDATE")) {
        readExcluded(line);
    }
}

Result<bool> PartReader::finish(const TextComponent& component)
{
    const auto written = component.line("DTSTART");
    if (!start_ && written && !part_.id) return unreadable(written->value());
    if (!start_) start_ = part_.length.end;
    // A cancellation may say no more than which instance it is (RFC 5546, 3.2.5).
    if (!start_) start_ = part_.id;
    if (start_) part_.start = *start_;
    if (!start_ && component.is("VEVENT"))
        return Failure {.kind = FailureKind::malformed, .reason = "The event has no start."};
    return start_.has_value();
}

} // namespace

Result<std::vector<SeriesPart>> readParts(const TextTree& tree, SeriesZones& zones)
{
    std::vector<SeriesPart> parts;
    std::optional<Failure> fault;
    std::string uid; // of what has the fault
    std::uint32_t number = 0;
    for (const auto calendar : tree.components()) {
        for (const auto component : calendar.components()) {
            const auto own = number++;
            if (!component.is("VEVENT") && !component.is("VTODO") && !component.is("VJOURNAL"))
                continue;
            auto& part = parts.emplace_back();
            part.component = own;
            PartReader reader(zones, part);
            for (const auto line : component.lines())
                reader.read(line);
            const auto isPlaced = reader.finish(component);
            if (isPlaced && isPlaced.value()) continue;
            if (!isPlaced && !fault) {
                fault = isPlaced.failure();
                uid = part.uid;
            }
            parts.pop_back();
        }
    }
    const auto isOfFault = [&](const SeriesPart& part) { return part.uid == uid; };
    if (fault && std::all_of(parts.begin(), parts.end(), isOfFault)) return std::move(*fault);
    return parts;
}

Span spanOf(const Moment& start, const Moment& first, const Length& length)
{
    const auto time = start.time();
    if (start.isDay()) {
        auto span = millisecondsOfDay;
        if (length.duration)
            span = inMilliseconds(length.duration->total());
        else if (length.end)
            span = dayOf(length.end->local) - dayOf(first.local);
        if (span <= 0) span = millisecondsOfDay; // some programs end a day on itself
        return {time, start.timeAt(start.local + span), start.local + span};
    }
    auto end = time;
    if (length.duration) {
        // Days go by the clock, the rest is exact (RFC 5545, 3.3.6).
        const auto& [days, rest] = *length.duration;
        end = start.timeAt(start.local + inMilliseconds(days)) + inMilliseconds(rest);
    } else if (length.end) {
        end = time + length.end->time() - (&first == &start ? time : first.time());
    }
    end = std::max(end, time);
    return {time, end, start.localAt(end)};
}

} // namespace Tessel
