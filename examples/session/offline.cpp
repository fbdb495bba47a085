// Makes changes while there is no network, and sends them when there is one.
// usage: offline SERVER USER
#include "examples/session/Example.h"

using namespace Tessel;
using Example::got;

int main(int argc, char** argv)
{
    const auto session = Example::open(argc, argv);
    const auto calendar = got(wait(session->createCalendar({.displayName = "Offline"})));
    const auto store = std::make_shared<MemoryStore>(); // a SQLiteStore outlasts the program
    got(wait(session->sync(store)));

    // Nothing here needs the server. What the outbox gives is what the user sees until it is sent.
    Outbox outbox(store);
    const auto event = got(outbox.create(calendar,
        got(EventText::make({.summary = "Picnic",
            .start = EventMoment::day(std::chrono::local_days {std::chrono::May / 4 / 2024})}))));
    got(outbox.change(event, {.location = "By the lake"}));
    for (const auto& change : got(outbox.pending()))
        std::cout << "waits: " << change.uid << '\n';

    // Now, and again at `nextTry` or when the network is back.
    const auto sent = got(wait(session->sendOutbox(store)));
    for (const auto& change : sent.done) {
        const auto text = got(EventText::read(change.resource.text));
        std::cout << "sent: " << text.main().summary().value_or("") << ", "
                  << text.main().location().value_or("") << '\n';
    }
    for (const auto& id : sent.parked) // somebody else has changed the same
        got(outbox.resolve(id, Outbox::Keep::theirs));
    if (sent.stopped) std::cout << sent.waiting << " wait: " << sent.stopped->reason << '\n';

    got(wait(session->deleteCalendar(calendar)));
}
