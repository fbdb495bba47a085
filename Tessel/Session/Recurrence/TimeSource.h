#pragma once

#include <cstdint>
#include <optional>

namespace Tessel {

/// Times on the clock of a series, later ones after earlier ones.
class TimeSource {
public:
    virtual ~TimeSource() = default;
    virtual std::optional<std::int64_t> next() = 0;
};

} // namespace Tessel
