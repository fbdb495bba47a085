#include "Tessel/Session/Store/SQLiteAccount.h"

namespace Tessel {

std::int64_t accountNumber(
    SQLite::Database& database, const std::string& user, const std::string& origin)
{
    SQLite::Statement find(database, "SELECT id FROM accounts WHERE user = ? AND origin = ?");
    if (with(find, user, origin).executeStep()) return find.getColumn(0).getInt64();
    SQLite::Statement add(database, "INSERT OR IGNORE INTO accounts (user, origin) VALUES (?, ?)");
    run(add, user, origin);
    with(find, user, origin).executeStep();
    return find.getColumn(0).getInt64();
}

} // namespace Tessel
