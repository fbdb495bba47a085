#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// A length of time (RFC 5545, 3.3.6): days go by the clock and may have 23 or 25 hours, the rest
/// is exact.
struct TESSEL_EXPORT EventDuration {
    std::chrono::days days {}; ///< weeks included; of the same sign as `time`
    std::chrono::seconds time {}; ///< what is not whole days

    /// Such as "-PT15M", "P1DT2H" or "P2W"; none for anything else, or beyond 10,000 years.
    static std::optional<EventDuration> read(std::string_view value);
    std::string value() const; ///< as it is written
    /// Days counted as 24 hours.
    std::chrono::seconds total() const { return days + time; }

    friend bool operator==(const EventDuration&, const EventDuration&) = default;
};

} // namespace Tessel
