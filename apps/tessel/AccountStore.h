#pragma once

#include "apps/tessel/Database.h"

#include <Tessel/Tessel.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::App {

/// What the user holds of his accounts, in an SQLite file. Used from any thread.
class AccountStore {
public:
    using Calendars = std::vector<std::shared_ptr<MRVCalendar>>;
    using Events = std::vector<std::shared_ptr<MRVEvent>>;
    using Notifications = std::vector<std::shared_ptr<MRVNotification>>;

    /// Makes the file and its directory where they are missing; readable for the user alone.
    explicit AccountStore(const std::string& file);

    /// Null for an account that was never discovered.
    std::shared_ptr<MRVAccount> account(const std::string& identifier);
    void save(const MRVAccount& account);

    /// A held calendar's `cTag` is the one at which its events were last complete here, empty
    /// before that: so a calendar whose events could not be fetched counts as edited again next
    /// time.
    Calendars calendars(const std::shared_ptr<MRVAccount>& account);
    /// Keeps what the server lists now, without its `cTag`.
    void save(const MRVCalendar& calendar);
    /// The calendar's events are complete as of its `cTag`.
    void setSynced(const MRVCalendar& calendar);
    void remove(const MRVCalendar& calendar);

    /// The events of a calendar without their `calendarData`.
    Events events(const std::shared_ptr<MRVCalendar>& calendar);
    void save(const MRVCalendar& calendar, const Events& events);
    void remove(const MRVCalendar& calendar, const Events& events);
    /// The iCalendar text of each held event.
    std::vector<std::string> calendarData(const MRVCalendar& calendar);

    /// Held notifications have the path of their resource as `href`, by which the library matches
    /// and deletes them.
    Notifications notifications(const std::shared_ptr<MRVAccount>& account);
    void save(const Notifications& notifications);
    void remove(const MRVNotification& notification);

private:
    std::mutex mutex_;
    Database database_;
};

} // namespace Tessel::App
