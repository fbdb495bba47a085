#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "benchmarks/CannedCalendar.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/PlainSync.h"
#include "benchmarks/ProcessUsage.h"
#include "benchmarks/Table.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

constexpr int rounds = 9;
constexpr std::size_t batchSize = 100;

/// SQLite as its own interface has it.
class PlainDatabase {
public:
    explicit PlainDatabase(const std::string& file) { check(sqlite3_open(file.c_str(), &handle_)); }
    ~PlainDatabase()
    {
        for (auto* statement : statements_)
            sqlite3_finalize(statement);
        sqlite3_close(handle_);
    }
    PlainDatabase(const PlainDatabase&) = delete;
    PlainDatabase& operator=(const PlainDatabase&) = delete;

    void run(const std::string& text)
    {
        check(sqlite3_exec(handle_, text.c_str(), nullptr, nullptr, nullptr));
    }
    sqlite3_stmt* prepare(const char* text)
    {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(handle_, text, -1, &statement, nullptr));
        return statements_.emplace_back(statement);
    }

private:
    static void check(int code)
    {
        if (code != SQLITE_OK) fatalError("SQLite has failed");
    }

    sqlite3* handle_ = nullptr;
    std::vector<sqlite3_stmt*> statements_;
};

void bind(sqlite3_stmt* statement, int column, const std::string& text)
{
    sqlite3_bind_text(statement, column, text.data(), int(text.size()), SQLITE_STATIC);
}

/// What a store's file holds: its tables, and the rows of a calendar.
struct Content {
    struct Row {
        std::string href, tag, text;
        std::int64_t first, last;
    };

    explicit Content(const std::string& file)
    {
        PlainDatabase database(file);
        const auto textOf = [](sqlite3_stmt* row, int column) {
            return std::string(reinterpret_cast<const char*>(sqlite3_column_text(row, column)),
                std::size_t(sqlite3_column_bytes(row, column)));
        };
        auto* made = database.prepare(
            "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite_%'");
        while (sqlite3_step(made) == SQLITE_ROW)
            schema += textOf(made, 0) + ";";
        auto* row = database.prepare("SELECT href, tag, text, first, last FROM resources JOIN texts"
                                     " ON id = resource ORDER BY id");
        while (sqlite3_step(row) == SQLITE_ROW)
            rows.push_back({textOf(row, 0), textOf(row, 1), textOf(row, 2),
                sqlite3_column_int64(row, 3), sqlite3_column_int64(row, 4)});
        if (rows.size() != corpusEvents) fatalError("not every event is held");
    }

    std::string schema;
    std::vector<Row> rows;
};

/// The same rows in the same tables, with the same journal, durability and transactions.
void insertPlainly(const std::string& file, const Content& content)
{
    PlainDatabase database(file);
    database.run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; BEGIN;" + content.schema
        + "INSERT INTO accounts VALUES (1, '', ''); INSERT INTO calendars"
          " VALUES (1, 1, '', '', '', '', '', '', '', 1, '', '', ''); COMMIT");
    auto* resource = database.prepare("INSERT INTO resources (calendar, href, tag, first, last)"
                                      " VALUES (1, ?, ?, ?, ?)");
    auto* text = database.prepare("INSERT INTO texts VALUES (last_insert_rowid(), ?)");
    const auto run = [](sqlite3_stmt* statement) {
        if (sqlite3_step(statement) != SQLITE_DONE) fatalError("SQLite has not taken a row");
        sqlite3_reset(statement);
    };
    for (std::size_t i = 0; i < content.rows.size(); ++i) {
        const auto& row = content.rows[i];
        if (i % batchSize == 0) database.run("BEGIN IMMEDIATE");
        bind(resource, 1, row.href);
        bind(resource, 2, row.tag);
        sqlite3_bind_int64(resource, 3, row.first);
        sqlite3_bind_int64(resource, 4, row.last);
        run(resource);
        bind(text, 1, row.text);
        run(text);
        if ((i + 1) % batchSize == 0) database.run("COMMIT");
    }
}

void syncInto(const std::string& file, Session& session)
{
    const auto store = SQLiteStore::open(file, {.user = "alice", .origin = session.origin()});
    const auto changes = wait(session.sync(store.value(), {}));
    if (!changes || !changes.value().isComplete()) fatalError("the sync was not whole");
}

} // namespace

int main()
{
    const auto server = CannedCalendar::serve(corpusEvents);
    auto folder = (std::filesystem::temp_directory_path() / "tessel-store-XXXXXX").string();
    if (!mkdtemp(folder.data())) return 1;
    const auto session = CannedCalendar::open(server);
    PlainSync plain(server);
    int files = 0;
    const auto newFile = [&] { return folder + "/" + std::to_string(++files); };

    const auto synced = newFile();
    syncInto(synced, *session);
    const Content content(synced);
    constexpr auto most = std::numeric_limits<double>::max();
    double ours = most;
    double inserts = most;
    double syncAndInserts = most;
    for (int i = 0; i < rounds; ++i) {
        ours = std::min(ours, wallOf([&] { syncInto(newFile(), *session); }));
        inserts = std::min(inserts, wallOf([&] { insertPlainly(newFile(), content); }));
        // The rows have to come from somewhere: what brings them to the opponent counts too.
        syncAndInserts = std::min(syncAndInserts, wallOf([&] {
            keep(plain.sync());
            insertPlainly(newFile(), content);
        }));
    }
    printRow("session: into SQLite, wall: plain sync and bare inserts", {ours, syncAndInserts}, "s",
        timesCost(1.5));
    // What is inserted without being brought is no sync: the row shows what the sync adds.
    printRow("session: the same, wall: bare inserts alone", {ours, inserts}, "s", timesCost(2.5));
    std::filesystem::remove_all(folder);
}
