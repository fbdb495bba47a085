#include "Tessel/CaldavLibrary/Parsers/MRVEventDescriptorsParser.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/ReadEvents.h"

namespace Tessel::Fuzz {

namespace {

/// Each event of an answer can be written, and is in the listing of the same answer.
const Target events("events", [](std::string_view input) {
    const std::string answer(input);
    const auto found = eventsOf(answer);

    std::optional<std::vector<std::shared_ptr<MRVEventDescriptor>>> listed;
    endsOrStopsFor(
        {}, [&] { listed = MRVEventDescriptorsParser(answer, nullptr).parseEventsDescription(); });
    std::size_t next = 0;
    for (const auto& event : found) {
        while (listed && next < listed->size()
            && ((*listed)[next]->href != event->href || (*listed)[next]->eTag != event->eTag))
            ++next;
        require(listed && next < listed->size(), "an event is not listed");
        endsOrStopsFor({}, [&] { event->iCalendarString(); });
    }
});

} // namespace

} // namespace Tessel::Fuzz
