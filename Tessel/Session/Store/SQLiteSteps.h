#pragma once

#include "Tessel/Session/Outcome/Result.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Tessel {

/// Thrown within a step where the reason is known better than SQLite knows it.
struct StepRefused {
    Failure failure;
};

/// What an error of SQLite means for the host, and what to do about it.
Failure sqliteFailure(const SQLite::Exception& error, const std::string& file);

/// Does `work`, which gives a `Result`; what it throws becomes a failure.
template <class Work> auto guarded(const std::string& file, Work&& work) -> decltype(work())
{
    try {
        return work();
    } catch (StepRefused& refused) {
        return std::move(refused.failure);
    } catch (const SQLite::Exception& error) {
        return sqliteFailure(error, file);
    } catch (const std::exception& error) {
        return Failure {.kind = FailureKind::storage,
            .reason = "The store " + file + " failed: " + error.what() + "."};
    }
}

inline void bindOne(SQLite::Statement& statement, int index, const std::string& text)
{
    statement.bindNoCopy(index, text);
}
inline void bindOne(SQLite::Statement& statement, int index, std::int64_t number)
{
    statement.bind(index, number);
}
template <class T>
void bindOne(SQLite::Statement& statement, int index, const std::optional<T>& value)
{
    if (value) {
        bindOne(statement, index, *value);
    } else {
        statement.bind(index);
    }
}

/// Makes a statement ready for these parameters, which must live as long as it is run.
template <class... Values>
SQLite::Statement& with(SQLite::Statement& statement, const Values&... values)
{
    statement.reset();
    int index = 0;
    (bindOne(statement, ++index, values), ...);
    return statement;
}

/// Runs a statement that gives no rows.
template <class... Values> void run(SQLite::Statement& statement, const Values&... values)
{
    with(statement, values...).exec();
}

/// As `std::string_view` without a copy, until the statement's next step.
inline std::string_view bytesOf(const SQLite::Column& column)
{
    const auto* bytes = static_cast<const char*>(column.getBlob());
    return bytes ? std::string_view(bytes, std::size_t(column.getBytes())) : std::string_view();
}

inline std::string textOf(const SQLite::Column& column)
{
    return std::string(bytesOf(column));
}

inline std::optional<std::string> optionalTextOf(const SQLite::Column& column)
{
    return column.isNull() ? std::nullopt : std::optional(textOf(column));
}

} // namespace Tessel
