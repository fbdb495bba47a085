#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventInstances.h"
#include "apps/tessel/commands/EventOptions.h"
#include "apps/tessel/commands/EventTitle.h"
#include "apps/tessel/commands/EventWrites.h"
#include "apps/tessel/commands/UserTimes.h"
#include "apps/tessel/output/Wording.h"

#include <sstream>

namespace Tessel::App {

namespace {

using Naming = HeldEvents::Naming;

struct EventArguments {
    std::string event;
    std::string calendar; ///< where it is, or is to be
    std::string instance;
    bool isFollowing = false;
    bool showsText = false;
    EventOptions options;

    /// Without `instance` none.
    std::optional<Instance> instanceOf(const EventText& text) const
    {
        return instance.empty() ? std::nullopt : std::optional(App::instanceOf(text, instance));
    }
};

void tell(Workspace& workspace, const std::string& verb, const StoredCalendar& calendar,
    const EventWrites::Written& written)
{
    const auto event = EventText::read(written.resource.text);
    const auto name = titleOf(written.resource.text, written.resource.href);
    const Json object {{"done", verb}, {"summary", name}, {"calendar", nameOf(calendar)},
        {"href", written.resource.href}, {"uid", event ? Json(event.value().uid()) : Json(nullptr)},
        {"following", written.following ? Json(written.following->href) : Json(nullptr)},
        {"isWaiting", written.waits}};
    workspace.out().result(verb + " " + name + " in " + nameOf(calendar)
            + (written.waits ? ", waits to be sent (tessel pending)" : "")
            + (written.following ? ", the later ones are a series of their own now" : ""),
        object);
    // Behind what waits already, it goes with it.
    if (written.waits && !workspace.options().isOffline)
        workspace.out().note("`tessel sync` sends what waits.");
}

/// Who invites: without one nobody is told (RFC 5546, 2.1.2).
EventAttendee organizer(EventWrites& writes)
{
    if (const auto own = writes.ownAddress()) return {.address = *own};
    throw Stop::usage(
        "Nobody knows your own address, from which to invite: the server does not name "
        "it. Add the account again by its e-mail address, with the same --server and --user.");
}

/// Stops where somebody is to be asked no longer who was never asked.
void requireInvited(const EventText& event, const EventEdit& edit)
{
    for (const auto& address : edit.removedAttendees) {
        // One who comes on some day is taken off the later ones, too.
        const auto without
            = event.apply({.instance = edit.andFollowing ? std::nullopt : edit.instance,
                .removedAttendees = {address}});
        if (without && without.value().event.text() == event.text())
            throw Stop::missing(address + " is not invited. `tessel event show` lists who is.");
    }
}

void create(Workspace& workspace, const EventArguments& given)
{
    const auto calendar = workspace.heldCalendar(given.calendar);
    EventWrites writes(workspace);
    auto edit = given.options.creation();
    if (given.options.invites()) edit.organizer = organizer(writes);
    const auto event = workspace.got(EventText::make(edit));
    tell(workspace, "created", calendar, workspace.got(writes.create(calendar, event)));
}

void edit(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace, given.calendar).find(given.event);
    const auto instance = given.instanceOf(held.event);
    const auto part = instance ? held.event.part(instance->component) : held.event.main();
    auto edit = given.options.changeOf(
        held.event, instance ? startOf(held.event, *instance) : part.start());
    if (instance) edit.instance = instance->recurrenceId;
    edit.andFollowing = given.isFollowing;
    requireInvited(held.event, edit);
    EventWrites writes(workspace);
    if (given.options.invites() && !part.organizer()) edit.organizer = organizer(writes);
    tell(workspace, "changed", held.calendar, workspace.got(writes.change(held, edit)));
}

/// Whether something is left of an event after a removal.
bool leavesAny(const EventText& event, const EventEdit& removal)
{
    const auto after = event.apply(removal);
    // Of what holds nothing else, nothing is taken.
    if (!after) return after.failure().kind != FailureKind::malformed;
    return takesPlace(after.value().event);
}

void remove(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace, given.calendar).find(given.event, Naming::whole);
    EventWrites writes(workspace);
    const auto instance = given.instanceOf(held.event);
    const auto removeAll = [&](const std::string& verb) {
        tell(workspace, verb, held.calendar, workspace.got(writes.remove(held)));
    };
    if (!instance) return removeAll("deleted");
    const EventEdit removal {
        .instance = instance->recurrenceId, .andFollowing = given.isFollowing, .isRemoval = true};
    if (!leavesAny(held.event, removal)) {
        if (!given.isFollowing) return removeAll("deleted " + given.instance + ", the last day of");
        throw Stop::usage("These are all days of the series: `tessel event delete " + given.event
            + "` deletes it.");
    }
    tell(workspace, "deleted " + given.instance + (given.isFollowing ? " and later of" : " of"),
        held.calendar, workspace.got(writes.change(held, removal)));
}

