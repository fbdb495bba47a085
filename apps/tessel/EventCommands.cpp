#include "apps/tessel/Commands.h"
#include "apps/tessel/EventChanges.h"
#include "apps/tessel/EventListing.h"
#include "apps/tessel/EventReading.h"
#include "apps/tessel/WhatIsLost.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace Tessel::App {

namespace {

struct Request {
    std::string calendar, event, file, destination;
    EventChanges changes;
    bool isForced = false, isRemote = false;
};

/// Such as "2027-01-18 09:30 Europe/Berlin", or "2027-01-18" for a whole day.
std::string time(const Date& date, const std::optional<TimeZone>& zone, bool allDay)
{
    const auto in = zone.value_or(TimeZone::UTC());
    using namespace std::chrono;
    const sys_time<milliseconds> local(
        milliseconds(date.millisecondsSince1970()) + seconds(in.secondsFromGMT(date)));
    const auto day = floor<days>(local);
    const year_month_day ymd(day);
    const hh_mm_ss clock(floor<minutes>(local - day));
    std::array<char, 64> text {};
    const int length = std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", int(ymd.year()),
        unsigned(ymd.month()), unsigned(ymd.day()));
    if (allDay) return text.data();
    std::snprintf(text.data() + length, text.size() - std::size_t(length), " %02d:%02d ",
        int(clock.hours().count()), int(clock.minutes().count()));
    return text.data() + in.identifier();
}

void print(const Host& host, const MRVEvent& event)
{
    const auto start = time(event.startDate, event.startTimeZone, event.allDay);
    const auto end = time(event.endDate, event.endTimeZone, event.allDay);
    host.output().result(start + "  " + unescaped(event.summary)
            + (event.recurRule ? "  (" + *event.recurRule + ")" : "") + "  " + event.href,
        {{"href", event.href}, {"eTag", event.eTag}, {"uid", event.uid},
            {"summary", unescaped(event.summary)}, {"start", start}, {"end", end},
            {"allDay", event.allDay}, {"status", event.status},
            {"rule", Output::orNull(event.recurRule)}});
}

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const auto& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

/// Refuses to write what would not come back, and what cannot be written at all.
void check(const MRVEvent& event, std::vector<std::string> lost, bool isForced)
{
    if (!event.iCalendarString()) {
        throw std::runtime_error(
            "an event with times in UTC, or without a zone, cannot be written: give --timezone");
    }
    const auto damaged = whatIsDamaged(event);
    lost.insert(lost.end(), damaged.begin(), damaged.end());
    std::sort(lost.begin(), lost.end());
    lost.erase(std::unique(lost.begin(), lost.end()), lost.end());
    if (!lost.empty() && !isForced) {
        throw std::runtime_error(
            "this would be lost: " + joined(lost) + "; --force does it anyway");
    }
}

/// The held calendar, which needs no request, or else the server's.
std::shared_ptr<MRVCalendar> calendar(Host& host, const std::string& nameOrHref)
{
    try {
        return Host::find(host.store().calendars(host.account()), nameOrHref);
    } catch (const std::runtime_error&) {
        return host.calendar(nameOrHref);
    }
}

/// The href, and the entity tag that the user has seen, of the event with that uid or href.
std::shared_ptr<MRVEvent> held(
    Host& host, const std::shared_ptr<MRVCalendar>& in, const std::string& name)
{
    for (const auto& event : host.store().events(in)) {
        if (event->uid == name || event->href == name) return event;
    }
    return nullptr;
}

std::shared_ptr<MRVEvent> known(
    Host& host, const std::shared_ptr<MRVCalendar>& in, const std::string& name)
{
    if (auto event = held(host, in, name)) return event;
    for (const auto& event : remoteEvents(host, in)) {
        if (event->uid == name || event->href == name) return event;
    }
    // The library brings no event of a series with changed instances; its href leads there.
    if (name.starts_with(in->href)) {
        return std::make_shared<MRVEvent>(MRVEvent {.href = name, .summary = name});
    }
    throw std::runtime_error("there is no event " + name + " in " + in->displayName);
}

void list(Host& host, const Request& request)
{
    const auto in = calendar(host, request.calendar);
    const auto events = request.isRemote ? remoteEvents(host, in) : host.store().events(in);
    for (const auto& event : events)
        print(host, *event);
}

void show(Host& host, const Request& request)
{
    const auto in = calendar(host, request.calendar);
    const auto [event, text] = remoteEvent(host, in, known(host, in, request.event)->href);
    host.output().text(text,
        {{"href", event->href}, {"eTag", event->eTag}, {"uid", event->uid},
            {"summary", unescaped(event->summary)},
            {"description", unescaped(event->desc.value_or(""))}, {"status", event->status},
            {"start", time(event->startDate, event->startTimeZone, event->allDay)},
            {"end", time(event->endDate, event->endTimeZone, event->allDay)}, {"data", text},
            {"answer", host.lastAnswer()}});
}

std::shared_ptr<MRVEvent> eventOfFile(
    const std::string& file, const std::shared_ptr<MRVCalendar>& in)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!stream.good() && !stream.eof()) throw std::runtime_error("cannot read " + file);
    auto event = readEvent(text, in);
    if (!event) throw std::runtime_error(file + " holds no event, or several");
    return event;
}

