#pragma once

#include "apps/tessel/Host.h"
#include "apps/tessel/StoreDelegate.h"

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Tessel::App {

/// One sync of an account: says what is held, keeps what it is told, and prints each change.
///
/// A sync has no completion, a calendar that is empty on the server is never finished, and a failed
/// listing says nothing either. So the end of a sync is made out like this:
/// - The client's sync queue is serial. A block queued once the event syncs stand in it runs after
///   the last of their listings has been dealt with.
/// - A listing that names events asks for the held ones, and only such a calendar is finished
/// later.
/// - Of the others, those whose listing the transport saw answered without any response are empty;
///   the rest have failed and are edited again at the next sync.
class SyncRun final : public StoreDelegate, public std::enable_shared_from_this<SyncRun> {
public:
    struct Totals {
        std::size_t calendarsAdded = 0, calendarsEdited = 0, calendarsRemoved = 0;
        std::size_t eventsAdded = 0, eventsEdited = 0, eventsRemoved = 0;
        std::vector<std::string> failed; ///< the names of calendars whose events are not complete
    };

    explicit SyncRun(Host& host);
    /// Runs the sync to its end or to the command's deadline; what is complete by then is kept.
    Totals run();

    std::optional<Events> events(const Calendar& calendar) override;

    void calendarsDeleted(const Calendars& calendars) override;
    void calendarsAdded(const Calendars& calendars) override;
    void calendarsEdited(const Calendars& calendars) override;
    void calendarSyncFinished() override;
    void eventsAdded(const Events& events, const Calendar& calendar, const Account& account,
        const Client& client) override;
    void eventsEdited(const Events& events, const Calendar& calendar, const Account& account,
        const Client& client) override;
    void eventsDeleted(const Events& events, const Calendar& calendar, const Account& account,
        const Client& client) override;
    void eventsSyncFinished(
        const std::optional<Error>& error, const Calendar& calendar, const Client& client) override;

private:
    struct CalendarState {
        Calendar calendar;
        bool isListed = false; ///< its listing names events
        Events held;
        std::set<std::string> stillThere; ///< hrefs of held events that the listing names
        bool isFinished = false;
    };

    bool isOver();
    void conclude();
    bool conclude(const CalendarState& state, const std::vector<Exchange>& exchanges);
    void toSync(const Calendars& calendars);
    void print(const char* change, const MRVCalendar& calendar) const;
    void print(const char* change, const MRVCalendar& calendar, const Events& events) const;

    Host& host_;
    Client client_;
    std::mutex mutex_;
    Calendars order_;
    std::map<std::string, CalendarState> states_; ///< by the calendar's href
    bool areListingsOver_ = false;
    Totals totals_;
};

} // namespace Tessel::App
