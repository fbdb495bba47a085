#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <compare>
#include <cstdint>

namespace Tessel {

/// A point in time, independent of zones and calendars, with millisecond resolution.
class TESSEL_EXPORT Date {
public:
    /// The present moment.
    Date();

    /// As `millisecondsSince1970` counts.
    static constexpr Date fromMillisecondsSince1970(std::int64_t milliseconds)
    {
        return Date(milliseconds);
    }
    /// As `timeIntervalSince1970` counts.
    static constexpr Date fromSecondsSince1970(std::int64_t seconds)
    {
        return Date(seconds * 1000);
    }

    /// Since 1970-01-01T00:00:00Z.
    constexpr std::int64_t millisecondsSince1970() const { return milliseconds_; }
    /// Seconds since 1970-01-01T00:00:00Z, leap seconds not counted.
    constexpr double timeIntervalSince1970() const { return double(milliseconds_) / 1000.0; }

    friend constexpr auto operator<=>(const Date&, const Date&) = default;

private:
    constexpr explicit Date(std::int64_t milliseconds)
        : milliseconds_(milliseconds)
    {
    }

    std::int64_t milliseconds_;
};

} // namespace Tessel
