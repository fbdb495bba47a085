#include "apps/tessel/Database.h"

#include <stdexcept>

namespace Tessel::App {

namespace {

[[noreturn]] void fail(sqlite3* database)
{
    throw std::runtime_error(
        std::string("store: ") + (database ? sqlite3_errmsg(database) : "out of memory"));
}

} // namespace

Statement::Statement(sqlite3* database, std::string_view sql)
    : database_(database)
{
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database, sql.data(), int(sql.size()), &statement, nullptr));
    statement_.reset(statement);
}

void Statement::check(int code) const
{
    if (code != SQLITE_OK) fail(database_);
}

Statement& Statement::operator<<(std::string_view text)
{
    check(sqlite3_bind_text64(statement_.get(), ++parameter_, text.data() ? text.data() : "",
        text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::operator<<(std::int64_t number)
{
    check(sqlite3_bind_int64(statement_.get(), ++parameter_, number));
    return *this;
}

Statement& Statement::bindNull()
{
    check(sqlite3_bind_null(statement_.get(), ++parameter_));
    return *this;
}

bool Statement::next()
{
    column_ = 0;
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) fail(database_);
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (next()) { }
    check(sqlite3_reset(statement_.get()));
    parameter_ = 0;
}

std::string Statement::text()
{
    return optionalText().value_or("");
}

std::optional<std::string> Statement::optionalText()
{
    const int column = column_++;
    const auto bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
    if (!bytes) return std::nullopt;
    return std::string(bytes, std::size_t(sqlite3_column_bytes(statement_.get(), column)));
}

std::int64_t Statement::number()
{
    return sqlite3_column_int64(statement_.get(), column_++);
}

std::optional<std::int64_t> Statement::optionalNumber()
{
    if (sqlite3_column_type(statement_.get(), column_) == SQLITE_NULL) {
        ++column_;
        return std::nullopt;
    }
    return number();
}

Database::Database(const std::string& file)
{
    sqlite3* handle = nullptr;
    const int code = sqlite3_open(file.c_str(), &handle);
    handle_.reset(handle);
    if (code != SQLITE_OK) {
        throw std::runtime_error("store: cannot open " + file + ": " + sqlite3_errstr(code));
    }
    sqlite3_busy_timeout(handle, 5'000);
}

void Database::execute(const char* sql)
{
    if (sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(handle_.get());
    }
}

Database::Transaction::Transaction(Database& database)
    : database_(database)
{
    database_.execute("BEGIN IMMEDIATE");
}

Database::Transaction::~Transaction()
{
    if (!isOpen_) return;
    try {
        database_.execute("ROLLBACK");
    } catch (const std::exception&) {
        // SQLite has rolled back by itself.
    }
}

void Database::Transaction::commit()
{
    database_.execute("COMMIT");
    isOpen_ = false;
}

} // namespace Tessel::App