void create(Host& host, const Request& request)
{
    const auto in = calendar(host, request.calendar);
    std::vector<std::string> lost;
    std::shared_ptr<MRVEvent> base = std::make_shared<MRVEvent>(MRVEvent {.status = "CONFIRMED"});
    if (!request.file.empty()) {
        base = eventOfFile(request.file, in);
        lost = whatIsLost(base->calendarData, *base);
    } else if (!request.changes.summary || !request.changes.start || !request.changes.end) {
        throw std::runtime_error("an event needs a file, or --summary, --start and --end");
    }
    auto changes = request.changes;
    if (request.file.empty() && !changes.zone) changes.zone = in->timeZone.identifier();
    const auto event = changes.applied(*base, in, "");
    event->uid = base->uid.empty() ? CGICalendar::UUID() : base->uid;
    check(*event, lost, request.isForced);

    const auto client = host.makeClient();
    host.write("creating the event", "PUT",
        [&] { client->create(event, [](const auto&, const auto&) {}); });
    const auto href = in->href + (in->href.ends_with('/') ? "" : "/") + event->uid + ".ics";
    host.output().result("created " + unescaped(event->summary) + " at " + href + host.lastWord(),
        {{"created", href}, {"uid", event->uid}, {"answer", host.lastAnswer()}});
}

void update(Host& host, const Request& request)
{
    if (request.changes.isEmpty()) throw std::runtime_error("nothing to change was given");
    const auto in = calendar(host, request.calendar);
    const auto seen = known(host, in, request.event);
    const auto [current, text] = remoteEvent(host, in, seen->href);
    // The tag that the user has seen, so that a change made meanwhile is not overwritten.
    const auto& eTag = seen->eTag.empty() ? current->eTag : seen->eTag;
    if (eTag.empty()) throw std::runtime_error("the server gives no entity tag to write over");
    const auto event = request.changes.applied(*current, in, eTag);
    check(*event, whatIsLost(text, *current), request.isForced);

    const auto client = host.makeClient();
    host.write("updating the event", "PUT", [&] { client->update(event, [](const auto&) {}); });
    host.output().result("updated " + unescaped(event->summary) + host.lastWord(),
        {{"updated", event->href}, {"answer", host.lastAnswer()}});
}

void move(Host& host, const Request& request)
{
    const auto event = known(host, calendar(host, request.calendar), request.event);
    const auto destination = calendar(host, request.destination);
    const auto client = host.makeClient();
    host.write(
        "moving the event", "MOVE", [&] { client->move(event, destination, [](const auto&) {}); });
    host.output().result(
        "moved " + unescaped(event->summary) + " to " + destination->displayName + host.lastWord(),
        {{"moved", event->href}, {"to", destination->href}, {"answer", host.lastAnswer()}});
}

void remove(Host& host, const Request& request)
{
    const auto event = known(host, calendar(host, request.calendar), request.event);
    const auto client = host.makeClient();
    host.write(
        "deleting the event", "DELETE", [&] { client->deleteEvent(event, [](const auto&) {}); });
    host.output().result("deleted " + unescaped(event->summary) + host.lastWord(),
        {{"deleted", event->href}, {"answer", host.lastAnswer()}});
}

/// A calendar object for each resource, as the server gave it: merging them would have to choose
/// between time-zone definitions of one name (RFC 5545, 3.4 allows a sequence).
void exportEvents(Host& host, const Request& request)
{
    std::string out;
    for (const auto& text : host.store().calendarData(*calendar(host, request.calendar))) {
        for (const char c : text) {
            if (c == '\n') out += '\r';
            if (c != '\r') out += c;
        }
        if (!out.ends_with('\n')) out += "\r\n";
    }
    if (request.file.empty()) return Output::raw(out);
    std::ofstream stream(request.file, std::ios::binary);
    if (!stream.write(out.data(), std::streamsize(out.size())).flush()) {
        throw std::runtime_error("cannot write " + request.file);
    }
}

using Action = void (*)(Host&, const Request&);

CLI::App* add(CLI::App& app, Command& chosen, const char* name, const char* help, Action action,
    const std::shared_ptr<Request>& request)
{
    const auto command = app.add_subcommand(name, help);
    command->add_option("CALENDAR", request->calendar, "display name or href")->required();
    command->callback([=, &chosen] { chosen = [=](Host& host) { action(host, *request); }; });
    return command;
}

} // namespace

void addEventCommands(CLI::App& app, Command& chosen)
{
    const auto request = std::make_shared<Request>();
    add(app, chosen, "events", "List a calendar's events", list, request)
        ->add_flag("--remote", request->isRemote, "as they are on the server, not as last synced");
    add(app, chosen, "export", "Write a calendar's events, as last synced, as iCalendar text",
        exportEvents, request)
        ->add_option("FILE", request->file, "standard output if not given");

    const auto event = app.add_subcommand("event", "One event on the server");
    event->require_subcommand(1)->fallthrough();
    const auto addNamed = [&](const char* name, const char* help, Action action) {
        const auto command = add(*event, chosen, name, help, action, request);
        command->add_option("EVENT", request->event, "uid or href")->required();
        return command;
    };
    const auto created = add(*event, chosen, "create", "Create an event", create, request);
    created->add_option("FILE", request->file, "iCalendar file with one event");
    created->add_flag("--force", request->isForced, "also when properties of the file are lost");
    request->changes.addOptions(*created);
    const auto updated = addNamed("update", "Change an event", update);
    updated->add_flag("--force", request->isForced, "also when properties are lost");
    request->changes.addOptions(*updated);
    addNamed("move", "Move an event to another calendar", move)
        ->add_option("DESTINATION", request->destination, "display name or href")
        ->required();
    addNamed("delete", "Delete an event", remove);
    addNamed("show", "Show an event as it is on the server", show);
}

} // namespace Tessel::App
