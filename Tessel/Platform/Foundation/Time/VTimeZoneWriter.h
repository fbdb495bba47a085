#pragma once

#include "Tessel/Platform/Foundation/Time/ZoneRules.h"

#include <string>
#include <string_view>

namespace Tessel {

/// A VTIMEZONE (RFC 5545, 3.6.5) of a zone of the time-zone database, lines ended by CRLF: from
/// 1970 on the changes that came one by one, then the rules that hold for ever. What held before
/// 1970 is told as if it had been as on 1 January 1970. Names of the offsets are left out.
std::string writeVTimeZone(std::string_view identifier, const ZoneRules& rules);

} // namespace Tessel
