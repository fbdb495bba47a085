#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/Session/Text/EditCheck.h"
#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/EventTimes.h"
#include "Tessel/Session/Text/FollowingChange.h"
#include "Tessel/Session/Text/PartEditor.h"
#include "Tessel/Session/Text/SeriesEdit.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

/// Where a series is divided, and which half of it is made.
struct Division {
    EventMoment start; ///< of the series
    EventMoment instance; ///< the first of those that follow, in the form of `start`
    bool isSecond = false;
    /// Whether there may be such an instance without the rule.
    bool mayBeAdded = false;

    bool keeps(const EventMoment& moment, TextZones& zones) const
    {
        return (keyOf(start, moment, zones) >= instance.local) == isSecond;
    }
};

/// The later instances are counted from the one that their series begins with.
Failure notOfRule(const EventMoment& instance)
{
    return {.kind = FailureKind::unsupported,
        .reason = "The event's rule does not give " + instance.value()
            + ", which was added to it: change that one alone, and those that follow from the next "
              "one that it gives."};
}

Failure cannotBeCounted(const std::string& rule)
{
    return {.kind = FailureKind::unsupported,
        .reason = "It takes too long to count the instances of the rule: " + rule};
}

std::optional<Failure> divideRule(
    PartEditor& editor, const TextLine& line, const Division& division, TextZones& zones)
{
    auto rule = EventRule::read(line.value());
    if (!rule) return malformedEdit("The event's rule cannot be read: " + line.value() + ".");
    const auto count = rule->count();
    const bool mustGive = division.isSecond && division.mayBeAdded;
    if (count || mustGive) {
        const auto place = rule->placeOf(division.start, division.instance.local, zones);
        if (!place) return cannotBeCounted(line.value());
        if (mustGive && !place->isGiven) return notOfRule(division.instance);
        const int before = place->before;
        const bool isBehind = count && before >= *count;
        if (isBehind && !division.mayBeAdded) return noSuchInstance(division.instance);
        if (isBehind) return std::nullopt;
        if (count) rule->set("COUNT", std::to_string(division.isSecond ? *count - before : before));
    }
    if (!count && division.isSecond) return std::nullopt;
    if (!count) rule->endBefore(division.instance, zones);
    editor.replace(line, line.parameters(), rule->value());
    return std::nullopt;
}

std::optional<Failure> divideMaster(PartEditor& editor, const Division& division, TextZones& zones)
{
    for (const auto line : editor.part().component().lines()) {
        if (line.is("RRULE")) {
            if (auto fault = divideRule(editor, line, division, zones)) return fault;
        } else if (line.is("EXRULE") && division.isSecond) {
            return Failure {.kind = FailureKind::unsupported,
                .reason = "A series with EXRULE cannot be divided: " + line.value()
                    + " counts from its start."};
        } else if (line.is("RDATE") || line.is("EXDATE")) {
            editor.keepMoments(
                line, [&](const auto& moment) { return division.keeps(moment, zones); });
        }
    }
    return std::nullopt;
}

/// Removes what is different on a day of the other half, but for what makes these days different.
void divideOverrides(
    const EventText& event, TextPatch& patch, const Division& division, TextZones& zones)
{
    const auto change = changeFor(event, division.instance.local, zones);
    for (const auto& part : event.overrides()) {
        const auto instance = part.recurrenceId();
        const bool isChange
            = division.isSecond && change && part.component() == change->component();
        if (instance && !isChange && !division.keeps(*instance, zones))
            patch.remove(part.component());
    }
}

Result<EventText> firstHalf(
    const EventText& event, const Division& division, const Date& now, TextZones& zones)
{
    TextPatch patch(event.tree());
    PartEditor editor(event.tree(), event.main(), patch);
    if (auto fault = divideMaster(editor, division, zones)) return *fault;
    editor.countUp();
    editor.finish(now);
    divideOverrides(event, patch, division, zones);
    return EventText::read(patch.apply());
}

Result<EventText> secondHalf(const EventText& event, const Division& division, TextZones& zones)
{
    const auto master = event.main();
    TextPatch patch(event.tree());
    PartEditor editor(event.tree(), master, patch);
    if (auto fault = divideMaster(editor, division, zones)) return *fault;
    if (const auto end = master.writtenEnd())
        editor.setMoment("DTEND", endAfterMove(division.start, *end, division.instance, zones));
    editor.setMoment("DTSTART", division.instance);
    divideOverrides(event, patch, division, zones);
    auto half = EventText::read(patch.apply());
    if (!half) return half;
    return withChangeAsMain(half.value());
}

/// The half as an event of its own.
Result<EventText> asSibling(const EventText& half, const Date& now)
{
    const auto master = half.main();
    const auto uid = makeUUID();
    TextPatch patch(half.tree());
    PartEditor editor(half.tree(), master, patch);
    editor.setPlain("UID", uid);
    const auto first = master.component().line("UID");
    if (first) editor.add("RELATED-TO", {{"RELTYPE", {"SIBLING"}}}, first->value());
    editor.setMoment("CREATED", EventMoment::utc(now));
    editor.finish(now);
    for (const auto& part : half.overrides()) {
        PartEditor own(half.tree(), part, patch);
        own.setPlain("UID", uid);
    }
    return EventText::read(patch.apply());
}

/// Whether the instance may be there without the rule, or with the one rule and not the other.
bool mayBeAdded(
    const EventText& event, const EventMoment& start, const EventMoment& instance, TextZones& zones)
{
    const auto recurrence = event.main().recurrence();
    const auto& dates = recurrence.dates;
    return recurrence.rules.size() > 1 || event.overrideOf(instance)
        || std::any_of(dates.begin(), dates.end(),
            [&](const EventMoment& date) { return keyOf(start, date, zones) == instance.local; });
}

} // namespace

Result<EditedEvent> editFollowing(const EventText& event, const EventEdit& edit, const Date& now)
{
    const auto master = event.main();
    const auto start = master.start();
    if (!start || master.recurrenceId() || !event.isSeries()) return noSuchInstance(*edit.instance);
    TextZones zones(event.tree());
    Division division {*start, instanceInFormOf(*start, *edit.instance, zones)};
    division.mayBeAdded = mayBeAdded(event, *start, division.instance, zones);
    if (division.instance.local < start->local) return noSuchInstance(*edit.instance);

    auto ofAll = edit;
    ofAll.instance.reset();
    ofAll.andFollowing = false;
    if (division.instance.local == start->local) {
        if (edit.isRemoval)
            return malformedEdit("These are all instances of the event: remove its resource.");
        auto edited = editSeries(event, ofAll, now);
        if (!edited) return edited.failure();
        return EditedEvent {std::move(edited).value()};
    }
    auto first = firstHalf(event, division, now, zones);
    if (!first) return first.failure();
    if (edit.isRemoval) return EditedEvent {std::move(first).value()};
    division.isSecond = true;
    const auto half = secondHalf(event, division, zones);
    if (!half) return half.failure();
    const auto second = asSibling(half.value(), now);
    if (!second) return second.failure();
    auto edited = editSeries(second.value(), ofAll, now);
    if (!edited) return edited.failure();
    auto following = asNew(edited.value());
    if (!following) return following.failure();
    return EditedEvent {std::move(first).value(), std::move(following).value()};
}

} // namespace Tessel
