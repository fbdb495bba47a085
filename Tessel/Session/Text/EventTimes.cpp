#include "Tessel/Session/Text/EventTimes.h"

#include "Tessel/Session/Text/EditCheck.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

seconds timeBetween(const EventMoment& start, const EventMoment& end, TextZones& zones)
{
    const auto length
        = zones.dateOf(end).millisecondsSince1970() - zones.dateOf(start).millisecondsSince1970();
    return seconds(length / 1000);
}

bool isSameForm(const EventMoment& a, const EventMoment& b)
{
    return a.kind == b.kind && a.zone == b.zone;
}

bool isSkipped(const EventMoment& moment, TextZones& zones)
{
    return moment.kind == EventMoment::Kind::zoned
        && zones.localAs(moment, EventMoment::utc(zones.dateOf(moment))) != moment.local;
}

} // namespace

std::optional<EventMoment> endOf(const EventPart& part, TextZones& zones)
{
    if (auto end = part.writtenEnd()) return end;
    auto start = part.start();
    if (!start) return std::nullopt;
    if (const auto duration = part.duration()) return zones.after(*start, *duration);
    if (start->isDay()) start->local += days(1);
    return start;
}

seconds lengthBetween(const EventMoment& start, const EventMoment& end, TextZones& zones)
{
    if (isSameForm(start, end)) return end.local - start.local;
    return timeBetween(start, end, zones);
}

EventMoment endAfterMove(
    const EventMoment& start, const EventMoment& end, const EventMoment& newStart, TextZones& zones)
{
    if (newStart.isDay() != start.isDay()) {
        auto newEnd = newStart;
        if (!newStart.isDay()) {
            newEnd.local += hours(1);
        } else {
            const auto touched = ceil<days>(end.local) - floor<days>(start.local);
            newEnd.local += std::max<seconds>(touched, days(1));
        }
        return newEnd;
    }
    if (isSameForm(start, end)) {
        // A time that clocks skip is read as a later one, so its clock does not tell the end's.
        if (isSkipped(newStart, zones))
            return zones.after(newStart, {{}, timeBetween(start, end, zones)});
        auto newEnd = newStart;
        newEnd.local += end.local - start.local;
        return newEnd;
    }
    // An end in a zone of its own, as of a flight, stays on its clock.
    const auto newDate = zones.dateOf(newStart).millisecondsSince1970() / 1000;
    auto newEnd = end;
    newEnd.local = zones.localAs(
        end, EventMoment::utc(sys_seconds(seconds(newDate) + timeBetween(start, end, zones))));
    return newEnd;
}

std::optional<Failure> setTimes(PartEditor& editor, const EventMoment& start,
    const Change<EventMoment>& change, TextZones& zones)
{
    const auto& part = editor.part();
    const auto oldStart = part.start();
    if (oldStart == start && change.isLeft()) return std::nullopt;
    const auto oldEnd = part.writtenEnd();
    const auto duration = part.duration();
    editor.setMoment("DTSTART", start);
    if (oldStart != start) editor.countUp();

    std::optional<EventMoment> end;
    if (change.set()) {
        end = *change.set();
    } else if (change.isCleared()) {
        if (oldEnd || duration) editor.countUp();
        editor.clear("DTEND");
        editor.clear("DURATION");
        return std::nullopt;
    } else if (oldStart && (oldEnd || duration || (oldStart->isDay() && !start.isDay()))) {
        const bool keepsLength = !oldEnd && oldStart->isDay() == start.isDay();
        if (keepsLength) return std::nullopt;
        end = endAfterMove(*oldStart, *endOf(part, zones), start, zones);
    } else {
        return std::nullopt;
    }

    if (end->isDay() != start.isDay())
        return malformedEdit("Start and end must both be days, or both be times.");
    const auto length = lengthBetween(start, *end, zones);
    const auto elapsed = start.isDay() ? length : timeBetween(start, *end, zones);
    if (elapsed < seconds(0) || (start.isDay() && length == seconds(0)))
        return malformedEdit("The event ends before it begins.");

    if (!oldEnd && duration) {
        EventDuration wanted {{}, elapsed};
        if (start.isDay()) wanted = {floor<days>(length), {}};
        if (*duration == wanted || (oldStart == start && endOf(part, zones) == *end))
            return std::nullopt;
        editor.setDuration(wanted);
    } else if (elapsed == seconds(0)) {
        // RFC 5545, 3.8.2.2: an end is later than the start; without one the event takes no time.
        editor.clear("DTEND");
    } else {
        editor.setMoment("DTEND", *end);
    }
    if (oldEnd != end || duration) editor.countUp();
    return std::nullopt;
}

} // namespace Tessel
