#pragma once

#include "Tessel/Platform/Foundation/Time/YearlyRule.h"

#include <optional>
#include <string_view>
#include <vector>

namespace Tessel {

/// What a zone does from some time on for ever: one offset, or two that rules alternate.
struct PosixZone {
    int offset; ///< of standard time
    std::vector<YearlyRule> rules; ///< none, or that to standard time and that to daylight saving
};

/// Reads the TZ string at the end of a zone file (RFC 9636, 3.3), "CET-1CEST,M3.5.0,M10.5.0/3";
/// none when it is malformed.
std::optional<PosixZone> readPosixZone(std::string_view text);

} // namespace Tessel