void move(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace).find(given.event, Naming::whole);
    const auto to = workspace.heldCalendar(given.calendar);
    tell(workspace, "moved", to, workspace.got(EventWrites(workspace).move(held, to)));
}

/// Such as "1 day 2 hours".
std::string inWords(std::chrono::seconds length)
{
    constexpr std::pair<const char*, std::int64_t> units[] {
        {"day", 86'400}, {"hour", 3'600}, {"minute", 60}, {"second", 1}};
    std::string words;
    auto left = length.count();
    for (const auto& [unit, seconds] : units) {
        const auto count = left / seconds;
        left %= seconds;
        if (count == 0) continue;
        words += (words.empty() ? "" : " ") + counted(std::size_t(count), unit);
    }
    return words;
}

std::string shownAlarm(const EventAlarm& alarm)
{
    if (alarm.at) return "at " + isoTime(alarm.at->millisecondsSince1970());
    const std::string from = alarm.isFromEnd ? "the end" : "the start";
    if (alarm.before == std::chrono::seconds(0)) return "at " + from;
    return inWords(std::chrono::abs(alarm.before))
        + (alarm.before.count() < 0 ? " after " : " before ") + from;
}

/// With the answer, and where the server could not deliver the invitation (RFC 6638, 3.2.9).
std::string shownGuest(const TextLine& line)
{
    const auto guest = attendeeOf(line);
    std::vector<std::string> words;
    if (!guest.status.empty()) words.push_back(guest.status);
    std::istringstream codes(line.parameter("SCHEDULE-STATUS").value_or(""));
    for (std::string code; std::getline(codes, code, ',');) {
        if (code.starts_with("3.") || code.starts_with("5."))
            words.push_back("not delivered: " + code);
    }
    return guest.address + (words.empty() ? "" : " (" + joined(words) + ")");
}

void showPart(const Output& out, const EventText& event, const EventPart& part,
    const std::optional<Instance>& instance = {})
{
    const auto field = [&](const char* name, const std::optional<std::string>& value) {
        std::istringstream lines(value.value_or(""));
        std::string label = name;
        for (std::string line; std::getline(lines, line);) {
            out.line(label + line);
            label.assign(label.size(), ' ');
        }
    };
    const auto time = [](const std::optional<EventMoment>& moment) {
        return moment ? std::optional(shownMoment(*moment)) : std::nullopt;
    };
    field("summary:     ", part.summary());
    field("instance of: ", time(instance ? instance->recurrenceId : part.recurrenceId()));
    const auto start = instance ? startOf(event, *instance) : part.start();
    const auto end = instance ? endOf(event, *instance) : event.end(part);
    field("start:       ", time(start));
    if (start && end) field("end:         ", shownEnd(*end, *start));
    field("location:    ", part.location());
    field("status:      ", part.status());
    field("url:         ", part.url());
    for (const auto& rule : part.recurrence().rules)
        field("repeats:     ", rule);
    for (const auto& day : part.recurrence().exceptions)
        field("but not:     ", shownMoment(day));
    for (const auto& category : part.categories())
        field("category:    ", category);
    for (const auto& alarm : part.alarms())
        field("alarm:       ", shownAlarm(alarm));
    if (const auto organizer = part.organizer()) field("organizer:   ", organizer->address);
    for (const auto& line : part.component().lines()) {
        if (line.is("ATTENDEE")) field("invited:     ", shownGuest(line));
    }
    field("description: ", part.description());
}

