#pragma once

#include <cstdint>
#include <limits>

namespace Tessel {

/// A span of time outside of which a calendar object has no instance, in milliseconds since 1970.
struct Bounds {
    std::int64_t first; ///< the earliest moment
    std::int64_t last; ///< before `first` where there is no instance at all

    /// Of what has no instance.
    static constexpr Bounds never()
    {
        return {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
    }
    /// Of what may be at any time.
    static constexpr Bounds always()
    {
        return {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    }

    /// Whether they may have a moment in common.
    constexpr bool meets(const Bounds& range) const
    {
        return first < range.last && last > range.first;
    }

    friend bool operator==(const Bounds&, const Bounds&) = default;
};

} // namespace Tessel
