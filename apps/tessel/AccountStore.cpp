#include "apps/tessel/AccountStore.h"

#include <filesystem>

namespace Tessel::App {

namespace {

constexpr auto schema = R"sql(
    PRAGMA journal_mode = WAL;
    PRAGMA foreign_keys = ON;
    CREATE TABLE IF NOT EXISTS account (
        identifier TEXT PRIMARY KEY, email TEXT NOT NULL, server TEXT NOT NULL, type INTEGER NOT NULL,
        principal TEXT, home TEXT, inbox TEXT, outbox TEXT, defaultCalendar TEXT, notifications TEXT,
        methods INTEGER NOT NULL);
    CREATE TABLE IF NOT EXISTS address (
        account TEXT NOT NULL REFERENCES account ON DELETE CASCADE, address TEXT NOT NULL);
    CREATE TABLE IF NOT EXISTS calendar (
        account TEXT NOT NULL REFERENCES account ON DELETE CASCADE, href TEXT NOT NULL,
        name TEXT NOT NULL, cTag TEXT NOT NULL, description TEXT, ordering TEXT, color TEXT,
        syncToken TEXT NOT NULL, owner TEXT NOT NULL, zone TEXT NOT NULL, components INTEGER,
        PRIMARY KEY (account, href));
    CREATE TABLE IF NOT EXISTS event (
        calendar TEXT NOT NULL, account TEXT NOT NULL, href TEXT NOT NULL, eTag TEXT NOT NULL,
        uid TEXT NOT NULL, summary TEXT NOT NULL, status TEXT NOT NULL, start INTEGER NOT NULL,
        end INTEGER NOT NULL, startZone TEXT, endZone TEXT, allDay INTEGER NOT NULL, rule TEXT,
        data TEXT NOT NULL,
        PRIMARY KEY (account, calendar, href),
        FOREIGN KEY (account, calendar) REFERENCES calendar (account, href) ON DELETE CASCADE);
    CREATE TABLE IF NOT EXISTS notification (
        account TEXT NOT NULL REFERENCES account ON DELETE CASCADE, path TEXT NOT NULL,
        calendar TEXT NOT NULL, summary TEXT NOT NULL, date INTEGER NOT NULL, address TEXT NOT NULL,
        uid TEXT, organizerName TEXT, organizer TEXT, status INTEGER NOT NULL,
        isReply INTEGER NOT NULL, access INTEGER NOT NULL, PRIMARY KEY (account, path));
)sql";

std::string prepared(const std::string& file)
{
    namespace fs = std::filesystem;
    const fs::path path(file);
    if (path.has_parent_path()) fs::create_directories(path.parent_path());
    if (!fs::exists(path)) {
        Database made(file);
        made.execute("PRAGMA user_version = 1");
        fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    }
    return file;
}

std::optional<TimeZone> zone(const std::optional<std::string>& identifier)
{
    return identifier ? TimeZone::withIdentifier(*identifier) : std::nullopt;
}

std::optional<std::string> name(const std::optional<TimeZone>& zone)
{
    return zone ? std::optional(zone->identifier()) : std::nullopt;
}

std::shared_ptr<MRVEvent> readEvent(Statement& row, const std::shared_ptr<MRVCalendar>& calendar)
{
    const auto href = row.text();
    const auto eTag = row.text();
    const auto uid = row.text();
    const auto summary = row.text();
    const auto status = row.text();
    const auto start = row.number();
    const auto end = row.number();
    const auto startZone = row.optionalText();
    const auto endZone = row.optionalText();
    const bool allDay = row.number() != 0;
    return std::make_shared<MRVEvent>(MRVEvent {.uid = uid,
        .href = href,
        .eTag = eTag,
        .status = status,
        .summary = summary,
        .startDate = Date::fromMillisecondsSince1970(start),
        .endDate = Date::fromMillisecondsSince1970(end),
        .startTimeZone = zone(startZone),
        .endTimeZone = zone(endZone),
        .recurRule = row.optionalText(),
        .calendar = calendar,
        .allDay = allDay});
}

std::shared_ptr<MRVCalendar> readCalendar(
    Statement& row, const std::shared_ptr<MRVAccount>& account)
{
    const auto href = row.text();
    const auto displayName = row.text();
    const auto cTag = row.text();
    const auto desc = row.optionalText();
    const auto order = row.optionalText();
    const auto color = row.optionalText();
    const auto syncToken = row.text();
    const auto owner = row.text();
    const auto timeZone = zone(row.text());
    const auto components = row.optionalNumber();
    return std::make_shared<MRVCalendar>(MRVCalendar {.calID = account->identifier + href,
        .href = href,
        .displayName = displayName,
        .cTag = cTag,
        .desc = desc,
        .order = order,
        .color = color,
        .syncToken = syncToken,
        .owner = owner,
        .timeZone = timeZone.value_or(TimeZone::UTC()),
        .account = account,
        .supportedComponents
        = components ? std::optional(MRVCalendarComponents(*components)) : std::nullopt});
}

std::shared_ptr<MRVNotification> readNotification(
    Statement& row, const std::shared_ptr<MRVAccount>& account)
{
    MRVNotification note {.account = account};
    note.href = row.text();
    note.identifier = note.href;
    note.hostURL = row.text();
    note.summary = row.text();
    note.date = Date::fromMillisecondsSince1970(row.number());
    note.shareeEmail = row.text();
    note.uid = row.optionalText();
    note.organizerCN = row.optionalText();
    note.organizerEmail = row.optionalText();
    note.status = fromRawValue<MRVInviteStatus>(int(row.number())).value_or(note.status);
    note.isReply = row.number() != 0;
    note.access = fromRawValue<MRVSharedCalendarAccess>(int(row.number())).value_or(note.access);
    return std::make_shared<MRVNotification>(std::move(note));
}

} // namespace

