#include "Tessel/Session/Store/SQLiteStore.h"

#include "Tessel/Session/Store/SQLiteAccount.h"
#include "Tessel/Session/Store/SQLiteBatch.h"
#include "Tessel/Session/Store/SQLiteFile.h"

#include <mutex>

namespace Tessel {

namespace {

/// Of texts that a visit holds at a time.
constexpr std::size_t visitedBytes = 1 << 20;

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const auto& line : lines)
        text += (text.empty() ? "" : "\n") + line;
    return text;
}

std::vector<std::string> split(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

constexpr auto ofCalendar = " WHERE calendar = (SELECT id FROM calendars WHERE account = ?1 AND"
                            " href = ?2)";

} // namespace

struct SQLiteStore::Content {
    std::string file;
    SQLite::Database database;
    std::int64_t account = 0;
    std::mutex mutex;

    /// One step at a time on the connection; what it throws becomes a failure.
    template <class Work> auto step(Work&& work) -> decltype(work())
    {
        const std::lock_guard lock(mutex);
        return guarded(file, work);
    }

    SQLite::Statement ofResources(const std::string& columns, const std::string& more = {}) const
    {
        return {database, "SELECT " + columns + " FROM resources" + ofCalendar + more};
    }

    Result<std::vector<Resource>> next(std::span<const std::int64_t>& numbers);
    Outcome visit(std::vector<std::int64_t> numbers, const Visitor& visitor);
};

/// The first of these resources, which are taken off.
Result<std::vector<Resource>> SQLiteStore::Content::next(std::span<const std::int64_t>& numbers)
{
    return step([&]() -> Result<std::vector<Resource>> {
        std::vector<Resource> resources;
        SQLite::Statement row(database,
            "SELECT href, tag, text FROM resources JOIN texts ON id = resource WHERE id = ?");
        for (std::size_t bytes = 0; !numbers.empty() && bytes < visitedBytes;
             numbers = numbers.subspan(1)) {
            if (!with(row, numbers.front()).executeStep()) continue;
            resources.push_back(
                {textOf(row.getColumn(0)), textOf(row.getColumn(1)), textOf(row.getColumn(2))});
            bytes += resources.back().text.size();
        }
        return resources;
    });
}

Outcome SQLiteStore::Content::visit(std::vector<std::int64_t> numbers, const Visitor& visitor)
{
    for (std::span<const std::int64_t> rest(numbers); !rest.empty();) {
        const auto resources = next(rest);
        if (!resources) return resources.failure();
        for (const auto& resource : resources.value())
            if (!visitor(resource)) return {};
    }
    return {};
}

SQLiteStore::SQLiteStore(std::unique_ptr<Content> content)
    : content_(std::move(content))
{
}

SQLiteStore::~SQLiteStore() = default;

Result<std::shared_ptr<SQLiteStore>> SQLiteStore::open(const std::filesystem::path& file,
    const StoreAccount& account, std::chrono::milliseconds patience)
{
    return guarded(file.string(), [&]() -> Result<std::shared_ptr<SQLiteStore>> {
        std::unique_ptr<Content> content(
            new Content {.file = file.string(), .database = openStoreFile(file, patience)});
        content->account = accountNumber(content->database, account.user, account.origin.text());
        return std::shared_ptr<SQLiteStore>(new SQLiteStore(std::move(content)));
    });
}

Result<std::vector<StoredCalendar>> SQLiteStore::calendars()
{
    return content_->step([&]() -> Result<std::vector<StoredCalendar>> {
        SQLite::Statement row(content_->database,
            "SELECT href, displayName, description, color, ordering, timeZone, components,"
            " isWritable, missing, cTag, syncToken FROM calendars WHERE account = ? ORDER BY id");
        with(row, content_->account);
        std::vector<StoredCalendar> calendars;
        while (row.executeStep()) {
            calendars.push_back({.href = textOf(row.getColumn(0)),
                .displayName = textOf(row.getColumn(1)),
                .description = optionalTextOf(row.getColumn(2)),
                .color = optionalTextOf(row.getColumn(3)),
                .order = optionalTextOf(row.getColumn(4)),
                .timeZone = optionalTextOf(row.getColumn(5)),
                .components = split(bytesOf(row.getColumn(6))),
                .isWritable = row.getColumn(7).getInt64() != 0,
                .missing = split(bytesOf(row.getColumn(8))),
                .mark = {textOf(row.getColumn(9)), textOf(row.getColumn(10))}});
        }
        return calendars;
    });
}

