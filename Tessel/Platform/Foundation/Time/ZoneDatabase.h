#pragma once

#include "Tessel/Platform/Foundation/Time/ZoneRules.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// The time-zone database of the system, /usr/share/zoneinfo. May be used from any thread. Its
/// names are listed at the first call, each zone is read when it is first asked for, and both are
/// kept: what is installed later is seen by processes that start later.
class ZoneDatabase {
public:
    ZoneDatabase() = delete;

    /// The rules of a zone or of a link to one; null when there is none of this name.
    static std::shared_ptr<const ZoneRules> rules(std::string_view name);

    /// Every name, in the order of the alphabet.
    static std::vector<std::string> names();
};

} // namespace Tessel