AccountStore::AccountStore(const std::string& file)
    : database_(prepared(file))
{
    database_.execute(schema);
}

std::shared_ptr<MRVAccount> AccountStore::account(const std::string& identifier)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare("SELECT email, server, type, principal, home, inbox, outbox, "
                                 "defaultCalendar, notifications,"
                                 " methods FROM account WHERE identifier = ?");
    row << identifier;
    if (!row.next()) return nullptr;

    auto account = std::make_shared<MRVAccount>(
        MRVAccount {.identifier = identifier, .email = row.text(), .serverURL = row.text()});
    account->accountType
        = fromRawValue<MRVAccountType>(int(row.number())).value_or(MRVAccountType::general);
    account->principalURL = row.optionalText();
    account->calendarHomeURL = row.optionalText();
    account->scheduleInboxURL = row.optionalText();
    account->scheduleOutboxURL = row.optionalText();
    account->scheduleDefaultURL = row.optionalText();
    account->notificationURL = row.optionalText();
    account->supportedMethod = MRVSupportedMethod(int(row.number()));

    auto addresses
        = database_.prepare("SELECT address FROM address WHERE account = ? ORDER BY rowid");
    addresses << identifier;
    while (addresses.next()) {
        if (!account->calendarUserAddressSet) account->calendarUserAddressSet.emplace();
        account->calendarUserAddressSet->push_back(addresses.text());
    }
    return account;
}

void AccountStore::save(const MRVAccount& account)
{
    const std::lock_guard lock(mutex_);
    Database::Transaction transaction(database_);
    auto row = database_.prepare(
        "INSERT INTO account VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (identifier) DO"
        " UPDATE SET email = excluded.email, server = excluded.server, type = excluded.type,"
        " principal = excluded.principal, home = excluded.home, inbox = excluded.inbox,"
        " outbox = excluded.outbox, defaultCalendar = excluded.defaultCalendar,"
        " notifications = excluded.notifications, methods = excluded.methods");
    row << account.identifier << account.email << account.serverURL
        << std::int64_t(account.accountType) << account.principalURL << account.calendarHomeURL
        << account.scheduleInboxURL << account.scheduleOutboxURL << account.scheduleDefaultURL
        << account.notificationURL << std::int64_t(account.supportedMethod.rawValue());
    row.run();
    auto cleared = database_.prepare("DELETE FROM address WHERE account = ?");
    cleared << account.identifier;
    cleared.run();
    auto address = database_.prepare("INSERT INTO address VALUES (?, ?)");
    for (const auto& text : account.calendarUserAddressSet.value_or(std::vector<std::string> {})) {
        address << account.identifier << text;
        address.run();
    }
    transaction.commit();
}

AccountStore::Calendars AccountStore::calendars(const std::shared_ptr<MRVAccount>& account)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare("SELECT href, name, cTag, description, ordering, color, syncToken,"
                                 " owner, zone, components FROM calendar WHERE account = ?"
                                 " ORDER BY rowid");
    row << account->identifier;
    Calendars calendars;
    while (row.next())
        calendars.push_back(readCalendar(row, account));
    return calendars;
}

