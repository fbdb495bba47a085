#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <cstdint>
#include <limits>
#include <string_view>

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

/// The bounds of a calendar object's text, a day wider on each side than its instances, so that
/// they hold whatever zone floating times are read in and however zones are changed. `always` for
/// what cannot be read; `never` for what has no dates, such as a VTODO without any.
TESSEL_EXPORT Bounds bounds(std::string_view text);

} // namespace Tessel
