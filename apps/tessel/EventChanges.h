#pragma once

#include <Tessel/Tessel.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>

namespace Tessel::App {

/// What the user wants an event to say; absent fields stay as they are.
struct EventChanges {
    std::optional<std::string> summary, description, start, end, zone, status, rule;

    void addOptions(CLI::App& command);
    bool isEmpty() const;
    /// A copy of `event` with the changes, in `calendar`, to be written over `eTag`. Throws
    /// `std::runtime_error` for a time or zone that cannot be read.
    std::shared_ptr<MRVEvent> applied(const MRVEvent& event,
        const std::shared_ptr<MRVCalendar>& calendar, const std::string& eTag) const;
};

} // namespace Tessel::App