void show(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace, given.calendar).find(given.event);
    const auto& out = workspace.out();
    if (given.showsText && !out.isJson()) return out.text(held.event.text());
    const auto instance = given.instanceOf(held.event);
    auto object = instance ? describe(held, *instance) : describe(held);
    object["text"] = held.event.text();
    out.object(object);
    if (out.isJson()) return;
    if (instance) {
        showPart(out, held.event, held.event.part(instance->component), instance);
    } else {
        showPart(out, held.event, held.event.main());
        for (const auto& part : held.event.overrides()) {
            out.line("");
            showPart(out, held.event, part);
        }
    }
    out.line("calendar:    " + nameOf(held.calendar));
    out.line("uid:         " + held.event.uid());
    out.line("place:       " + held.resource.href);
}

void defineEvent(CLI::App& app, EventArguments& arguments, Naming naming = Naming::orBegin)
{
    const auto* const names = naming == Naming::whole ? "UID, place, or summary"
                                                      : "UID, the begin of it, place, or summary";
    app.add_option("EVENT", arguments.event, names)->required();
}

void defineInstance(CLI::App& app, EventArguments& arguments, bool allowsFollowing)
{
    app.add_option("--calendar", arguments.calendar, "look in this calendar only")
        ->type_name("CALENDAR");
    auto* instance = app.add_option(
        "--instance", arguments.instance, "this day of a series only; with its time, if need be");
    instance->type_name("WHEN");
    if (allowsFollowing)
        app.add_flag("--following", arguments.isFollowing, "and all later ones")->needs(instance);
}

} // namespace

void addEventCommands(CommandLine& line)
{
    auto& group = addCommand(line.app, "event", "One event or series", "tessel event show Lunch");
    addCommand<EventArguments>(
        line, group, "show", "Show an event that is held", "tessel event show Lunch --text",
        [](CLI::App& app, EventArguments& arguments) {
            defineEvent(app, arguments);
            defineInstance(app, arguments, false);
            app.add_flag("--text", arguments.showsText, "its iCalendar text, byte by byte");
        },
        show);
    addCommand<EventArguments>(
        line, group, "create", "Write a new event into a calendar",
        "tessel event create Work --summary Lunch --start 2027-03-01T12:00 --duration 45m",
        [](CLI::App& app, EventArguments& arguments) {
            defineCalendar(app, arguments.calendar);
            arguments.options.addTo(app, true);
        },
        create);
    addCommand<EventArguments>(
        line, group, "edit", "Change what is named of an event; all else stays byte for byte",
        "tessel event edit Stand-up --instance 2027-03-02 --start 2027-03-02T10:00",
        [](CLI::App& app, EventArguments& arguments) {
            defineEvent(app, arguments);
            defineInstance(app, arguments, true);
            arguments.options.addTo(app, false);
        },
        edit);
    addCommand<EventArguments>(
        line, group, "move", "Move an event into another calendar",
        "tessel event move Lunch Private",
        [](CLI::App& app, EventArguments& arguments) {
            defineEvent(app, arguments, Naming::whole);
            app.add_option("CALENDAR", arguments.calendar, "where to")->required();
        },
        move);
    addCommand<EventArguments>(
        line, group, "delete", "Delete an event, or days of a series",
        "tessel event delete Stand-up --instance 2027-03-02",
        [](CLI::App& app, EventArguments& arguments) {
            defineEvent(app, arguments, Naming::whole);
            defineInstance(app, arguments, true);
        },
        remove);
}

} // namespace Tessel::App
