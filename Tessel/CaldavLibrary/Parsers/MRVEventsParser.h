#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"
#include "Tessel/CaldavLibrary/Parsers/MRVTimeZoneParser.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Reads the events out of an answer with calendar data (RFC 4791, 7.8 and 7.9).
///
/// What a host may not expect:
/// - A resource with more than one VEVENT (a recurring event with changed instances) brings no
///   event; nor does one of more than `Limits::calendarNodes` properties and parameters.
/// - `scheduleTag`, `occurrences` are never filled.
/// - An event without DTEND ends at the moment of reading; DURATION is not read. The same holds for
///   every date that is missing or cannot be read.
/// - DTSTART and DTEND with parameters are read only through VALUE=DATE or TZID.
/// - A TZID that the resource does not define gives no zone, and the time is read as UTC.
///
/// Programming errors that stop the process: a VEVENT without UID; an alarm duration that is none.
class TESSEL_EXPORT MRVEventsParser final : public MRVParser {
public:
    using MRVParser::MRVParser;
    using Events = std::vector<std::shared_ptr<MRVEvent>>; ///< in document order

    std::shared_ptr<MRVCalendar> calendar; ///< that every event is given
    /// The zones that the resource read last defines; absent when it defines none.
    std::optional<MRVTimeZoneParser::Zones> timeZones;

    /// The events in document order; absent when there are none.
    std::optional<Events> parseEvents();

    /// The event of one resource's text, read as one of an answer is; null unless the text holds
    /// exactly one VEVENT.
    static std::shared_ptr<MRVEvent> event(std::string calendarData, std::string eTag,
        std::string href, std::shared_ptr<MRVCalendar> calendar = nullptr);
};

} // namespace Tessel
