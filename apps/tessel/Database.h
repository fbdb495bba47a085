#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel::App {

/// One prepared statement; parameters and columns are taken in order.
class Statement {
public:
    Statement(sqlite3* database, std::string_view sql);

    Statement& operator<<(std::string_view text);
    Statement& operator<<(const std::string& text) { return *this << std::string_view(text); }
    Statement& operator<<(const char* text) { return *this << std::string_view(text); }
    Statement& operator<<(std::int64_t number);
    template <class T> Statement& operator<<(const std::optional<T>& value)
    {
        return value ? *this << *value : bindNull();
    }

    /// Whether there is a next row; a statement without rows is carried out by it.
    bool next();
    /// Carries the statement out and makes it ready for other parameters.
    void run();

    std::string text();
    std::optional<std::string> optionalText();
    std::int64_t number();
    std::optional<std::int64_t> optionalNumber();

private:
    Statement& bindNull();
    void check(int code) const;

    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    sqlite3* database_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    int parameter_ = 0;
    int column_ = 0;
};

/// An SQLite file. Failures are thrown as `std::runtime_error`.
class Database {
public:
    explicit Database(const std::string& file);

    void execute(const char* sql);
    Statement prepare(std::string_view sql) { return Statement(handle_.get(), sql); }

    /// Rolls back unless it was committed.
    class Transaction {
    public:
        explicit Transaction(Database& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void commit();

    private:
        Database& database_;
        bool isOpen_ = true;
    };

private:
    struct Closer {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };
    std::unique_ptr<sqlite3, Closer> handle_;
};

} // namespace Tessel::App
