#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

namespace Tessel {

/// Whether the file is the store that the `tessel` command wrote before it used sessions.
bool isPredecessor(SQLite::Database& database);

/// Brings calendars and texts of the predecessor's tables into the schema's, within the caller's
/// transaction, and drops those tables. Its marks are left behind: it counted a calendar as synced
/// although a series with changed instances, or an event that it could not read, was not held.
void takeOver(SQLite::Database& database);

} // namespace Tessel
