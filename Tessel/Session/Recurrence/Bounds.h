#pragma once

#include <cstdint>
#include <limits>

namespace Tessel {

/// A span of time outside of which a calendar object has no instance, in milliseconds since 1970.
struct Bounds {
    std::int64_t first;
    std::int64_t last; ///< before `first` where there is no instance at all

    static constexpr Bounds never()
    {
        return {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
    }
    static constexpr Bounds always()
    {
        return {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    }

    constexpr bool meets(const Bounds& range) const
    {
        return first < range.last && last > range.first;
    }

    friend bool operator==(const Bounds&, const Bounds&) = default;
};

} // namespace Tessel
