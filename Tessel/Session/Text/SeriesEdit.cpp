#include "Tessel/Session/Text/SeriesEdit.h"

#include "Tessel/Session/Text/ContentLine.h"
#include "Tessel/Session/Text/EditCheck.h"
#include "Tessel/Session/Text/EventRule.h"
#include "Tessel/Session/Text/EventTimes.h"
#include "Tessel/Session/Text/PartEditor.h"

#include <algorithm>

namespace Tessel {

using namespace std::chrono;

namespace {

/// Whether both have the same lines of a property, and so what is true of one is of the other.
bool hasSame(const EventPart& part, const EventPart& master, std::string_view property)
{
    const auto linesOf = [&](const EventPart& of) {
        std::vector<std::string> lines;
        for (const auto line : of.component().lines())
            if (line.is(property)) lines.push_back(line.unfolded());
        return lines;
    };
    return linesOf(part) == linesOf(master);
}

/// A line of EXDATE or RDATE after its series has moved; a period keeps its length, or moves its
/// end.
void moveLine(PartEditor& editor, const TextLine& line, const SeriesMove& move, TextZones& zones)
{
    const auto zone = line.parameter("TZID").value_or(std::string());
    const auto value = line.value();
    std::string moved;
    std::optional<EventMoment> form;
    bool isPeriod = false;
    for (std::string_view rest = value;;) {
        const auto end = rest.find(',');
        const auto one = rest.substr(0, end);
        const auto slash = one.find('/');
        const auto start = EventMoment::read(one.substr(0, slash), zone);
        // What nobody can read, nobody can move.
        if (!start) return;
        form = move.moved(*start, zones);
        moved.append(moved.empty() ? "" : ",").append(form->value());
        if (slash != one.npos && !form->isDay()) {
            isPeriod = true;
            const auto last = EventMoment::read(one.substr(slash + 1), zone);
            moved.append("/").append(
                last ? move.moved(*last, zones).value() : std::string(one.substr(slash + 1)));
        }
        if (end == rest.npos) break;
        rest.remove_prefix(end + 1);
    }
    auto parameters = line.parameters();
    std::erase_if(parameters, [](const TextParameter& parameter) {
        return isSameName(parameter.name, "TZID") || isSameName(parameter.name, "VALUE");
    });
    if (isPeriod) parameters.push_back({"VALUE", {"PERIOD"}});
    for (auto& parameter : parametersOf(*form))
        parameters.push_back(std::move(parameter));
    editor.replace(line, parameters, moved);
}

/// An event that ceases to repeat takes place at its start, whatever was added or excepted.
void clearRecurrence(PartEditor& editor, const EventEdit& edit)
{
    for (const auto line : editor.part().component().lines()) {
        const bool goes = line.is("RRULE") || line.is("EXRULE")
            || (line.is("RDATE") && edit.dates.isLeft())
            || (line.is("EXDATE") && edit.exceptions.isLeft());
        if (!goes) continue;
        editor.remove(line);
        editor.countUp();
    }
}

Failure cannotMove(const std::string& rule)
{
    return {.kind = FailureKind::unsupported,
        .reason = "The rule " + rule + " does not go with the new start: set the rule, too."};
}

/// What is different on one day moves with the series, unless it was moved away from it.
std::optional<Failure> moveOverride(PartEditor& editor, const EventPart& master,
    const EventEdit& edit, const SeriesMove& move, TextZones& zones)
{
    const auto& part = editor.part();
    const auto instance = part.recurrenceId();
    const auto start = part.start();
    if (!instance) return std::nullopt;
    const auto moved = instanceInFormOf(move.to, move.moved(*instance, zones), zones);
    if (!move.isNone()) {
        // RFC 5545, 3.8.4.4: of the same kind as the start of the series.
        editor.setMoment("RECURRENCE-ID", moved);
    }
    if (!start
        || instanceInFormOf(move.from, *instance, zones)
            != instanceInFormOf(move.from, *start, zones))
        return std::nullopt;
    Change<EventMoment> end;
    const auto masterEnd = endOf(master, zones);
    const auto ownEnd = endOf(part, zones);
    const bool isAsLong = masterEnd && ownEnd
        && lengthBetween(move.from, *masterEnd, zones) == lengthBetween(*start, *ownEnd, zones);
    if (isAsLong && edit.end.isCleared()) end = cleared;
    if (isAsLong && edit.end.set()) end = endAfterMove(move.to, *edit.end.set(), moved, zones);
    return setTimes(editor, move.isNone() ? *start : moved, end, zones);
}

/// Whether the edit has changed on which days the series is, in more than that it has moved.
bool hasOtherDays(const EventText& before, const EventText& after, const EventEdit& edit)
{
    if (edit.rule.isCleared()) return true;
    const auto old = before.main().recurrence();
    const auto now = after.main().recurrence();
    return (edit.rule.set() && old.rules != now.rules)
        || (edit.dates.set() && old.dates != now.dates);
}

/// Takes away the definitions that we have written and that nothing needs any more; those of others
/// stay.
void removeUnused(const TextTree& tree, const TextZones& zones, TextPatch& patch)
{
    const auto used = zones.used();
    for (const auto calendar : tree.components()) {
        for (const auto component : calendar.components()) {
            const auto line = component.is("VTIMEZONE") ? component.line("TZID") : std::nullopt;
            if (!line || used.contains(line->value()) || used.contains(plainText(line->value())))
                continue;
            if (component.raw() == zoneDefinition(line->value(), tree.lineEnd()))
                patch.remove(component);
        }
    }
}

} // namespace

Failure noSuchInstance(const EventMoment& instance)
{
    return {.kind = FailureKind::missing,
        .reason = "The event has no instance that begins at " + instance.value() + "."};
}

std::optional<Failure> setRecurrence(
    PartEditor& editor, const EventEdit& edit, const SeriesMove& move, TextZones& zones)
{
    const bool isLeft = edit.rule.isLeft() && edit.dates.isLeft() && edit.exceptions.isLeft();
    if (isLeft && move.isNone()) return std::nullopt;
    const auto before = editor.part().recurrence();
    if (edit.rule.set()) {
        auto rule = EventRule::read(*edit.rule.set());
        rule->move({move.to, move.to}, zones);
        if (before.rules != std::vector {rule->value()}) {
            editor.setPlain("RRULE", rule->value());
            editor.countUp();
        }
    } else if (edit.rule.isCleared()) {
        clearRecurrence(editor, edit);
    }
    const auto setMoments = [&](std::string_view property, const auto& change, const auto& old) {
        if (!change.set() || *change.set() == old) return;
        editor.setMoments(property, *change.set());
        editor.countUp();
    };
    setMoments("RDATE", edit.dates, before.dates);
    setMoments("EXDATE", edit.exceptions, before.exceptions);
    if (move.isNone() || edit.rule.isCleared()) return std::nullopt;
    for (const auto line : editor.part().component().lines()) {
        if (line.is("RRULE") && edit.rule.isLeft()) {
            auto rule = EventRule::read(line.value());
            if (!rule) continue;
            const auto written = rule->value();
            if (!rule->move(move, zones)) return cannotMove(written);
            if (rule->value() != written) editor.replace(line, line.parameters(), rule->value());
        } else if ((line.is("RDATE") && edit.dates.isLeft())
            || (line.is("EXDATE") && edit.exceptions.isLeft())) {
            moveLine(editor, line, move, zones);
        }
    }
    return std::nullopt;
}

void applyFields(PartEditor& editor, const EventEdit& edit, const EventPart* master)
{
    const auto mayFollow = [&](std::string_view property) {
        return !master || hasSame(editor.part(), *master, property);
    };
    if (mayFollow("SUMMARY")) editor.setText("SUMMARY", edit.summary);
    if (mayFollow("DESCRIPTION")) editor.setText("DESCRIPTION", edit.description);
    if (mayFollow("LOCATION")) editor.setText("LOCATION", edit.location);
    if (mayFollow("URL")) editor.setPlain("URL", edit.url);
    if (!edit.status.isLeft() && mayFollow("STATUS")) {
        const auto before = editor.part().status();
        auto status = edit.status;
        if (status.set()) status = inCapitals(*status.set());
        const bool isSame = status.set() ? before == *status.set() : !before;
        if (!isSame) {
            editor.setPlain("STATUS", status);
            editor.countUp();
        }
    }
    if (edit.categories.set() && mayFollow("CATEGORIES"))
        editor.setCategories(*edit.categories.set());
    if (edit.organizer.isCleared()) editor.clear("ORGANIZER");
    if (edit.organizer.set()) editor.setOrganizer(*edit.organizer.set());
    for (const auto& address : edit.removedAttendees)
        editor.removeAttendee(address);
    for (const auto& attendee : edit.attendees)
        editor.putAttendee(attendee);
    if (master && editor.part().alarms() != master->alarms()) return;
    if (edit.alarms.set()) editor.setAlarms(*edit.alarms.set());
    for (const auto& alarm : edit.removedAlarms)
        editor.removeAlarm(alarm);
    const auto isIn = [](const std::vector<EventAlarm>& alarms, const EventAlarm& wanted) {
        return std::any_of(alarms.begin(), alarms.end(),
            [&](const EventAlarm& alarm) { return isAlarm(alarm, wanted); });
    };
    // One that stands there is not added again, so that an edit may be made twice.
    const auto held = editor.part().alarms();
    for (const auto& alarm : edit.addedAlarms) {
        const bool isReplaced = std::any_of(edit.removedAlarms.begin(), edit.removedAlarms.end(),
            [&](const EventAlarm& removed) { return isAlarm(alarm, removed); });
        if (isReplaced || !isIn(held, alarm)) editor.addAlarm(alarm);
    }
}

Result<EventText> editSeries(const EventText& event, const EventEdit& edit, const Date& now)
{
    const auto master = event.main();
    const auto start = master.start();
    if (!start && !edit.start.set() && (edit.end.set() || edit.rule.set()))
        return malformedEdit("The event has no start to go with.");

    TextZones zones(event.tree());
    TextPatch patch(event.tree());
    const auto newStart = edit.start.set() ? edit.start.set() : start ? &*start : nullptr;
    PartEditor editor(event.tree(), master, patch);
    applyFields(editor, edit);
    std::optional<SeriesMove> move;
    if (newStart) {
        move = SeriesMove {start.value_or(*newStart), *newStart};
        if (auto fault = setTimes(editor, *newStart, edit.end, zones)) return *fault;
        if (auto fault = setRecurrence(editor, edit, *move, zones)) return *fault;
    }
    editor.finish(now);
    const bool hasMaster = !master.recurrenceId();
    for (const auto& part : event.overrides()) {
        if (part.component() == master.component()) continue;
        PartEditor own(event.tree(), part, patch);
        applyFields(own, edit, hasMaster ? &master : nullptr);
        const bool isMoved = hasMaster && move && (!move->isNone() || !edit.end.isLeft());
        if (isMoved)
            if (auto fault = moveOverride(own, master, edit, *move, zones)) return *fault;
        own.finish(now);
    }
    if (patch.isEmpty() && !edit.rule.isCleared()) return event;
    auto edited = withZones(patch.apply(), edit);
    if (!edited || !hasMaster || !hasOtherDays(event, edited.value(), edit)) return edited;
    return withoutLostInstances(edited.value());
}

Result<EventText> withZones(std::string text, const EventEdit& edit)
{
    auto read = EventText::read(std::move(text));
    if (!read) return read;
    std::vector<std::string> missing;
    const auto& tree = read.value().tree();
    TextZones zones(tree);
    eachMoment(edit, [&](const EventMoment& moment) {
        const bool isMissing
            = moment.kind == EventMoment::Kind::zoned && !zones.definition(moment.zone);
        if (isMissing && std::find(missing.begin(), missing.end(), moment.zone) == missing.end())
            missing.push_back(moment.zone);
    });
    TextPatch patch(tree);
    if (edit.start.set() || edit.end.set()) removeUnused(tree, zones, patch);
    const auto event = read.value().main().component();
    for (const auto calendar : tree.components()) {
        std::optional<TextComponent> first;
        bool isOurs = false;
        for (const auto component : calendar.components()) {
            if (!first && !component.is("VTIMEZONE")) first = component;
            isOurs = isOurs || component == event;
        }
        if (!isOurs) continue;
        for (const auto& tzid : missing)
            patch.insertBefore(first->begin(), zoneDefinition(tzid, tree.lineEnd()));
    }
    if (patch.isEmpty()) return read;
    return EventText::read(patch.apply());
}

} // namespace Tessel
