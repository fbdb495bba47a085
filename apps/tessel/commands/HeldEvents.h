#pragma once

#include "apps/tessel/commands/Workspace.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::App {

/// An event as the user has it: what is held, with the changes that wait.
struct HeldEvent {
    StoredCalendar calendar;
    Resource resource; ///< as the store has it; what waits to be created has no tag
    EventText event; ///< as it will be
    bool waits = false; ///< something of it has not been sent
};

/// What the user has, calendar by calendar.
class HeldEvents {
public:
    using Visitor = std::function<void(const HeldEvent&)>;

    /// All calendars, or the one of that name.
    HeldEvents(Workspace& workspace, const std::string& calendar = {});

    /// Visits every event, or those that may have an instance in the range. What cannot be read,
    /// and what could not be brought, is named (`Workspace::leaveOut`).
    void visit(const Visitor& visitor, const std::optional<Bounds>& range = {});

    enum class Naming { whole, orBegin };
    /// The one that the user means: by its place, else by its UID or summary, or by the begin of
    /// its UID where that is allowed; in capitals or not where none is named exactly so. Others
    /// choose all of these but the place: a name that several events have is refused.
    HeldEvent find(const std::string& name, Naming naming = Naming::orBegin);

private:
    std::optional<EventText> read(const ExpectedResource& expected);

    Workspace& workspace_;
    std::vector<StoredCalendar> calendars_;
    OutboxView view_;
    bool namesFailures_ = true;
};

/// What a listing says of an event.
Json describe(const HeldEvent& held);

} // namespace Tessel::App
