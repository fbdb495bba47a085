#pragma once

#include "Tessel/Session/Store/SQLiteSteps.h"

namespace Tessel {

/// The number of an account in a store's file, which it is given where it has none.
std::int64_t accountNumber(
    SQLite::Database& database, const std::string& user, const std::string& origin);

} // namespace Tessel
