#pragma once

#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Operation/MRVWriteOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// Puts a new event resource into the event's calendar (RFC 4791, 5.3.2), under the name UID.ics
/// and only where nothing has that name. The event always gets a new `uid` first, a random UUID
/// followed by "mcaldav"; one that it had is lost.
///
/// An answer whose status has no `MRVStatusCode` case (such as 400, 409, 412 or 500) STOPS THE
/// PROCESS.
class MRVCreateEventOperation final : public MRVWriteOperation {
public:
    std::shared_ptr<MRVEvent> event;
    /// Called at most once: with the new UID when the server answers 201, without one and with the
    /// error after a transport error. Never called for another answer, for an event that has no
    /// iCalendar text (`MRVEvent::iCalendarString`), or without the client's auth delegate.
    std::function<void(std::optional<std::string>, std::optional<Error>)> completionHandler;

    void main() override;

protected:
    void read(const Data& data, const std::optional<Error>& error,
        std::optional<int> statusCode) override;
};

} // namespace Tessel
