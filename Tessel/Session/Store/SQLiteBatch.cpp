#include "Tessel/Session/Store/SQLiteBatch.h"

#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Store/StoreFailures.h"

#include <algorithm>

namespace Tessel {

namespace {

struct HeldCalendar {
    std::int64_t number = 0;
    SyncMark mark;
};

HeldCalendar findCalendar(SQLite::Database& database, std::int64_t account, const std::string& href)
{
    SQLite::Statement row(
        database, "SELECT id, cTag, syncToken FROM calendars WHERE account = ? AND href = ?");
    if (!with(row, account, href).executeStep()) throw StepRefused {calendarNotHeld(href)};
    return {row.getColumn(0).getInt64(), {textOf(row.getColumn(1)), textOf(row.getColumn(2))}};
}

void applyRemoved(SQLite::Database& database, std::int64_t calendar, const Batch& batch)
{
    if (batch.removed.empty()) return;
    SQLite::Statement remove(database, "DELETE FROM resources WHERE calendar = ? AND href = ?");
    SQLite::Statement forget(database, "DELETE FROM failures WHERE calendar = ? AND href = ?");
    for (const auto& href : batch.removed) {
        run(remove, calendar, href);
        run(forget, calendar, href);
    }
}

void checkExpected(SQLite::Database& database, std::int64_t account, const Batch& batch)
{
    if (batch.expected.empty()) return;
    SQLite::Statement row(database,
        "SELECT tag FROM resources JOIN calendars ON calendars.id = calendar"
        " WHERE account = ? AND calendars.href = ? AND resources.href = ?");
    for (const auto& [href, tag] : batch.expected) {
        const bool isHeld = with(row, account, batch.calendar, href).executeStep();
        if ((isHeld ? textOf(row.getColumn(0)) : std::string()) != tag)
            throw StepRefused {resourceHasChanged(href)};
    }
}

bool holdsFailures(SQLite::Database& database, std::int64_t calendar)
{
    SQLite::Statement failures(database, "SELECT 1 FROM failures WHERE calendar = ? LIMIT 1");
    return with(failures, calendar).executeStep();
}

void applyUpserts(SQLite::Database& database, std::int64_t calendar, const Batch& batch,
    const std::vector<Bounds>& places)
{
    if (batch.upserts.empty()) return;
    const bool hasFailures = holdsFailures(database, calendar);
    SQLite::Statement add(database,
        "INSERT OR IGNORE INTO resources (calendar, href, tag, first, last)"
        " VALUES (?, ?, ?, ?, ?)");
    SQLite::Statement addText(database, "INSERT INTO texts (resource, text) VALUES (?, ?)");
    SQLite::Statement change(database,
        "UPDATE resources SET tag = ?, first = ?, last = ? WHERE calendar = ? AND href = ?");
    SQLite::Statement changeText(database,
        "UPDATE texts SET text = ? WHERE resource ="
        " (SELECT id FROM resources WHERE calendar = ? AND href = ?)");
    SQLite::Statement forget(database, "DELETE FROM failures WHERE calendar = ? AND href = ?");
    auto place = places.begin();
    for (const auto& [href, tag, text] : batch.upserts) {
        const auto& [first, last] = *place++;
        if (with(add, calendar, href, tag, first, last).exec() == 1) {
            run(addText, std::int64_t(database.getLastInsertRowid()), text);
        } else {
            run(change, tag, first, last, calendar, href);
            run(changeText, text, calendar, href);
        }
        if (hasFailures) run(forget, calendar, href);
    }
}

void applyCalendar(SQLite::Database& database, std::int64_t account, const Batch& batch,
    const std::vector<Bounds>& places)
{
    const auto calendar = findCalendar(database, account, batch.calendar);
    if (batch.basedOn && *batch.basedOn != calendar.mark)
        throw StepRefused {markHasChanged(batch.calendar)};
    applyRemoved(database, calendar.number, batch);
    applyUpserts(database, calendar.number, batch, places);
    if (!batch.failed.empty()) {
        SQLite::Statement fail(database, "INSERT OR REPLACE INTO failures VALUES (?, ?, ?)");
        for (const auto& [href, reason] : batch.failed)
            run(fail, calendar.number, href, reason);
    }
    if (batch.mark) {
        SQLite::Statement mark(
            database, "UPDATE calendars SET cTag = ?, syncToken = ? WHERE id = ?");
        run(mark, batch.mark->cTag, batch.mark->syncToken, calendar.number);
    }
}

void putChange(SQLite::Database& database, std::int64_t account, const PendingChange& change)
{
    SQLite::Statement put(database,
        change.revision == 0
            ? "INSERT OR IGNORE INTO outbox (account, id, revision, kind, state, calendar, href,"
              " destination, uid, baseTag, baseText, content, attempts, notBefore, reason, mine,"
              " theirs) VALUES (?1, ?2, ?3 + 1, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14,"
              " ?15, ?16, ?17)"
            : "UPDATE outbox SET revision = ?3 + 1, kind = ?4, state = ?5, calendar = ?6,"
              " href = ?7, destination = ?8, uid = ?9, baseTag = ?10, baseText = ?11,"
              " content = ?12, attempts = ?13, notBefore = ?14, reason = ?15, mine = ?16,"
              " theirs = ?17 WHERE account = ?1 AND id = ?2 AND revision = ?3");
    const auto mine = change.texts ? std::optional(change.texts->mine) : std::nullopt;
    const auto theirs = change.texts ? std::optional(change.texts->theirs) : std::nullopt;
    with(put, account, change.id, change.revision, std::int64_t(change.kind),
        std::int64_t(change.state), change.calendar, change.href, change.destination, change.uid,
        change.baseTag, change.baseText, change.content, std::int64_t(change.attempts),
        change.notBefore, change.reason, mine, theirs);
    if (put.exec() != 1) throw StepRefused {changeHasChanged(change.id)};
}

void settle(SQLite::Database& database, std::int64_t account, const SettledChange& change)
{
    SQLite::Statement remove(
        database, "DELETE FROM outbox WHERE account = ? AND id = ? AND revision = ?");
    if (with(remove, account, change.id, change.revision).exec() != 1)
        throw StepRefused {changeHasChanged(change.id)};
}

bool touchesOutbox(const Batch& batch)
{
    return !batch.pending.empty() || !batch.settled.empty();
}

bool touchesCalendar(const Batch& batch)
{
    return !batch.calendar.empty() || !batch.upserts.empty() || !batch.removed.empty()
        || !batch.failed.empty();
}

} // namespace

void applyBatches(SQLite::Database& database, std::int64_t account, std::span<const Batch> batches)
{
    // Texts are read before the file is locked for others.
    std::vector<std::vector<Bounds>> places(batches.size());
    for (std::size_t i = 0; i < batches.size(); ++i)
        for (const auto& resource : batches[i].upserts)
            places[i].push_back(bounds(resource.text));

    // What the outbox holds is nowhere else, so it has to outlast a power failure; what was synced
    // can be brought again, and a mark is never written before what it announces.
    const bool isOnlyCopy = std::any_of(batches.begin(), batches.end(), touchesOutbox);
    database.exec(isOnlyCopy ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    for (const auto& batch : batches)
        checkExpected(database, account, batch);
    for (std::size_t i = 0; i < batches.size(); ++i) {
        const auto& batch = batches[i];
        if (touchesCalendar(batch)) applyCalendar(database, account, batch, places[i]);
        for (const auto& change : batch.pending)
            putChange(database, account, change);
        for (const auto& change : batch.settled)
            settle(database, account, change);
    }
    transaction.commit();
}

std::vector<PendingChange> readOutbox(SQLite::Database& database, std::int64_t account)
{
    SQLite::Statement row(database,
        "SELECT id, revision, position, kind, state, calendar, href, destination, uid, baseTag, "
        "baseText,"
        " content, attempts, notBefore, reason, mine, theirs FROM outbox WHERE account = ?"
        " ORDER BY position");
    with(row, account);
    std::vector<PendingChange> changes;
    while (row.executeStep()) {
        int column = 0;
        const auto text = [&] { return textOf(row.getColumn(column++)); };
        const auto number = [&] { return row.getColumn(column++).getInt64(); };
        PendingChange change {.id = text(), .revision = number(), .number = number()};
        change.kind = ChangeKind(number());
        change.state = ChangeState(number());
        for (auto* field : {&change.calendar, &change.href, &change.destination, &change.uid,
                 &change.baseTag, &change.baseText, &change.content})
            *field = text();
        change.attempts = int(number());
        change.notBefore = number();
        change.reason = text();
        if (!row.getColumn(column).isNull()) {
            change.texts = BothTexts {.mine = text(), .theirs = text()};
        }
        changes.push_back(std::move(change));
    }
    return changes;
}

} // namespace Tessel
