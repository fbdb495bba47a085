#pragma once

#include <optional>
#include <string>

namespace Tessel {

/// A participant of an event: an ATTENDEE (RFC 5545, 3.8.4.1) or the ORGANIZER (3.8.4.3).
struct MRVAttendee {
    std::string email; ///< the address without "mailto:"; read from the EMAIL parameter
    std::string role; ///< ROLE parameter, or "organizer"
    std::optional<std::string> type = {}; ///< CUTYPE parameter
    std::optional<std::string> participationStatus = {}; ///< PARTSTAT parameter
    std::optional<std::string> scheduleStatus = {}; ///< SCHEDULE-STATUS parameter (RFC 6638, 7.3)
    std::string cn; ///< CN parameter, the display name
    std::string href; ///< the property's value as written
    bool isOrganizer = false; ///< read from ORGANIZER, not ATTENDEE
};

} // namespace Tessel
