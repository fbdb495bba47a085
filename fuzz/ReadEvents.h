#pragma once

#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"

#include <memory>
#include <string>

// None as well where reading stops the process for a reason that is expected: an event without UID,
// or a trigger that is no duration.
namespace Tessel::Fuzz {

/// The events of an answer.
MRVEventsParser::Events eventsOf(const std::string& multistatus);

/// The event of one resource.
std::shared_ptr<MRVEvent> eventOf(const std::string& calendarData);

} // namespace Tessel::Fuzz
