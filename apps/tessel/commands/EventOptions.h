#pragma once

#include <CLI/CLI.hpp>
#include <Tessel/TesselSession.h>

#include <optional>
#include <string>
#include <vector>

namespace Tessel::App {

/// What the command line sets of an event.
class EventOptions {
public:
    void addTo(CLI::App& app, bool isNew);

    /// A new event.
    EventEdit creation() const;
    /// A change of one that starts then; its times stay on the clock that they are on.
    EventEdit changeOf(const EventText& event, const std::optional<EventMoment>& start) const;
    bool invites() const { return !invited_.empty(); }

private:
    EventEdit edit(TextZones zones, const std::optional<EventMoment>& oldStart) const;
    EventEdit texts() const;
    std::string rule(TextZones& zones, const EventMoment& start) const;

    using Text = std::optional<std::string>;
    Text summary_, description_, location_, url_, status_, start_, end_, duration_, repeat_, until_;
    std::optional<int> times_;
    std::string zone_;
    std::vector<std::string> categories_, alarms_, invited_, uninvited_, cleared_;
};

} // namespace Tessel::App
