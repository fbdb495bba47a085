#include "Tessel/Session/Text/MergeEdit.h"

#include "Tessel/Session/Text/PartEditor.h"

#include <algorithm>

namespace Tessel {

namespace {

using Names = std::vector<std::string_view>;

constexpr std::string_view times[] = {"DTSTART", "DTEND", "DURATION"};

/// What counts as one property with what the edit sets.
Names touched(const EventEdit& edit)
{
    Names names;
    const auto add = [&](const auto& change, std::initializer_list<std::string_view> properties) {
        if (!change.isLeft()) names.insert(names.end(), properties);
    };
    add(edit.summary, {"SUMMARY"});
    add(edit.description, {"DESCRIPTION"});
    add(edit.location, {"LOCATION"});
    add(edit.url, {"URL"});
    add(edit.status, {"STATUS"});
    add(edit.categories, {"CATEGORIES"});
    add(edit.start, {"DTSTART", "DTEND", "DURATION"});
    add(edit.end, {"DTSTART", "DTEND", "DURATION"});
    add(edit.rule, {"RRULE"});
    add(edit.dates, {"RDATE"});
    add(edit.exceptions, {"EXDATE"});
    add(edit.organizer, {"ORGANIZER"});
    return names;
}

/// The lines of the properties, without the folds, which mean nothing.
std::vector<std::string> linesOf(const EventPart& part, const Names& names)
{
    std::vector<std::string> lines;
    for (const auto line : part.component().lines()) {
        const bool isOne = std::any_of(
            names.begin(), names.end(), [&](std::string_view name) { return line.is(name); });
        if (isOne) lines.push_back(line.unfolded());
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::optional<EventAttendee> attendeeOf(const EventPart& part, std::string_view address)
{
    for (auto& attendee : part.attendees())
        if (isSameAddress(attendee.address, address)) return std::move(attendee);
    return std::nullopt;
}

bool differ(const EventPart& base, const EventPart& theirs, const EventEdit& edit)
{
    const auto names = touched(edit);
    if (linesOf(base, names) != linesOf(theirs, names)) return true;
    const auto isOtherAttendee = [&](std::string_view address) {
        return attendeeOf(base, address) != attendeeOf(theirs, address);
    };
    for (const auto& attendee : edit.attendees)
        if (isOtherAttendee(attendee.address)) return true;
    for (const auto& address : edit.removedAttendees)
        if (attendeeOf(theirs, address) && isOtherAttendee(address)) return true;
    return edit.alarms.set() && base.alarms() != theirs.alarms();
}

/// An instance is named by when it would begin: where the series goes another way, the name may
/// stand for another day, or for none.
bool isSameSeries(const EventText& base, const EventText& theirs)
{
    return linesOf(base.main(), {"DTSTART", "RRULE", "RDATE"})
        == linesOf(theirs.main(), {"DTSTART", "RRULE", "RDATE"});
}

bool isRemoved(const EventText& event, const EventMoment& instance)
{
    const auto start = event.main().start();
    if (!start || event.main().recurrenceId()) return false;
    const auto exceptions = event.main().recurrence().exceptions;
    const auto date = event.dateOf(instance);
    return std::any_of(exceptions.begin(), exceptions.end(), [&](const EventMoment& exception) {
        return exception == instance || (!instance.isDay() && event.dateOf(exception) == date);
    });
}

bool conflict(const EventText& base, const EventEdit& edit, const EventText& theirs)
{
    if (!edit.instance) return differ(base.main(), theirs.main(), edit);
    if (!isSameSeries(base, theirs)) return true;
    const auto ours = base.overrideOf(*edit.instance);
    const auto other = theirs.overrideOf(*edit.instance);
    if (edit.isRemoval || edit.andFollowing) {
        const auto isSame = [](const auto& a, const auto& b) {
            return a.has_value() == b.has_value()
                && (!a || a->component().raw() == b->component().raw());
        };
        if (edit.isRemoval && !isSame(ours, other)) return true;
        if (!edit.andFollowing) return false;
        const Names lengths(std::begin(times), std::end(times));
        return linesOf(base.main(), lengths) != linesOf(theirs.main(), lengths)
            || differ(base.main(), theirs.main(), edit);
    }
    if (isRemoved(theirs, *edit.instance)) return true;
    // What is not different on a day is as the series has it, but for the times.
    if (ours.has_value() == other.has_value())
        return differ(ours.value_or(base.main()), other.value_or(theirs.main()), edit);
    auto withoutTimes = edit;
    withoutTimes.start = {};
    withoutTimes.end = {};
    const auto oneMoved = [&](const EventText& event, const EventPart& part) {
        const auto start = part.start();
        return !start || event.dateOf(*start) != event.dateOf(*edit.instance);
    };
    const bool isTimed = !edit.start.isLeft() || !edit.end.isLeft();
    const bool isMoved = isTimed && (ours ? oneMoved(base, *ours) : oneMoved(theirs, *other));
    return isMoved
        || differ(ours.value_or(base.main()), other.value_or(theirs.main()), withoutTimes);
}

} // namespace

Result<EditedEvent> mergeEdit(
    const EventText& base, const EventEdit& edit, const EventText& theirs, const Date& now)
{
    const bool isDone = edit.instance && edit.isRemoval && !edit.andFollowing
        && isRemoved(theirs, *edit.instance);
    if (isDone) return EditedEvent {theirs};
    auto mine = base.apply(edit, now);
    if (!mine) return mine;
    if (base.text() == theirs.text()) return mine;
    if (base.uid() == theirs.uid() && !conflict(base, edit, theirs)) return theirs.apply(edit, now);
    return Failure {.kind = FailureKind::changed,
        .reason = "Somebody else has changed the same of this event meanwhile.",
        .texts
        = std::make_shared<const BothTexts>(BothTexts {mine.value().event.text(), theirs.text()})};
}

} // namespace Tessel
