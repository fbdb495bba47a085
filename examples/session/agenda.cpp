// List; sync; write; two weeks of a series; share and accept; survive a refusal. The password is in
// $PASSWORD. usage: agenda SERVER USER FRIEND'S-ADDRESS FRIEND'S-USER-NAME
#include <Tessel/TesselSession.h>

#include <cstdlib>
#include <iostream>

using namespace Tessel;
using namespace std::chrono;

namespace {

/// What a call gave, or the end of the program with the reason.
template <class T> T got(Result<T> result)
{
    if (!result) {
        std::cerr << result.reason() << '\n';
        std::exit(1);
    }
    if constexpr (!std::is_void_v<T>) return std::move(result).value();
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
    got(store.visit(calendar, begin, end, [&](const Resource& resource) {
        const auto event = got(EventText::read(resource.text));
        for (const auto& day : got(instances(event.tree(), begin, end, TimeZone::local())))
            std::cout << "day " << (day.start - begin) / 86'400'000 + 1 << ": "
                      << event.part(day.component).summary().value_or("")
                      << (day.isCancelled ? " (cancelled)" : "") << '\n';
        return true;
    }));
}

} // namespace

int main(int argc, char** argv)
{
    const auto* const password = std::getenv("PASSWORD");
    if (argc < 5 || !password) return 2;
    const auto* const authority = std::getenv("AUTHORITY"); // whom else to trust
    MNetworkManager::setSharedInstance(std::make_shared<MCurlNetworkManager>(
        MNetworkConfiguration {.authorityFile = authority ? authority : ""}));
    const auto session = open(argv[1], argv[2], password);
    const auto store = got(SQLiteStore::open("agenda.db", {argv[2], session->origin()}));
    for (const auto& calendar : got(wait(session->calendars())))
        std::cout << calendar.displayName << '\n';
    show(got(wait(session->sync(store))));

    const auto work = got(wait(session->createCalendar({.displayName = "Work"})));
    const auto home = got(wait(session->createCalendar({.displayName = "Home"})));
    const auto at = [](const char* time) { return *EventMoment::read(time, "Europe/Berlin"); };
    auto event = got(wait(session->create(work,
        got(EventText::make({.summary = "Stand-up",
            .start = at("20240506T090000"),
            .rule = "FREQ=DAILY;COUNT=5",
            .alarms = {{15min}}})))));
    for (const auto& edit : {EventEdit {.instance = at("20240507T090000"), .isRemoval = true},
             EventEdit {.instance = at("20240508T090000"), .start = at("20240509T140000")}})
        event = got(wait(session->change(event, edit))).resource;
    show(got(wait(session->sync(store))));
    showAgenda(*store, work, 2024y / May / 1);

    const auto shared = wait(session->share(work, {{.address = argv[3]}}));
    if (!shared) std::cout << shared.reason() << '\n';
    if (shared) { // the friend has the same password
        for (const auto& each : shared.value())
            std::cout << (each.outcome ? "invited" : each.outcome.reason()) << '\n';
        const auto other = open(argv[1], argv[4], password);
        for (const auto& invitation : got(wait(other->invitations())))
            std::cout << got(wait(other->accept(invitation))) << '\n';
    }
    const auto moved = got(wait(session->move(event, home)));
    const auto late = wait(session->change(event, {.summary = "Too late"}));
    std::cout << (late ? "changed" : late.reason()) << '\n';
    got(wait(session->remove(moved)));
    show(got(wait(session->sync(store))));
    for (const auto& calendar : {work, home})
        got(wait(session->deleteCalendar(calendar)));
}
