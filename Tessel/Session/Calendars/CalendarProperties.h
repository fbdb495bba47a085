#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// What a host sets of a calendar; what is absent stays as it is, or is left to the server. A value
/// that is not as it says here is refused as `malformed` before anything is sent.
struct CalendarProperties {
    std::optional<std::string> displayName = {}; ///< what people call it
    std::optional<std::string> description = {}; ///< calendar-description (RFC 4791, 5.2.1)
    std::optional<std::string> color = {}; ///< "#RRGGBB" or "#RRGGBBAA"
    std::optional<std::string> order = {}; ///< a whole number; smaller comes first
    /// The text of a calendar with one VTIMEZONE (RFC 4791, 5.2.2), that VTIMEZONE alone, as
    /// `TimeZone::vTimeZone` gives it, or the name of a zone that `TimeZone` knows.
    std::optional<std::string> timeZone = {};
    /// Only for a new one: such as "VEVENT"; events alone when it is absent.
    std::optional<std::vector<std::string>> components = {};
};

} // namespace Tessel
