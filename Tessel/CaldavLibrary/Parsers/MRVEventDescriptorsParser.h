#pragma once

#include "Tessel/CaldavLibrary/Models/MRVEventDescriptor.h"
#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

/// Reads the light listing of a calendar: one entity tag and path per event resource.
class MRVEventDescriptorsParser final : public MRVParser {
public:
    using MRVParser::MRVParser;

    /// The descriptors in document order, texts as they stand; a response with two successful
    /// propstats gives two. None when the answer yields no descriptor, so also for a calendar
    /// without events.
    std::optional<std::vector<std::shared_ptr<MRVEventDescriptor>>> parseEventsDescription() const;
};

} // namespace Tessel
