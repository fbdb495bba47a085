#pragma once

#include "Tessel/CaldavLibrary/Models/MRVCalendar.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Tessel {

/// Compares the server's calendars with those that the host holds and tells the sync delegate, in
/// this order, of the deleted, the added and the edited ones (each only when there are any) and
/// that the calendar sync has finished. Calendars are matched by `href` alone and are edited when
/// their `cTag` differs from that of a held one, so a change of name or colour without a new tag is
/// not reported.
///
/// Without a list from the server the delegate is told nothing, `completion` is not called and the
/// operation never finishes.
class MRVSyncCalendarOperation final : public MRVOperation {
public:
    using Calendars = std::vector<std::shared_ptr<MRVCalendar>>;
    using Completion
        = std::function<void(std::optional<Error>, std::shared_ptr<MRVSyncCalendarOperation>)>;

    /// Also makes the listing that this operation depends on and adds it to the client's
    /// `syncQueue`; the caller queues this operation itself.
    static std::shared_ptr<MRVSyncCalendarOperation> make(std::shared_ptr<MRVClient> client,
        std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider, Completion completion);

    std::optional<Calendars> calendars; ///< the server's, filled by the listing
    // What differs, each absent when empty; set once the delegate has been told of it.
    std::optional<Calendars> addedCalendars;
    std::optional<Calendars> editedCalendars;
    std::optional<Calendars> deletedCalendars;

    /// Called once on a worker thread with no error and this operation.
    Completion completion;

    void main() override;

private:
    struct Differences {
        Calendars deleted, added, edited;
    };

    Differences differences(const Calendars& held) const;
    Calendars heldCalendars() const;
};

} // namespace Tessel
