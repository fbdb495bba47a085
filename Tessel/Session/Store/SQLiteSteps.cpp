#include "Tessel/Session/Store/SQLiteSteps.h"

#include <sqlite3.h>

namespace Tessel {

Failure sqliteFailure(const SQLite::Exception& error, const std::string& file)
{
    const auto reason = [&](std::string_view what) {
        return Failure {.kind = FailureKind::storage,
            .reason = "The store " + file + std::string(what) + " (" + error.what() + ")"};
    };
    switch (error.getErrorCode()) {
    case SQLITE_FULL:
        return reason(" cannot grow, the disk is full. Make room and try again.");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return reason(" is in use by another process, which did not finish in time. Try again.");
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return reason(" cannot be written. Give its user the right to write the file and its "
                      "folder.");
    case SQLITE_CANTOPEN:
        return reason(" cannot be opened. Its folder has to be there, and its user's to write.");
    case SQLITE_NOTADB:
        return reason(" is no SQLite file. Move it away: a new one is made then.");
    case SQLITE_CORRUPT:
        return reason(" is damaged. Move it away and sync again; changes that waited in it can be "
                      "read from the file that was moved.");
    case SQLITE_IOERR:
        return reason(" cannot be read or written. Check that the disk is in order and has room, "
                      "then try again.");
    default:
        return reason(" failed.");
    }
}

} // namespace Tessel
