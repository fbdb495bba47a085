#include "Tessel/Session/Store/SQLiteTakeover.h"

#include "Tessel/Platform/Foundation/Web/Origin.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Store/SQLiteAccount.h"

namespace Tessel {

namespace {

/// Its accounts are named "user@server", with the server as it was typed.
std::string userOf(const std::string& identifier, std::string_view server)
{
    for (const auto prefix : {"", "https://"}) {
        if (!server.starts_with(prefix)) continue;
        const auto ending
            = std::string(1, '@').append(server.substr(std::string_view(prefix).size()));
        if (identifier.ends_with(ending))
            return identifier.substr(0, identifier.size() - ending.size());
    }
    return identifier;
}

std::string componentsOf(std::int64_t bits)
{
    std::string components;
    for (const auto& [bit, name] : {std::pair(2, "VEVENT"), {4, "VTODO"}, {8, "VJOURNAL"}})
        if (bits & bit) components.append(components.empty() ? "" : "\n").append(name);
    return components;
}

void takeEvents(SQLite::Database& database, const std::string& account, const std::string& calendar,
    std::int64_t into)
{
    SQLite::Statement event(database,
        "SELECT href, eTag, data FROM event WHERE account = ? AND calendar = ? AND data <> ''");
    SQLite::Statement addResource(database,
        "INSERT INTO resources (calendar, href, tag, first, last) VALUES (?, ?, ?, ?, ?)");
    SQLite::Statement addText(database, "INSERT INTO texts (resource, text) VALUES (?, ?)");
    with(event, account, calendar);
    while (event.executeStep()) {
        const auto text = textOf(event.getColumn(2));
        const auto [first, last] = bounds(text);
        run(addResource, into, textOf(event.getColumn(0)), textOf(event.getColumn(1)), first, last);
        run(addText, std::int64_t(database.getLastInsertRowid()), text);
    }
}

} // namespace

bool isPredecessor(SQLite::Database& database)
{
    constexpr auto tables = "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN "
                            "('account', 'address', 'calendar', 'event', 'notification')";
    return database.execAndGet(tables).getInt64() == 5;
}

void takeOver(SQLite::Database& database)
{
    SQLite::Statement row(database,
        "SELECT account.identifier, server, href, name, description, color, ordering, components"
        " FROM calendar JOIN account ON calendar.account = account.identifier"
        " ORDER BY calendar.rowid");
    SQLite::Statement add(database,
        "INSERT INTO calendars (account, href, displayName, description, color, ordering,"
        " components, isWritable, missing, cTag, syncToken)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, 1, '', '', '') ON CONFLICT DO NOTHING");
    while (row.executeStep()) {
        const auto identifier = textOf(row.getColumn(0));
        const auto server = textOf(row.getColumn(1));
        const auto origin = Origin::ofServer(server);
        if (!origin) continue;
        const auto account = accountNumber(database, userOf(identifier, server), origin->text());
        const auto href = textOf(row.getColumn(2));
        run(add, account, href, textOf(row.getColumn(3)), optionalTextOf(row.getColumn(4)),
            optionalTextOf(row.getColumn(5)), optionalTextOf(row.getColumn(6)),
            componentsOf(row.getColumn(7).getInt64()));
        // Two of its names may stand for one account: "host" and "https://host".
        if (database.getChanges() > 0)
            takeEvents(database, identifier, href, database.getLastInsertRowid());
    }
    row.reset();
    database.exec("DROP TABLE event; DROP TABLE calendar");
}

} // namespace Tessel
