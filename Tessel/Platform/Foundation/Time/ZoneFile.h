#pragma once

#include "Tessel/Platform/Foundation/Time/ZoneRules.h"

#include <optional>
#include <string_view>

namespace Tessel {

/// Reads a file of the time-zone database (TZif of version 2 or later, RFC 9636), whether it lists
/// the changes to come or leaves them to its rule. None when it is malformed or counts leap
/// seconds.
std::optional<ZoneRules> readZoneFile(std::string_view bytes);

} // namespace Tessel
