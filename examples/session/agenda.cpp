// A newcomer's six steps: list; sync with true deletions; create, change, move, delete and tell
// truthfully; two weeks of a series; share and accept; survive refusals.
#include <Tessel/Session/Recurrence/Instances.h>
#include <Tessel/Session/Session.h>

#include <cstdlib>
#include <iostream>

using namespace Tessel;
using namespace std::chrono;

namespace {

/// What a call gave, or the end of the program with the reason.
template <class T> T got(Result<T> result)
{
    if (result) return std::move(result).value();
    std::cerr << result.reason() << '\n';
    std::exit(1);
}

Session::Opened open(
    const std::string& server, const std::string& user, const std::string& password)
{
    return got(wait(Session::open({.server = server, .user = user}, Password {password})));
}

void show(const Changes& changes)
{
    for (const auto& calendar : changes.calendars) {
        std::cout << calendar.displayName << ": " << calendar.added.size() << " new, "
                  << calendar.edited.size() << " changed, " << calendar.deleted.size() << " gone\n";
        for (const auto& failed : calendar.failed)
            std::cout << "  not brought: " << failed.href << ": " << failed.reason << '\n';
        if (calendar.failure) std::cout << "  stopped: " << calendar.failure->reason << '\n';
    }
}

void showAgenda(Store& store, const std::string& calendar, sys_days from)
{
    const auto begin = duration_cast<milliseconds>(from.time_since_epoch()).count();
    const auto end = begin + milliseconds(weeks(2)).count();
    const auto visited = store.visit(calendar, begin, end, [&](const Resource& resource) {
        const auto event = got(EventText::read(resource.text));
        for (const auto& day : got(instances(event.tree(), begin, end, TimeZone::local()))) {
            const auto changed = day.isChanged ? event.overrideOf(*day.recurrenceId) : std::nullopt;
            std::cout << (day.start - begin) / 86'400'000
                      << ". day: " << changed.value_or(event.main()).summary().value_or("")
                      << (day.isCancelled ? " (cancelled)" : "") << '\n';
        }
        return true;
    });
    if (!visited) std::cerr << visited.reason() << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    const auto* const password = std::getenv("PASSWORD");
    if (argc < 3 || !password) return 2;
    const auto session = open(argv[1], argv[2], password);
    const auto store = got(SQLiteStore::open("agenda.db", {argv[2], session->origin()}));
    for (const auto& calendar : got(wait(session->calendars())))
        std::cout << calendar.displayName << '\n';
    show(got(wait(session->sync(store))));

    const auto work = got(wait(session->createCalendar({.displayName = "Work"})));
    const auto home = got(wait(session->createCalendar({.displayName = "Home"})));
    const auto at = [](const char* time) { return *EventMoment::read(time, "Europe/Berlin"); };
    const auto standup = got(EventText::make({.summary = "Stand-up",
        .start = at("20240506T090000"),
        .end = at("20240506T091500"),
        .rule = "FREQ=DAILY;COUNT=5",
        .alarms = {{15min}}}));
    auto event = got(wait(session->create(work, standup)));
    for (const auto& edit : {EventEdit {.instance = at("20240507T090000"), .isRemoval = true},
             EventEdit {.instance = at("20240508T090000"), .start = at("20240509T140000")}})
        event = got(wait(session->change(event, edit))).resource;
    show(got(wait(session->sync(store))));
    showAgenda(*store, work, 2024y / May / 1);

    if (argc > 3) { // somebody to share with
        for (const auto& each : got(wait(session->share(work, {{.address = argv[3]}}))))
            std::cout << each.address << ": " << (each.outcome ? "invited" : each.outcome.reason())
                      << '\n';
        const auto other = open(argv[1], argv[3], password);
        for (const auto& invitation : got(wait(other->invitations())))
            std::cout << got(wait(other->accept(invitation))) << '\n';
    }

    const auto moved = got(wait(session->move(event, home)));
    const auto late = wait(session->change(event, {.summary = "Too late"}));
    std::cout << (late ? "changed" : late.reason()) << '\n';
    if (const auto removed = wait(session->remove(moved)); !removed) std::cerr << removed.reason();
    show(got(wait(session->sync(store))));
    for (const auto& calendar : {work, home})
        if (const auto gone = wait(session->deleteCalendar(calendar)); !gone) return 1;
}
