#include "Tessel/CaldavLibrary/Parsers/MRVCalendarParser.h"
#include "fuzz/FuzzTarget.h"

namespace Tessel::Fuzz {

namespace {

/// A listing stops the process only where a calendar lacks what it must have.
const Target calendars("calendars", [](std::string_view input) {
    const auto account = std::make_shared<MRVAccount>(MRVAccount {.identifier = "account"});
    const MRVCalendarParser parser(std::string(input), account);
    std::optional<std::vector<std::shared_ptr<MRVCalendar>>> found;
    endsOrStopsFor({"no text in the required element ", "no zone can be read from a",
                       "a supported calendar component has no name", "a sharee has no address"},
        [&] { found = parser.parseCalendars(); });
    if (!found) return;
    for (const auto& calendar : *found) {
        require(calendar->account == account && calendar->calID == "account" + calendar->href,
            "a calendar of nobody's account");
        require(calendar->supportedComponents && calendar->privileges
                && calendar->supportedComponents->contains(MRVCalendarComponents::none),
            "a calendar without its sets");
        calendar->timeZone.secondsFromGMT();
    }
});

} // namespace

} // namespace Tessel::Fuzz
