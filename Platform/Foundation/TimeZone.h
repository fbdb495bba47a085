#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// A time zone: an identifier and the rules that give its offset from UTC at any moment. Copying
/// is cheap; zones are immutable and may be used from any thread.
class TESSEL_EXPORT TimeZone {
public:
    /// The zone with the identifier "UTC", created once.
    static const TimeZone& UTC();
    /// The zone of this process.
    static TimeZone local();
    /// The platform's zone for a time-zone database identifier such as "Europe/Berlin", or none
    /// when it knows no such zone; an offset like "GMT+5" is none. Known zones are made once and
    /// shared.
    static std::optional<TimeZone> withIdentifier(std::string_view identifier);
    /// A zone with the rules of a VTIMEZONE component (RFC 5545, 3.6.5), given as text from
    /// "BEGIN:VTIMEZONE" to "END:VTIMEZONE"; none when the rules cannot be read or the text is
    /// longer than `maximumVTimeZoneSize`.
    static std::optional<TimeZone> fromVTimeZone(
        std::string_view text, std::string_view identifier);

    /// In bytes. The longest history of a real zone takes a tenth of it.
    static constexpr std::size_t maximumVTimeZoneSize = 64 * 1024;

    const std::string& identifier() const;
    /// The offset from UTC in seconds, east positive, daylight saving included.
    int secondsFromGMT(const Date& date = Date()) const;
    /// The moment at which clocks of this zone show the given local time, written as milliseconds
    /// since 1970 as if it were UTC. A time in a daylight-saving gap moves forward by the gap, a
    /// repeated time is its second occurrence.
    Date dateFromLocalMilliseconds(std::int64_t localMilliseconds) const;

    /// Zones are equal when their identifiers and rules are.
    friend TESSEL_EXPORT bool operator==(const TimeZone& a, const TimeZone& b);

private:
    struct Rules;
    explicit TimeZone(std::shared_ptr<const Rules> rules);

    std::shared_ptr<const Rules> rules_;
};

} // namespace Tessel