void AccountStore::save(const MRVCalendar& calendar)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare(
        "INSERT INTO calendar VALUES (?, ?, ?, '', ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (account, "
        "href) DO"
        " UPDATE SET name = excluded.name, description = excluded.description,"
        " ordering = excluded.ordering, color = excluded.color, syncToken = excluded.syncToken,"
        " owner = excluded.owner, zone = excluded.zone, components = excluded.components");
    row << calendar.account->identifier << calendar.href << calendar.displayName << calendar.desc
        << calendar.order << calendar.color << calendar.syncToken << calendar.owner
        << calendar.timeZone.identifier();
    if (calendar.supportedComponents) {
        row << std::int64_t(calendar.supportedComponents->rawValue());
    } else {
        row << std::optional<std::int64_t> {};
    }
    row.run();
}

void AccountStore::setSynced(const MRVCalendar& calendar)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare("UPDATE calendar SET cTag = ? WHERE account = ? AND href = ?");
    row << calendar.cTag << calendar.account->identifier << calendar.href;
    row.run();
}

void AccountStore::remove(const MRVCalendar& calendar)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare("DELETE FROM calendar WHERE account = ? AND href = ?");
    row << calendar.account->identifier << calendar.href;
    row.run();
}

AccountStore::Events AccountStore::events(const std::shared_ptr<MRVCalendar>& calendar)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare(
        "SELECT href, eTag, uid, summary, status, start, end, startZone, endZone, allDay, rule"
        " FROM event WHERE account = ? AND calendar = ? ORDER BY start, href");
    row << calendar->account->identifier << calendar->href;
    Events events;
    while (row.next())
        events.push_back(readEvent(row, calendar));
    return events;
}

void AccountStore::save(const MRVCalendar& calendar, const Events& events)
{
    const std::lock_guard lock(mutex_);
    Database::Transaction transaction(database_);
    auto row = database_.prepare(
        "INSERT OR REPLACE INTO event VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (const auto& event : events) {
        row << calendar.href << calendar.account->identifier << event->href << event->eTag
            << event->uid << event->summary << event->status
            << event->startDate.millisecondsSince1970() << event->endDate.millisecondsSince1970()
            << name(event->startTimeZone) << name(event->endTimeZone) << std::int64_t(event->allDay)
            << event->recurRule << event->calendarData;
        row.run();
    }
    transaction.commit();
}

void AccountStore::remove(const MRVCalendar& calendar, const Events& events)
{
    const std::lock_guard lock(mutex_);
    Database::Transaction transaction(database_);
    auto row
        = database_.prepare("DELETE FROM event WHERE account = ? AND calendar = ? AND href = ?");
    for (const auto& event : events) {
        row << calendar.account->identifier << calendar.href << event->href;
        row.run();
    }
    transaction.commit();
}

std::vector<std::string> AccountStore::calendarData(const MRVCalendar& calendar)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare(
        "SELECT data FROM event WHERE account = ? AND calendar = ? ORDER BY start, href");
    row << calendar.account->identifier << calendar.href;
    std::vector<std::string> texts;
    while (row.next())
        texts.push_back(row.text());
    return texts;
}

AccountStore::Notifications AccountStore::notifications(const std::shared_ptr<MRVAccount>& account)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare(
        "SELECT path, calendar, summary, date, address, uid, organizerName, organizer, status,"
        " isReply, access FROM notification WHERE account = ? ORDER BY rowid");
    row << account->identifier;
    Notifications notifications;
    while (row.next())
        notifications.push_back(readNotification(row, account));
    return notifications;
}

void AccountStore::save(const Notifications& notifications)
{
    const std::lock_guard lock(mutex_);
    Database::Transaction transaction(database_);
    auto row = database_.prepare(
        "INSERT OR REPLACE INTO notification VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (const auto& note : notifications) {
        row << note->account->identifier << note->href << note->hostURL << note->summary
            << note->date.millisecondsSince1970() << note->shareeEmail << note->uid
            << note->organizerCN << note->organizerEmail << std::int64_t(note->status)
            << std::int64_t(note->isReply) << std::int64_t(note->access);
        row.run();
    }
    transaction.commit();
}

void AccountStore::remove(const MRVNotification& notification)
{
    const std::lock_guard lock(mutex_);
    auto row = database_.prepare("DELETE FROM notification WHERE account = ? AND path = ?");
    row << notification.account->identifier << notification.href;
    row.run();
}

} // namespace Tessel::App