Outcome SQLiteStore::put(const StoredCalendar& calendar)
{
    return content_->step([&]() -> Outcome {
        SQLite::Statement put(content_->database,
            "INSERT INTO calendars (account, href, displayName, description, color, ordering,"
            " timeZone, components, isWritable, missing, cTag, syncToken)"
            " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, '', '') ON CONFLICT (account, href) DO UPDATE"
            " SET displayName = excluded.displayName, description = excluded.description,"
            " color = excluded.color, ordering = excluded.ordering, timeZone = excluded.timeZone,"
            " components = excluded.components, isWritable = excluded.isWritable,"
            " missing = excluded.missing");
        run(put, content_->account, calendar.href, calendar.displayName, calendar.description,
            calendar.color, calendar.order, calendar.timeZone, joined(calendar.components),
            std::int64_t(calendar.isWritable), joined(calendar.missing));
        return {};
    });
}

Outcome SQLiteStore::removeCalendar(const std::string& href)
{
    return content_->step([&]() -> Outcome {
        SQLite::Statement remove(
            content_->database, "DELETE FROM calendars WHERE account = ? AND href = ?");
        run(remove, content_->account, href);
        return {};
    });
}

Result<std::vector<HeldTag>> SQLiteStore::tags(const std::string& calendar)
{
    return content_->step([&]() -> Result<std::vector<HeldTag>> {
        auto row = content_->ofResources("href, tag", " ORDER BY href");
        with(row, content_->account, calendar);
        std::vector<HeldTag> tags;
        while (row.executeStep())
            tags.push_back({textOf(row.getColumn(0)), textOf(row.getColumn(1))});
        return tags;
    });
}

Result<std::optional<Resource>> SQLiteStore::resource(
    const std::string& calendar, const std::string& href)
{
    return content_->step([&]() -> Result<std::optional<Resource>> {
        auto row = content_->ofResources(
            "tag, (SELECT text FROM texts WHERE resource = id)", " AND href = ?3");
        if (!with(row, content_->account, calendar, href).executeStep())
            return std::optional<Resource> {};
        return std::optional(Resource {href, textOf(row.getColumn(0)), textOf(row.getColumn(1))});
    });
}

Outcome SQLiteStore::visit(const std::string& calendar, const Visitor& visitor)
{
    std::vector<std::int64_t> numbers;
    const auto found = content_->step([&]() -> Outcome {
        auto row = content_->ofResources("id", " ORDER BY href");
        with(row, content_->account, calendar);
        while (row.executeStep())
            numbers.push_back(row.getColumn(0).getInt64());
        return {};
    });
    return found ? content_->visit(std::move(numbers), visitor) : found;
}

Outcome SQLiteStore::visit(
    const std::string& calendar, std::int64_t from, std::int64_t to, const Visitor& visitor)
{
    std::vector<std::int64_t> numbers;
    auto found = content_->step([&]() -> Outcome {
        auto row = content_->ofResources("id", " AND last > ?3 AND first < ?4");
        with(row, content_->account, calendar, from, to);
        while (row.executeStep())
            numbers.push_back(row.getColumn(0).getInt64());
        return {};
    });
    if (!found) return found;
    std::sort(numbers.begin(), numbers.end()); // texts that came together lie together
    return content_->visit(std::move(numbers), visitor);
}

Result<std::vector<FailedResource>> SQLiteStore::failed(const std::string& calendar)
{
    return content_->step([&]() -> Result<std::vector<FailedResource>> {
        SQLite::Statement row(content_->database,
            std::string("SELECT href, reason FROM failures") + ofCalendar + " ORDER BY href");
        with(row, content_->account, calendar);
        std::vector<FailedResource> failed;
        while (row.executeStep())
            failed.push_back({textOf(row.getColumn(0)), textOf(row.getColumn(1))});
        return failed;
    });
}

Result<std::vector<PendingChange>> SQLiteStore::pending()
{
    return content_->step([&]() -> Result<std::vector<PendingChange>> {
        return readOutbox(content_->database, content_->account);
    });
}

Outcome SQLiteStore::applyAll(std::span<const Batch> batches)
{
    return content_->step([&]() -> Outcome {
        applyBatches(content_->database, content_->account, batches);
        return {};
    });
}

} // namespace Tessel
