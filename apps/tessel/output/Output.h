#pragma once

#include "apps/tessel/output/Json.h"

#include <string>
#include <string_view>

namespace Tessel::App {

/// Writes what a command has to say: lines for people, or with --json one object a line. Whatever
/// comes from a server is made safe for terminals here.
class Output {
public:
    explicit Output(bool isJson);

    bool isJson() const { return isJson_; }

    /// One result, in the form that was asked for.
    void result(std::string_view line, const Json& object) const;
    void line(std::string_view line) const; ///< nothing with --json
    void object(const Json& object) const; ///< nothing without it
    /// A heading: on a terminal in bold.
    void heading(std::string_view line) const;
    /// iCalendar text byte by byte, where it does not go to a terminal.
    void text(std::string_view text) const;

    /// To standard error, in place of a progress line.
    void note(std::string_view message) const;
    /// What has failed, with --json as an object.
    void failure(std::string_view message, const Json& object) const;
    /// A line that the next one replaces, as far as it fits; only on a terminal that can do that.
    /// Empty: takes it away.
    void progress(std::string_view line) const;

    /// Whether all results could be written.
    static bool flush();

private:
    const bool isJson_;
    const bool isTerminal_;
    const bool hasColor_;
    const bool hasProgress_;
};

} // namespace Tessel::App
