#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/Date.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// When something of an event is: a day, a time on the clock of whoever looks, a time in a zone, or
/// a moment in UTC (RFC 5545, 3.3.4 and 3.3.5). To the second, in the years 0 to 9999.
struct TESSEL_EXPORT EventMoment {
    /// What says when it is.
    enum class Kind { day, floating, zoned, utc };

    Kind kind = Kind::day; ///< what says when it is
    /// What clocks show, in UTC for `utc`; midnight for a day.
    std::chrono::local_seconds local = {};
    /// With `zoned`: its TZID, a name of the time-zone database where it is yours to choose.
    std::string zone = {};

    ///@{
    /// A moment of that kind.
    static EventMoment day(std::chrono::local_days day);
    static EventMoment floating(std::chrono::local_seconds local);
    static EventMoment zoned(std::chrono::local_seconds local, std::string zone);
    static EventMoment utc(std::chrono::sys_seconds time);
    static EventMoment utc(const Date& date);
    ///@}

    bool isDay() const { return kind == Kind::day; } ///< `kind` is `day`

    /// As the value of a property: "20240131", "20240131T093000", "20240131T083000Z".
    std::string value() const;
    /// Reads such a value; `zone` is that of a TZID parameter, empty without one. None when the
    /// value is none, names a day that does not exist or an hour beyond 23; second 60 is 59.
    static std::optional<EventMoment> read(std::string_view value, std::string zone = {});

    friend bool operator==(const EventMoment&, const EventMoment&) = default;
};

} // namespace Tessel
