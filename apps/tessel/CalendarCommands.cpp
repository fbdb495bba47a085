#include "apps/tessel/Commands.h"

#include <cctype>
#include <map>
#include <random>

namespace Tessel::App {

namespace {

struct NewCalendar {
    std::string name;
    std::optional<std::string> color, order, description;
    std::vector<std::string> components {"VEVENT"};
    std::string zone = TimeZone::local().identifier();
};

const std::map<std::string, MRVCalendarComponents> componentsByName {
    {"VEVENT", MRVCalendarComponents::event},
    {"VTODO", MRVCalendarComponents::todo},
    {"VJOURNAL", MRVCalendarComponents::journal},
};

std::vector<std::string> names(const std::optional<MRVCalendarComponents>& components)
{
    std::vector<std::string> names;
    for (const auto& [name, component] : componentsByName) {
        if (components && components->contains(component)) names.push_back(name);
    }
    return names;
}

/// The last part of a new collection's path: readable, and unlike any other.
std::string pathSegment(const std::string& name)
{
    std::string segment;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c))) {
            segment += char(std::tolower(static_cast<unsigned char>(c)));
        } else if (!segment.empty() && segment.back() != '-') {
            segment += '-';
        }
    }
    std::random_device random;
    return segment + (segment.ends_with('-') ? "" : "-") + std::to_string(random());
}

void print(const Host& host, const MRVCalendar& calendar, const std::string& line)
{
    host.output().result(line,
        {{"href", calendar.href}, {"name", calendar.displayName}, {"cTag", calendar.cTag},
            {"color", Output::orNull(calendar.color)}, {"order", Output::orNull(calendar.order)},
            {"description", Output::orNull(calendar.desc)},
            {"components", names(calendar.supportedComponents)},
            {"timeZone", calendar.timeZone.identifier()}, {"owner", calendar.owner},
            {"isShared", calendar.isShared}, {"answer", host.lastAnswer()}});
}

std::string description(const MRVCalendar& calendar)
{
    std::string text = calendar.displayName + " at " + calendar.href;
    if (calendar.color) text += ", color " + *calendar.color;
    if (calendar.order) text += ", order " + *calendar.order;
    for (const auto& name : names(calendar.supportedComponents))
        text += ", " + name;
    text += ", " + calendar.timeZone.identifier();
    if (calendar.desc) text += ", \"" + *calendar.desc + "\"";
    return text;
}

void list(Host& host)
{
    for (const auto& calendar : host.listCalendars())
        print(host, *calendar, description(*calendar));
}

void create(Host& host, const NewCalendar& wanted)
{
    const auto zone = TimeZone::withIdentifier(wanted.zone);
    if (!zone) throw std::runtime_error("there is no time zone " + wanted.zone);
    MRVCalendarComponents components;
    for (const auto& name : wanted.components)
        components.insert(componentsByName.at(name));

    const auto account = host.account();
    const auto home = account->calendarHomeURL.value();
    const auto href = home + (home.ends_with('/') ? "" : "/") + pathSegment(wanted.name) + "/";
    const auto calendar = std::make_shared<MRVCalendar>(MRVCalendar {
        .calID = account->identifier + href,
        .href = href,
        .displayName = wanted.name,
        .desc = wanted.description,
        .order = wanted.order,
        .color = wanted.color,
        .timeZone = *zone,
        .account = account,
        .supportedComponents = components,
    });
    const auto client = host.makeClient();
    const auto answer = host.makeAnswer<std::optional<Error>>();
    const auto [error]
        = host.await("creating the calendar", answer, [&] { client->create(calendar, answer); });
    if (error) host.fail("creating the calendar", error->localizedDescription);
    const auto created = host.lastWord();
    // The server need not take every property: show what it made of it.
    const auto listed = host.calendar(href);
    print(host, *listed, "created " + description(*listed) + created);
}

