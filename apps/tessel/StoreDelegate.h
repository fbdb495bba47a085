#pragma once

#include "apps/tessel/AccountStore.h"

#include <Tessel/Tessel.h>

namespace Tessel::App {

/// Answers the library's questions from the store, and ignores what it is told: a command overrides
/// what it wants to hear.
class StoreDelegate : public MRVSyncDelegate, public MRVDataSource {
public:
    using Account = std::shared_ptr<MRVAccount>;
    using Calendar = std::shared_ptr<MRVCalendar>;
    using Client = std::shared_ptr<MRVClient>;

    explicit StoreDelegate(AccountStore& store)
        : store_(store)
    {
    }

    std::optional<Calendars> calendars(const Client& client) override
    {
        return store_.calendars(client->account());
    }
    std::optional<Events> events(const Calendar& calendar) override
    {
        return store_.events(calendar);
    }
    std::optional<Notifications> notifications(const Client& client) override
    {
        return store_.notifications(client->account());
    }

    void calendarsDeleted(const Calendars&) override { }
    void calendarsAdded(const Calendars&) override { }
    void calendarsEdited(const Calendars&) override { }
    void calendarSyncFinished() override { }
    void eventsAdded(const Events&, const Calendar&, const Account&, const Client&) override { }
    void eventsEdited(const Events&, const Calendar&, const Account&, const Client&) override { }
    void eventsDeleted(const Events&, const Calendar&, const Account&, const Client&) override { }
    void eventsSyncFinished(const std::optional<Error>&, const Calendar&, const Client&) override {
    }
    void notificationsRemoved(const Notifications&, const Client&) override { }

protected:
    AccountStore& store_;
};

} // namespace Tessel::App
