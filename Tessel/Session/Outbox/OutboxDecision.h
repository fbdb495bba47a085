#pragma once

#include "Tessel/Session/Store/Batch.h"

#include <vector>

namespace Tessel {

/// The step that gives up one of the changes that wait: what was made on it is made on what was
/// there before, and what was made on an event that it was to create goes too.
Batch without(std::vector<PendingChange>& pending, const PendingChange& change);

/// The change as it is sent again, made on what the server holds by now.
PendingChange again(PendingChange change);

} // namespace Tessel
