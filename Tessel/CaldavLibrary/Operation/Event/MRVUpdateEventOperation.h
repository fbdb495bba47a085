#pragma once

#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Operation/MRVWriteOperation.h"

#include <functional>
#include <memory>
#include <optional>

namespace Tessel {

/// Puts the event's text over its resource, provided that this still has the entity tag
/// `event->eTag` (RFC 9110, 13.1.1). The event keeps its old tag: read the new one with the next
/// sync.
///
/// An answer whose status has no `MRVStatusCode` case STOPS THE PROCESS. That includes 412, a
/// resource that somebody else has changed meanwhile.
class MRVUpdateEventOperation final : public MRVWriteOperation {
public:
    std::shared_ptr<MRVEvent> event;
    /// Called at most once: with the error after a transport error, WITHOUT an error for every
    /// answer, refusals (401, 403, 404) included; only the log tells them apart. Never called for
    /// an event that has no iCalendar text (`MRVEvent::iCalendarString`), or without the client's
    /// auth delegate.
    std::function<void(std::optional<Error>)> completionHandler;

    void main() override;

protected:
    void read(const Data& data, const std::optional<Error>& error,
        std::optional<int> statusCode) override;
};

} // namespace Tessel
