#include "Tessel/Session/Store/SQLiteFile.h"

#include "Tessel/Session/Store/SQLiteTakeover.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>
#include <thread>

namespace Tessel {

namespace {

namespace fs = std::filesystem;

// "Tesl", and the version of the schema; 1 is that of the command-line host's own store, which has
// no application's number.
constexpr std::int64_t applicationNumber = 0x5465736C;
constexpr std::int64_t schemaVersion = 2;

constexpr auto schema = R"sql(
    CREATE TABLE accounts (
        id INTEGER PRIMARY KEY, user TEXT NOT NULL, origin TEXT NOT NULL, UNIQUE (user, origin));
    CREATE TABLE calendars (
        id INTEGER PRIMARY KEY, account INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
        href TEXT NOT NULL, displayName TEXT NOT NULL, description TEXT, color TEXT, ordering TEXT,
        timeZone TEXT, components TEXT NOT NULL, isWritable INTEGER NOT NULL, missing TEXT NOT NULL,
        cTag TEXT NOT NULL, syncToken TEXT NOT NULL, UNIQUE (account, href));
    CREATE TABLE resources (
        id INTEGER PRIMARY KEY, calendar INTEGER NOT NULL REFERENCES calendars ON DELETE CASCADE,
        href TEXT NOT NULL, tag TEXT NOT NULL, first INTEGER NOT NULL, last INTEGER NOT NULL,
        UNIQUE (calendar, href));
    CREATE INDEX agenda ON resources (calendar, last, first);
    CREATE TABLE texts (
        resource INTEGER PRIMARY KEY REFERENCES resources ON DELETE CASCADE, text TEXT NOT NULL);
    CREATE TABLE failures (
        calendar INTEGER NOT NULL REFERENCES calendars ON DELETE CASCADE, href TEXT NOT NULL,
        reason TEXT NOT NULL, PRIMARY KEY (calendar, href)) WITHOUT ROWID;
    CREATE TABLE outbox (
        position INTEGER PRIMARY KEY AUTOINCREMENT,
        account INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE, id TEXT NOT NULL,
        revision INTEGER NOT NULL, kind INTEGER NOT NULL, state INTEGER NOT NULL,
        calendar TEXT NOT NULL, href TEXT NOT NULL, destination TEXT NOT NULL, uid TEXT NOT NULL,
        baseTag TEXT NOT NULL, baseText TEXT NOT NULL, content TEXT NOT NULL,
        attempts INTEGER NOT NULL, notBefore INTEGER NOT NULL, reason TEXT NOT NULL,
        mine TEXT, theirs TEXT, UNIQUE (account, id));
)sql";

[[noreturn]] void refuse(const fs::path& file, std::string_view what)
{
    throw StepRefused {
        {.kind = FailureKind::storage, .reason = "The store " + file.string() + std::string(what)}};
}

void makeFolder(const fs::path& folder)
{
    if (folder.empty() || fs::exists(folder)) return;
    makeFolder(folder.parent_path());
    ::mkdir(folder.c_str(), 0700); // where it fails, so does what follows
}

/// SQLite would make the file as wide as the umask lets it. Its log and index take the file's mode.
void makeFile(const fs::path& file)
{
    // Closing a descriptor ends all locks that this process has on the file, also those of a store
    // that another thread opens at this moment.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const int descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor >= 0) ::close(descriptor);
}

std::int64_t number(SQLite::Database& database, const char* query)
{
    return database.execAndGet(query).getInt64();
}

/// SQLite takes a file that is shorter than its smallest page for an empty one, and would write
/// over it.
void checkSize(const fs::path& file)
{
    constexpr std::uintmax_t smallestPage = 512;
    std::error_code error;
    const auto size = fs::file_size(file, error);
    if (!error && size > 0 && size < smallestPage)
        refuse(file, " is no SQLite file. Move it away: a new one is made then.");
}

enum class Origins { empty, ours, predecessor };

Origins recognise(SQLite::Database& database, const fs::path& file)
{
    const auto application = number(database, "PRAGMA application_id");
    const auto version = number(database, "PRAGMA user_version");
    if (application == applicationNumber) {
        if (version == schemaVersion) return Origins::ours;
        refuse(file,
            version > schemaVersion
                ? " was written by a newer version of this program. Update this one, or move "
                  "the file away."
                : " has a schema that this program never wrote. Move it away: a new one is "
                  "made then.");
    }
    if (application == 0 && number(database, "SELECT count(*) FROM sqlite_master") == 0)
        return Origins::empty;
    if (application == 0 && version == 1 && isPredecessor(database)) return Origins::predecessor;
    refuse(file, " belongs to another program. Move it away: a new one is made then.");
}

/// Of one state of the file: another process may be making its schema.
Origins look(SQLite::Database& database, const fs::path& file)
{
    const SQLite::Transaction transaction(database, SQLite::TransactionBehavior::DEFERRED);
    return recognise(database, file);
}

/// SQLite does not wait for other processes where it changes the kind of journal.
void useLog(SQLite::Database& database, std::chrono::milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (database.tryExec("PRAGMA journal_mode = WAL") == SQLITE_BUSY) {
        if (std::chrono::steady_clock::now() > end) throw SQLite::Exception(database.getHandle());
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void makeSchema(SQLite::Database& database, const fs::path& file)
{
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    const auto origins = recognise(database, file); // another process may have been faster
    if (origins == Origins::ours) return;
    database.exec(schema);
    if (origins == Origins::predecessor) takeOver(database);
    database.exec("PRAGMA application_id = " + std::to_string(applicationNumber));
    database.exec("PRAGMA user_version = " + std::to_string(schemaVersion));
    transaction.commit();
}

} // namespace

SQLite::Database openStoreFile(const fs::path& file, std::chrono::milliseconds patience)
{
    makeFolder(file.parent_path());
    makeFile(file);
    checkSize(file);
    SQLite::Database database(file, SQLite::OPEN_READWRITE, int(patience.count()));
    auto* handle = database.getHandle();
    // Until it is known whose file this is, not even its log is written back.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    const auto origins = look(database, file);
    if (sqlite3_db_readonly(handle, "main") == 1)
        refuse(file, " cannot be written. Give its user the right to write it.");
    sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    useLog(database, patience);
    database.exec("PRAGMA foreign_keys = ON; PRAGMA synchronous = NORMAL");
    if (origins != Origins::ours) makeSchema(database, file);
    return database;
}

} // namespace Tessel
