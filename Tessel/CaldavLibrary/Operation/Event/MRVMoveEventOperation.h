#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Models/MRVEvent.h"
#include "Tessel/CaldavLibrary/Operation/MRVWriteOperation.h"

#include <functional>
#include <memory>
#include <optional>

namespace Tessel {

/// Moves an event resource into another calendar (MOVE, RFC 4918, 9.9). Its new name is the whole
/// old path without the slashes: /cals/home/e1.ics becomes calshomee1.ics. The event is not
/// changed: its new place is learned with the next sync.
///
/// An answer whose status has no `MRVStatusCode` case STOPS THE PROCESS.
class MRVMoveEventOperation final : public MRVWriteOperation {
public:
    std::shared_ptr<MRVEvent> event;
    std::shared_ptr<MRVCalendar> destinationCalendar;
    /// Called at most once: with the error after a transport error, WITHOUT an error for every
    /// answer, refusals (401, 403, 404) included; only the log tells them apart. Never called
    /// without the client's auth delegate.
    std::function<void(std::optional<Error>)> completionHandler;

    void main() override;

protected:
    void read(const Data& data, const std::optional<Error>& error,
        std::optional<int> statusCode) override;
};

} // namespace Tessel