void set(
    Host& host, const std::string& nameOrHref, const std::map<std::string, std::string>& values)
{
    const auto calendar = host.calendar(nameOrHref);
    const auto client = host.makeClient();
    const auto answer = host.makeAnswer<std::optional<MRVClient::PropertyResults>>();
    const auto [results] = host.await(
        "changing the calendar", answer, [&] { client->update(calendar, values, answer); });
    if (!results) host.fail("changing the calendar", "no property was changed");

    std::string refused;
    for (const auto& [property, status] : *results) {
        const bool isSet = status == MRVStatusCode::OK;
        if (!isSet) refused += (refused.empty() ? "" : ", ") + property;
        host.output().result((isSet ? "set " : "could not set ") + property + " of "
                + calendar->displayName + " to " + values.at(property) + ": "
                + std::to_string(rawValue(status)) + host.lastWord(),
            {{"calendar", calendar->href}, {"property", property}, {"value", values.at(property)},
                {"status", std::int64_t(rawValue(status))}, {"answer", host.lastAnswer()}});
    }
    if (!refused.empty()) host.fail("changing the calendar", "refused: " + refused);
}

void addCreate(CLI::App& app, Command& chosen)
{
    const auto wanted = std::make_shared<NewCalendar>();
    const auto command = app.add_subcommand("create", "Make a calendar");
    command->add_option("NAME", wanted->name)->required();
    command->add_option("--color", wanted->color, "such as #2E7D32FF");
    command->add_option("--order", wanted->order, "place in a list of calendars");
    command->add_option("--components", wanted->components, "VEVENT, VTODO, VJOURNAL")
        ->delimiter(',')
        ->check(CLI::IsMember({"VEVENT", "VTODO", "VJOURNAL"}));
    command->add_option("--description", wanted->description);
    command->add_option("--timezone", wanted->zone, "such as Europe/Berlin; your own otherwise");
    command->callback(
        [wanted, &chosen] { chosen = [wanted](Host& host) { create(host, *wanted); }; });
}

void addSet(CLI::App& app, Command& chosen)
{
    const auto name = std::make_shared<std::string>();
    const auto values = std::make_shared<std::map<std::string, std::string>>();
    const auto command = app.add_subcommand("set", "Change a calendar's properties");
    command->add_option("CALENDAR", *name, "display name or href")->required();
    for (const auto property : {MRVCalendar::propertyColor, MRVCalendar::propertyOrder}) {
        command->add_option_function<std::string>("--" + std::string(property),
            [values, property](const std::string& value) { (*values)[property] = value; });
    }
    command->require_option(2, 0);
    command->callback([=, &chosen] { chosen = [=](Host& host) { set(host, *name, *values); }; });
}

void remove(Host& host, const std::string& nameOrHref)
{
    const auto calendar = host.calendar(nameOrHref);
    const auto client = host.makeClient();
    host.write("deleting the calendar", "DELETE",
        [&] { client->deleteCalendar(calendar, [](const auto&) {}); });
    host.store().remove(*calendar);
    host.output().result("deleted " + calendar->displayName + host.lastWord(),
        {{"deleted", calendar->href}, {"answer", host.lastAnswer()}});
}

void addDelete(CLI::App& app, Command& chosen)
{
    const auto name = std::make_shared<std::string>();
    const auto command = app.add_subcommand("delete", "Delete a calendar with all it holds");
    command->add_option("CALENDAR", *name, "display name or href")->required();
    command->callback([=, &chosen] { chosen = [=](Host& host) { remove(host, *name); }; });
}

} // namespace

void addCalendarCommands(CLI::App& app, Command& chosen)
{
    const auto calendars = app.add_subcommand("calendars", "The account's calendars on the server");
    calendars->require_subcommand(1)->fallthrough();
    calendars->add_subcommand("list", "List them")->callback([&chosen] { chosen = list; });
    addCreate(*calendars, chosen);
    addSet(*calendars, chosen);
    addDelete(*calendars, chosen);
}

} // namespace Tessel::App
