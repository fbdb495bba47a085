// Moves one day of a series, although somebody else has changed the series meanwhile; and hears of
// a change that both have made. usage: one-instance SERVER USER
#include "examples/session/Example.h"

using namespace Tessel;
using Example::got;

namespace {

EventMoment at(const char* time)
{
    return *EventMoment::read(time, "Europe/Berlin");
}

void show(const Resource& resource)
{
    const auto event = got(EventText::read(resource.text));
    const auto from = event.dateOf(at("20240501T000000")).millisecondsSince1970();
    const auto to = event.dateOf(at("20240601T000000")).millisecondsSince1970();
    for (const auto& day : got(instances(event.tree(), from, to, TimeZone::local()))) {
        const auto part = event.part(day.component);
        std::cout << part.start()->value() << ' ' << part.summary().value_or("") << ", "
                  << part.location().value_or("nowhere") << (day.isChanged ? " (moved)\n" : "\n");
    }
}

} // namespace

int main(int argc, char** argv)
{
    const auto session = Example::open(argc, argv);
    const auto calendar = got(wait(session->createCalendar({.displayName = "One instance"})));
    const auto seen = got(wait(session->create(calendar,
        got(EventText::make({.summary = "Stand-up",
            .start = at("20240506T090000"),
            .rule = "FREQ=DAILY;COUNT=2"})))));

    // Somebody else finds a room for all days, while our user still looks at `seen`.
    got(wait(session->change(seen, {.location = "Room 2"})));

    // The user moves the second day: the edit is made on the newer text.
    const auto moved = got(wait(session->change(
        seen, {.instance = at("20240507T090000"), .start = at("20240507T140000")})));
    show(moved.resource);

    // Another room is a conflict: both texts are there to choose from.
    const auto conflict = wait(session->change(seen, {.location = "Room 3"}));
    if (!conflict && conflict.failure().kind == FailureKind::changed && conflict.failure().texts)
        std::cout << "conflict: " << conflict.reason() << '\n';

    got(wait(session->deleteCalendar(calendar)));
}
