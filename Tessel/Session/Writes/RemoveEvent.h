#pragma once

#include "Tessel/Session/Writes/ResourceAccess.h"

namespace Tessel {

/// Removes a resource, guarded by its tag: `changed`, with the server's text, where somebody else
/// has written it meanwhile. What is not there any more is removed. A lost answer is resolved by
/// looking.
void removeEvent(const ResourceAccess& access, const Resource& resource, ResourceAccess::Done done);

} // namespace Tessel
