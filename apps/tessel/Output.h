#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace Tessel::App {

/// What the user reads on standard output: a line for a person, or a JSON object a line.
class Output {
public:
    using Value
        = std::variant<std::monostate, bool, std::int64_t, std::string, std::vector<std::string>>;
    using Fields = std::vector<std::pair<std::string, Value>>;

    explicit Output(bool json)
        : json_(json)
    {
    }

    /// Prints one result: `line`, or `fields` as JSON.
    void result(std::string_view line, const Fields& fields) const;
    /// As `result`, but for a text of several lines.
    void text(std::string_view lines, const Fields& fields) const;
    /// Prints a failure to standard error; as JSON it goes where results go.
    void failure(std::string_view message, const Fields& fields) const;
    /// Prints text as it is, whatever it holds.
    static void raw(std::string_view text);

    static Value orNull(const std::optional<std::string>& text);
    static std::string json(const Fields& fields);

private:
    const bool json_;
};

} // namespace Tessel::App
