#pragma once

#include "Tessel/Platform/Foundation/Time/TimeZone.h"

#include <cstdint>

namespace Tessel {

inline constexpr std::int64_t millisecondsOfDay = 86'400'000;

/// When a clock of the zone first shows a time, both in milliseconds since 1970, the clock's as if
/// it were UTC. A time that is skipped counts by the offset before it (RFC 5545, 3.3.5).
std::int64_t momentOf(const TimeZone& zone, std::int64_t local);
/// What the zone's clocks show.
std::int64_t localOf(const TimeZone& zone, std::int64_t moment);

} // namespace Tessel
