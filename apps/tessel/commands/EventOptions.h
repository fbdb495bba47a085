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
    /// A change of one; times keep the zone that they have there.
    EventEdit changeOf(const EventText& event, const EventPart& part) const;
    bool invites() const { return !invited_.empty(); }

private:
    EventEdit texts() const;
    void setEnd(EventEdit& edit, const EventMoment& start,
        const std::optional<EventPart>& part = {}, const EventText* event = nullptr) const;
    std::string rule(const EventMoment& start) const;

    using Text = std::optional<std::string>;
    Text summary_, description_, location_, url_, status_, start_, end_, duration_, repeat_, until_;
    std::optional<int> times_;
    std::string zone_;
    std::vector<std::string> categories_, alarms_, invited_, uninvited_, cleared_;
};

} // namespace Tessel::App
