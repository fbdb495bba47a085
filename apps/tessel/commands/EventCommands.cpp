#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/commands/EventOptions.h"
#include "apps/tessel/commands/EventWrites.h"
#include "apps/tessel/commands/UserTimes.h"

#include <algorithm>

namespace Tessel::App {

namespace {

struct EventArguments {
    std::string event;
    std::string calendar; ///< where it is, or is to be
    std::string instance;
    bool isFollowing = false;
    bool showsText = false;
    EventOptions options;
};

void tell(Workspace& workspace, const std::string& verb, const StoredCalendar& calendar,
    const EventWrites::Written& written)
{
    const auto event = EventText::read(written.resource.text);
    const auto main = event ? std::optional(event.value().main()) : std::nullopt;
    const auto name = main ? main->summary().value_or(main->uid()) : written.resource.href;
    const Json object {{"done", verb}, {"summary", name}, {"calendar", nameOf(calendar)},
        {"href", written.resource.href}, {"uid", main ? Json(main->uid()) : Json(nullptr)},
        {"following", written.following ? Json(written.following->href) : Json(nullptr)},
        {"isWaiting", written.waits}};
    workspace.out().result(verb + " " + name + " in " + nameOf(calendar)
            + (written.waits ? ", waits to be sent (tessel pending)" : "")
            + (written.following ? ", the later ones are a series of their own now" : ""),
        object);
    // Behind what waits already, it goes with it.
    if (written.waits && !workspace.options().isOffline) {
        workspace.out().note("`tessel sync` sends what waits.");
    }
}

/// The instance of a series on the day, or at the time, that the user means.
EventMoment instanceOf(const EventText& event, const std::string& text)
{
    if (!event.isSeries()) throw Stop::usage("The event does not repeat: leave --instance out.");
    const auto given = momentOf(text);
    const auto time = userMilliseconds(given);
    const auto here = TimeZone::local();
    // What was moved away is looked for by when it would begin, too.
    constexpr auto around = 2 * millisecondsOfDay;
    const auto days = instances(event.tree(), time - around, time + around, here);
    if (!days) throw Stop(days.failure());
    const auto isMeant = [&](const EventMoment& moment) {
        if (!given.isDay()) return event.dateOf(moment, here).millisecondsSince1970() == time;
        return std::chrono::floor<std::chrono::days>(moment.local)
            == std::chrono::floor<std::chrono::days>(given.local);
    };
    std::vector<EventMoment> found;
    const auto add = [&](const EventMoment& moment) {
        if (std::find(found.begin(), found.end(), moment) == found.end()) found.push_back(moment);
    };
    for (const auto& part : event.overrides()) {
        if (const auto id = part.recurrenceId(); id && isMeant(*id)) add(*id);
    }
    for (const auto& day : days.value()) {
        if (day.recurrenceId && isMeant(*day.recurrenceId)) add(*day.recurrenceId);
    }
    for (const auto& day : days.value()) {
        if (!found.empty()) break;
        const auto clock = day.isAllDay ? day.localStart : userClock(day.start);
        const bool isThen = given.isDay() ? isoDay(clock) == isoMoment(given) : day.start == time;
        if (day.recurrenceId && isThen) add(*day.recurrenceId);
    }
    if (found.empty()) throw Stop::missing("The series has no instance on " + text + ".");
    if (found.size() > 1)
        throw Stop::usage("The series has several instances on " + text + "; give the time too.");
    return found.front();
}

void create(Workspace& workspace, const EventArguments& given)
{
    const auto calendar = workspace.heldCalendar(given.calendar);
    EventWrites writes(workspace);
    auto edit = given.options.creation();
    if (given.options.invites()) {
        const auto own = writes.ownAddress();
        if (!own) throw Stop::usage("Nobody knows your own address, from which to invite.");
        edit.organizer = EventAttendee {.address = *own};
    }
    const auto event = workspace.got(EventText::make(edit));
    tell(workspace, "created", calendar, workspace.got(writes.create(calendar, event)));
}

void edit(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace, given.calendar).find(given.event);
    const auto instance = given.instance.empty()
        ? std::nullopt
        : std::optional(instanceOf(held.event, given.instance));
    auto part = held.event.main();
    if (instance) part = held.event.overrideOf(*instance).value_or(part);
    auto edit = given.options.changeOf(held.event, part);
    edit.instance = instance;
    edit.andFollowing = given.isFollowing;
    EventWrites writes(workspace);
    if (given.options.invites() && !part.organizer()) {
        if (const auto own = writes.ownAddress()) edit.organizer = EventAttendee {.address = *own};
    }
    tell(workspace, "changed", held.calendar, workspace.got(writes.change(held, edit)));
}

void remove(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace, given.calendar).find(given.event);
    EventWrites writes(workspace);
    if (given.instance.empty())
        return tell(workspace, "deleted", held.calendar, workspace.got(writes.remove(held)));
    const EventEdit removal {.instance = instanceOf(held.event, given.instance),
        .andFollowing = given.isFollowing,
        .isRemoval = true};
    tell(workspace, "deleted " + given.instance + (given.isFollowing ? " and later of" : " of"),
        held.calendar, workspace.got(writes.change(held, removal)));
}

