#pragma once

#include "Tessel/Session/Writes/ResourceAccess.h"

namespace Tessel {

/// Moves a resource into another calendar under its own name (MOVE, RFC 4918, 9.9), and gives it as
/// it is there. Where the server has no MOVE it is written there and then removed here, both
/// guarded by tags. A lost answer is resolved by looking.
void moveEvent(const ResourceAccess& access, const Resource& resource, const std::string& calendar,
    std::function<void(Result<Resource>)> done);

/// What has arrived where `moveEvent` has moved it, however the server spells that.
void readMoved(
    const ResourceAccess& access, const std::string& destination, const ResourceAccess::Read& next);

/// Where `moveEvent` moves what is at the place.
std::string placeOfMoved(const std::string& place, const std::string& calendar);

} // namespace Tessel
