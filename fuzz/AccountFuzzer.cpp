#include "Tessel/CaldavLibrary/Parsers/MRVAccountDetailsParser.h"
#include "fuzz/FuzzTarget.h"

namespace Tessel::Fuzz {

namespace {

/// No answer stops discovery, and each detail has the type of its key.
const Target account("account", [](std::string_view input) {
    const MRVAccountDetailsParser parser(std::string(input), nullptr);
    std::optional<MRVAccountDetailsParser::Details> details;
    endsOrStopsFor({}, [&] { details = parser.parseAccountDetails(); });
    require(details.has_value() == (parser.document() != nullptr), "details of no document");
    if (!details) return;
    for (const auto& [key, value] : *details) {
        const bool isSet = key == MRVAccountDetailsParser::calendarAddressSetKey;
        require(isSet == std::holds_alternative<std::vector<std::string>>(value),
            "a detail of another type: " + key);
    }
});

} // namespace

} // namespace Tessel::Fuzz
