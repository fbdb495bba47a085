#pragma once

#include "Tessel/Session/Calendars/CalendarListing.h"
#include "Tessel/Session/Sync/CalendarSync.h"

#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// Syncs the list of calendars, then one calendar after another. One that fails is left as it is
/// held and stops no other.
class AccountSync final : public std::enable_shared_from_this<AccountSync> {
public:
    /// With `only` that calendar alone, held or not; the others stay as they are.
    AccountSync(std::shared_ptr<Channel> channel, std::vector<std::string> homes,
        std::shared_ptr<Store> store, std::optional<std::string> only, ProgressReport progress,
        std::shared_ptr<PendingCall<Changes>> call);

    void start();

private:
    void readList(Result<CalendarList> result);
    std::optional<Failure> holdCalendars(const CalendarList& held);
    void syncAll();
    void syncOne(const StoredCalendar& calendar);
    void take(CalendarChanges changes);

    const std::shared_ptr<Channel> channel_;
    const std::vector<std::string> homes_;
    const std::shared_ptr<Store> store_;
    const std::optional<std::string> only_;
    const ProgressReport progress_;
    const std::shared_ptr<PendingCall<Changes>> call_;
    CalendarList listed_;
    std::unordered_map<std::string, SyncMark> marks_;
    std::size_t next_ = 0;
    bool isUnderWay_ = false; ///< the sync of the calendar before `next_`
    bool isStarting_ = false;
    Changes changes_;
};

} // namespace Tessel
