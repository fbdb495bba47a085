#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/Date.h"

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
    /// The zone of an identifier of the time-zone database, such as "Europe/Berlin" or
    /// "Asia/Calcutta", with the rules of the system's copy of it (/usr/share/zoneinfo); none when
    /// that has no such zone. An offset like "GMT+5", an abbreviation like "BST" and a name in
    /// another case are none. Zones are read once and shared: an update of the system's copy counts
    /// from the next start of the process.
    static std::optional<TimeZone> withIdentifier(std::string_view identifier);
    /// The zone for a Windows zone name such as "W. Europe Standard Time", or none. Its identifier
    /// is that of the time-zone database.
    static std::optional<TimeZone> withWindowsName(std::string_view name);
    /// A zone with the rules of a VTIMEZONE component (RFC 5545, 3.6.5), given as text from
    /// "BEGIN:VTIMEZONE" to "END:VTIMEZONE"; none when an observance cannot be read or there is
    /// more than any real zone has: 64 KiB of text, 256 observances, 100 recurrences or 8 at the
    /// same time. An observance is read by its recurrences and its dates both; recurrences are
    /// yearly, by month, day of the month and weekday, and go on for ever where they have no end.
    static std::optional<TimeZone> fromVTimeZone(
        std::string_view text, std::string_view identifier);

    /// Such as "Europe/Berlin", or as given to `fromVTimeZone`.
    const std::string& identifier() const;
    /// The offset from UTC in seconds, east positive, daylight saving included.
    int secondsFromGMT(const Date& date = Date()) const;
    /// The moment at which clocks of this zone show the given local time, written as milliseconds
    /// since 1970 as if it were UTC. A time in a daylight-saving gap moves forward by the gap, a
    /// repeated time is its second occurrence (`instances` of a session takes the first, as
    /// RFC 5545, 3.3.5 asks).
    Date dateFromLocalMilliseconds(std::int64_t localMilliseconds) const;

    /// The zone as a VTIMEZONE component (RFC 5545, 3.6.5), lines ended by CR LF: what its clocks
    /// show from 1970 on. Its TZID is `tzid`, or the identifier without one.
    std::string vTimeZone(std::string_view tzid = {}) const;

    /// Zones are equal when their identifiers and rules are.
    friend TESSEL_EXPORT bool operator==(const TimeZone& a, const TimeZone& b);

private:
    struct Rules;
    explicit TimeZone(std::shared_ptr<const Rules> rules);

    std::shared_ptr<const Rules> rules_;
};

} // namespace Tessel
