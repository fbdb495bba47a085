#pragma once

#include "Tessel/Session/Store/Batch.h"
#include "Tessel/Session/Store/SQLiteSteps.h"

#include <span>

namespace Tessel {

/// Does all that the batches say in one transaction. Throws `SQLite::Exception` or `StepRefused`;
/// nothing is done then.
void applyBatches(SQLite::Database& database, std::int64_t account, std::span<const Batch> batches);

std::vector<PendingChange> readOutbox(SQLite::Database& database, std::int64_t account);

} // namespace Tessel
