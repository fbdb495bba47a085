#include "Tessel/Session/Text/MergeEdit.h"

#include "Tessel/Session/Text/PartEditor.h"

#include <algorithm>
#include <set>

namespace Tessel {

namespace {

using Names = std::vector<std::string_view>;

constexpr std::string_view times[] = {"DTSTART", "DTEND", "DURATION"};

/// What an edit sets, by what a person calls it, with the properties that count as one with it.
struct Touched {
    const char* called;
    Names names;
};

std::vector<Touched> touched(const EventEdit& edit)
{
    std::vector<Touched> all;
    const auto add = [&](const auto& change, const char* called, Names properties) {
        if (!change.isLeft()) all.push_back({called, std::move(properties)});
    };
    const Names span(std::begin(times), std::end(times));
    add(edit.summary, "the summary", {"SUMMARY"});
    add(edit.description, "the description", {"DESCRIPTION"});
    add(edit.location, "the location", {"LOCATION"});
    add(edit.url, "the URL", {"URL"});
    add(edit.status, "the status", {"STATUS"});
    add(edit.categories, "the categories", {"CATEGORIES"});
    add(edit.start, "the time", span);
    add(edit.end, "the time", span);
    add(edit.rule, "the rule", {"RRULE"});
    add(edit.dates, "the added dates", {"RDATE"});
    add(edit.exceptions, "the excepted dates", {"EXDATE"});
    add(edit.organizer, "the organizer", {"ORGANIZER"});
    return all;
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

/// Which of what the edit sets somebody else has set; empty for nothing.
std::string difference(const EventPart& base, const EventPart& theirs, const EventEdit& edit)
{
    for (const auto& [called, names] : touched(edit))
        if (linesOf(base, names) != linesOf(theirs, names)) return called;
    const auto isOtherAttendee = [&](std::string_view address) {
        return attendeeOf(base, address) != attendeeOf(theirs, address);
    };
    for (const auto& attendee : edit.attendees)
        if (isOtherAttendee(attendee.address)) return "the attendee " + attendee.address;
    for (const auto& address : edit.removedAttendees)
        if (attendeeOf(theirs, address) && isOtherAttendee(address))
            return "the attendee " + address;
    return edit.alarms.set() && base.alarms() != theirs.alarms() ? "the alarms" : "";
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

/// What becomes of instances that an edit takes away from a series.
enum class TakenInstances { gone, inAnother };

/// All that a component says, however it is ordered and folded, but for stamps and its UID.
std::string contentOf(const TextComponent& component)
{
    constexpr std::string_view others[]
        = {"UID", "DTSTAMP", "CREATED", "LAST-MODIFIED", "SEQUENCE"};
    std::vector<std::string> parts;
    for (const auto line : component.lines()) {
        const bool counts = std::none_of(std::begin(others), std::end(others),
            [&](std::string_view name) { return line.is(name); });
        if (counts) parts.push_back(line.unfolded() + "\n");
    }
    for (const auto inner : component.components())
        parts.push_back(contentOf(inner));
    std::sort(parts.begin(), parts.end());
    auto content = component.name() + "\n";
    for (const auto& part : parts)
        content += part;
    return content + "\n";
}

/// What the event says of the instances from one on: what is different on single days, and how the
/// series has them where that counts.
std::set<std::string> contentFrom(
    const EventText& event, const EventMoment& instance, TakenInstances taken)
{
    std::set<std::string> content;
    const auto divided = event.apply({.instance = instance, .andFollowing = true});
    if (!divided || !divided.value().following) return content;
    const auto& following = *divided.value().following;
    if (taken == TakenInstances::inAnother) content.insert(contentOf(following.main().component()));
    for (const auto& part : following.overrides())
        content.insert(contentOf(part.component()));
    return content;
}

/// Whether somebody else has written what would go unseen with the instances. What they have taken
/// back is missed by nobody unless the instances live on.
bool holdsNew(const EventText& base, const EventText& theirs, const EventMoment& instance,
    TakenInstances taken)
{
    const auto before = contentFrom(base, instance, taken);
    const auto now = contentFrom(theirs, instance, taken);
    if (taken == TakenInstances::inAnother) return now != before;
    return !std::includes(before.begin(), before.end(), now.begin(), now.end());
}

/// What the event says of single days.
std::set<std::string> singleDays(const EventText& event)
{
    std::set<std::string> content;
    for (const auto& part : event.overrides())
        content.insert(contentOf(part.component()));
    for (const auto& exception : event.main().recurrence().exceptions)
        content.insert(exception.value());
    return content;
}

/// Whether days that somebody else has made different go with the rule that gave them.
bool takesNew(const EventText& base, const EventEdit& edit, const EventText& theirs)
{
    const auto merged = theirs.apply(edit);
    if (!merged) return false;
    const auto before = singleDays(base);
    const auto after = singleDays(merged.value().event);
    const auto now = singleDays(theirs);
    return std::any_of(now.begin(), now.end(),
        [&](const auto& day) { return !before.contains(day) && !after.contains(day); });
}

/// What somebody else has changed that the edit was made on; empty for nothing.
std::string conflict(
    const EventText& base, const EventEdit& edit, const EventText& theirs, TakenInstances taken)
{
    if (!edit.instance) {
        auto other = difference(base.main(), theirs.main(), edit);
        const bool hasOtherDays = !edit.rule.isLeft() || !edit.dates.isLeft();
        if (!other.empty() || !hasOtherDays) return other;
        return takesNew(base, edit, theirs) ? "the instances" : "";
    }
    if (!isSameSeries(base, theirs)) return "the days of the series";
    const auto ours = base.overrideOf(*edit.instance);
    const auto other = theirs.overrideOf(*edit.instance);
    if (edit.andFollowing) {
        const Names lengths(std::begin(times), std::end(times));
        if (linesOf(base.main(), lengths) != linesOf(theirs.main(), lengths)) return "the time";
        if (!edit.isRemoval) return difference(base.main(), theirs.main(), edit);
        return holdsNew(base, theirs, *edit.instance, taken) ? "the instances" : "";
    }
    if (edit.isRemoval) {
        const bool isSame = ours.has_value() == other.has_value()
            && (!ours || ours->component().raw() == other->component().raw());
        return isSame ? "" : "that instance";
    }
    if (isRemoved(theirs, *edit.instance)) return "that instance (it is removed)";
    // What is not different on a day is as the series has it, but for the times.
    const auto from = ours.value_or(base.main());
    const auto to = other.value_or(theirs.main());
    if (ours.has_value() == other.has_value()) return difference(from, to, edit);
    auto withoutTimes = edit;
    withoutTimes.start = {};
    withoutTimes.end = {};
    const auto oneMoved = [&](const EventText& event, const EventPart& part) {
        const auto start = part.start();
        return !start || event.dateOf(*start) != event.dateOf(*edit.instance);
    };
    const bool isTimed = !edit.start.isLeft() || !edit.end.isLeft();
    const bool isMoved = isTimed && (ours ? oneMoved(base, *ours) : oneMoved(theirs, *other));
    return isMoved ? "the time" : difference(from, to, withoutTimes);
}

Failure somebodyElseChanged(const std::string& what, const EventEdit& edit)
{
    auto reason = "Somebody else has changed " + what;
    if (edit.instance)
        reason.append(edit.andFollowing ? " from " : " on ").append(edit.instance->value());
    return {.kind = FailureKind::changed, .reason = reason + " meanwhile."};
}

Result<EditedEvent> merge(const EventText& base, const EventEdit& edit, const EventText& theirs,
    const Date& now, TakenInstances taken)
{
    const bool isDone = edit.instance && edit.isRemoval && !edit.andFollowing
        && isRemoved(theirs, *edit.instance);
    if (isDone) return EditedEvent {theirs};
    auto mine = base.apply(edit, now);
    if (!mine) return mine;
    if (base.text() == theirs.text()) return mine;
    const auto what
        = base.uid() == theirs.uid() ? conflict(base, edit, theirs, taken) : "which event it is";
    if (what.empty()) return theirs.apply(edit, now);
    auto failure = somebodyElseChanged(what, edit);
    failure.texts
        = std::make_shared<const BothTexts>(BothTexts {mine.value().event.text(), theirs.text()});
    return failure;
}

} // namespace

Result<EditedEvent> mergeEdit(
    const EventText& base, const EventEdit& edit, const EventText& theirs, const Date& now)
{
    return merge(base, edit, theirs, now, TakenInstances::gone);
}

Result<EditedEvent> mergeDivision(
    const EventText& base, const EventEdit& edit, const EventText& theirs, const Date& now)
{
    return merge(base, edit, theirs, now, TakenInstances::inAnother);
}

} // namespace Tessel
