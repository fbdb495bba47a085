#pragma once

#include "Tessel/Session/Outcome/Result.h"
#include "Tessel/Session/Store/Batch.h"

#include <vector>

namespace Tessel {

/// The step that gives up one of the changes that wait: what was made on it is made on what was
/// there before, and what was made on an event that it was to create goes too. Both parts of a
/// series that was divided go together; `conflict` for one that holds its days alone by now.
Result<Batch> without(const std::vector<PendingChange>& pending, const PendingChange& change);

/// The change as it is sent again, made on what the server holds by now.
PendingChange again(PendingChange change);

} // namespace Tessel
