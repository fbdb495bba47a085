#pragma once

#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/icalendar/CGICalendarComponent.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

// VTIMEZONE components (RFC 5545, 3.6.5) both ways: the zones of those that are read, and those
// that are written for a zone.

/// The name of a zone as a TZID is looked up by: without quotes, and without the carriage returns
/// that the engine keeps where a line was folded.
std::string plainTZID(std::string_view text);

/// The zone that a definition with this plain TZID stands for: that of the database with its name,
/// whatever the component says; else that of a Windows zone name; else its own rules; else that of
/// the database whose name it ends in.
std::optional<TimeZone> zoneDefinedBy(
    const CGICalendarComponent& definition, const std::string& tzid);

/// What the zone bundle holds under the last component of the zone's identifier, read at every
/// call. It may be the definition of another zone.
std::vector<std::shared_ptr<CGICalendarComponent>> bundledDefinitions(const TimeZone& zone);

/// The one definition that has the zone's own identifier: that of the bundle or, where another zone
/// has its file, one made of the time-zone database. Null for a zone that neither knows.
std::shared_ptr<CGICalendarComponent> ownDefinition(const TimeZone& zone);

} // namespace Tessel
