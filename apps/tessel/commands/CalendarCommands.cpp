#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/output/ResultTable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace Tessel::App {

namespace {

Json describe(const StoredCalendar& calendar)
{
    return {{"name", nameOf(calendar)}, {"href", calendar.href},
        {"description", orNull(calendar.description)}, {"color", orNull(calendar.color)},
        {"order", orNull(calendar.order)}, {"components", calendar.components},
        {"isWritable", calendar.isWritable}, {"missing", calendar.missing}};
}

/// By their order, those without one last; else as the server lists them.
void sort(std::vector<StoredCalendar>& calendars)
{
    const auto rank = [](const StoredCalendar& calendar) {
        auto number = std::numeric_limits<double>::infinity();
        const auto text = calendar.order.value_or("");
        std::from_chars(text.data(), text.data() + text.size(), number);
        return std::isnan(number) ? std::numeric_limits<double>::infinity() : number;
    };
    std::stable_sort(calendars.begin(), calendars.end(),
        [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
}

void checkName(const std::string& name)
{
    if (name.find_first_not_of(" \t") == name.npos)
        throw Stop::usage("A calendar needs a name to be called by.");
}

void list(Workspace& workspace)
{
    ResultTable table(workspace.out(), {"NAME", "COLOR", "ORDER", "ACCESS", "PLACE"});
    auto calendars = workspace.calendars();
    sort(calendars);
    for (const auto& calendar : calendars) {
        table.add({nameOf(calendar), calendar.color.value_or(""), calendar.order.value_or(""),
                      calendar.isWritable ? "read-write" : "read-only", calendar.href},
            describe(calendar));
    }
    table.print("There are no calendars.");
}

struct CalendarArguments {
    std::string name;
    CalendarProperties properties;
};

void create(Workspace& workspace, const CalendarArguments& given)
{
    checkName(given.name);
    auto properties = given.properties;
    properties.displayName = given.name;
    const auto place = workspace.got(workspace.session().createCalendar(properties));
    workspace.hold(place);
    workspace.out().result(
        "created " + given.name + " at " + place, {{"name", given.name}, {"href", place}});
}

void set(Workspace& workspace, const CalendarArguments& given)
{
    if (given.properties.displayName) checkName(*given.properties.displayName);
    const auto calendar = workspace.calendar(given.name);
    const auto& [name, description, color, order, zone, components] = given.properties;
    if (!name && !description && !color && !order && !zone)
        throw Stop::usage("Nothing to change: see --help for what can be.");
    workspace.got(workspace.session().changeCalendar(calendar.href, given.properties));
    workspace.hold(calendar.href);
    workspace.out().result("changed " + name.value_or(nameOf(calendar)),
        {{"name", name.value_or(nameOf(calendar))}, {"href", calendar.href}});
}

void remove(Workspace& workspace, const CalendarArguments& given)
{
    const auto calendar = workspace.calendar(given.name);
    workspace.requireNothingWaits(calendar.href);
    workspace.got(workspace.session().deleteCalendar(calendar.href));
    workspace.got(workspace.store()->removeCalendar(calendar.href));
    workspace.out().result("deleted " + nameOf(calendar) + " from your calendars",
        {{"name", nameOf(calendar)}, {"href", calendar.href}});
}

void addProperties(CLI::App& app, CalendarProperties& properties)
{
    const auto add = [&](const char* name, auto& value, const char* type, const char* meaning) {
        app.add_option(name, value, meaning)->type_name(type);
    };
    add("--description", properties.description, "TEXT", "what it is for");
    add("--color", properties.color, "#RRGGBB", "its color");
    add("--order", properties.order, "NUMBER", "its place in lists; smaller comes first");
    add("--zone", properties.timeZone, "ZONE", "its time zone, such as Europe/Berlin");
}

} // namespace

void addCalendarCommands(CommandLine& line)
{
    auto& group
        = addCommand(line.app, "calendars", "The calendars of the account", "tessel calendars");
    setDefault(line, group, list);
    addCommand(line, group, "list", "Show the calendars", "tessel calendars list", list);
    addCommand<CalendarArguments>(
        line, group, "create", "Make a calendar",
        "tessel calendars create Work --color '#2E7D32' --zone Europe/Berlin",
        [](CLI::App& app, CalendarArguments& arguments) {
            app.add_option("NAME", arguments.name, "what it will be called")->required();
            addProperties(app, arguments.properties);
            app.add_option("--components", arguments.properties.components,
                   "what it may hold, such as VEVENT,VTODO; events alone without it")
                ->type_name("LIST")
                ->delimiter(',');
        },
        create);
    addCommand<CalendarArguments>(
        line, group, "set", "Change what a calendar is called and so on",
        "tessel calendars set Work --name Office --color '#C62828'",
        [](CLI::App& app, CalendarArguments& arguments) {
            defineCalendar(app, arguments.name);
            app.add_option("--name", arguments.properties.displayName, "what it will be called")
                ->type_name("TEXT");
            addProperties(app, arguments.properties);
        },
        set);
    addCommand<CalendarArguments>(
        line, group, "delete",
        "Delete a calendar with all its events, for everybody; of one that somebody shares with "
        "you, the share alone",
        "tessel calendars delete Work",
        [](CLI::App& app, CalendarArguments& arguments) { defineCalendar(app, arguments.name); },
        remove);
}

} // namespace Tessel::App
