#include "Tessel/CaldavLibrary/Parsers/MRVPropertyParser.h"
#include "fuzz/FuzzTarget.h"

namespace Tessel::Fuzz {

namespace {

/// No answer to a PROPPATCH stops the process; each property has a name.
const Target properties("properties", [](std::string_view input) {
    const MRVPropertyParser parser(std::string(input), nullptr);
    endsOrStopsFor({}, [&] {
        const auto statuses = parser.parseProperties();
        require(statuses.has_value() == (parser.document() != nullptr), "statuses of no document");
        if (!statuses) return;
        for (const auto& [name, status] : *statuses)
            require(!name.second.empty(), "a property without a name");
    });
});

} // namespace

} // namespace Tessel::Fuzz