void move(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace).find(given.event);
    const auto to = workspace.heldCalendar(given.calendar);
    tell(workspace, "moved", to, workspace.got(EventWrites(workspace).move(held, to)));
}

std::string shownAlarm(const EventAlarm& alarm)
{
    const auto length = EventDuration {.time = std::chrono::abs(alarm.before)}.value();
    return alarm.at ? "at " + isoTime(alarm.at->millisecondsSince1970())
                    : length + (alarm.before.count() < 0 ? " after" : " before")
            + (alarm.isFromEnd ? " the end" : " the start");
}

void showPart(const Output& out, const EventText& event, const EventPart& part)
{
    const auto field = [&](const char* name, const std::optional<std::string>& value) {
        if (value && !value->empty()) out.line(std::string(name) + *value);
    };
    const auto time = [](const std::optional<EventMoment>& moment) {
        return moment ? std::optional(shownMoment(*moment)) : std::nullopt;
    };
    field("summary:     ", part.summary());
    field("instance of: ", time(part.recurrenceId()));
    field("start:       ", time(part.start()));
    field("end:         ", time(event.end(part)));
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
    for (const auto& attendee : part.attendees())
        field("invited:     ",
            attendee.address + (attendee.status.empty() ? "" : " (" + attendee.status + ")"));
    field("description: ", part.description());
}

void show(Workspace& workspace, const EventArguments& given)
{
    const auto held = HeldEvents(workspace, given.calendar).find(given.event);
    const auto& out = workspace.out();
    if (given.showsText && !out.isJson()) return out.text(held.event.text());
    auto object = describe(held);
    object["text"] = held.event.text();
    out.object(object);
    if (out.isJson()) return;
    if (given.instance.empty()) {
        showPart(out, held.event, held.event.main());
        for (const auto& part : held.event.overrides()) {
            out.line("");
            showPart(out, held.event, part);
        }
    } else {
        const auto instance = instanceOf(held.event, given.instance);
        showPart(out, held.event, held.event.overrideOf(instance).value_or(held.event.main()));
    }
    out.line("calendar:    " + nameOf(held.calendar));
    out.line("uid:         " + held.event.uid());
    out.line("place:       " + held.resource.href);
}

void defineEvent(CLI::App& app, EventArguments& arguments)
{
    app.add_option("EVENT", arguments.event, "UID, the begin of it, place, or summary")->required();
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
            app.add_option("CALENDAR", arguments.calendar, "name or place")->required();
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
            defineEvent(app, arguments);
            app.add_option("CALENDAR", arguments.calendar, "where to")->required();
        },
        move);
    addCommand<EventArguments>(
        line, group, "delete", "Delete an event, or days of a series",
        "tessel event delete Stand-up --instance 2027-03-02",
        [](CLI::App& app, EventArguments& arguments) {
            defineEvent(app, arguments);
            defineInstance(app, arguments, true);
        },
        remove);
}

} // namespace Tessel::App
