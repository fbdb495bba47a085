#pragma once

#include "Tessel/CaldavLibrary/Extensions/MRVHeaderAuthorization.h"
#include "Tessel/CaldavLibrary/MRVAuthDelegate.h"
#include "Tessel/CaldavLibrary/MRVClient.h"
#include "Tessel/CaldavLibrary/MRVDataSource.h"
#include "Tessel/CaldavLibrary/MRVSyncDelegate.h"
#include "tests/support/Callback.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Tessel::Test {

/// A host that keeps what it is told: what it holds can be set, what it hears is recorded as lines
/// such as "eventsAdded /cal/: uid, uid".
class TestHost final : public MRVAuthDelegate, public MRVDataSource, public MRVSyncDelegate {
public:
    std::string credential = "Basic dTpw";
    std::vector<std::shared_ptr<MRVCalendar>> heldCalendars;
    std::vector<std::shared_ptr<MRVEvent>> heldEvents;
    std::vector<std::shared_ptr<MRVNotification>> heldNotifications;

    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    /// Whether the line has been heard before the deadline.
    bool hears(const std::string& line) const
    {
        return waitFor([&] {
            const auto all = lines();
            return std::find(all.begin(), all.end(), line) != all.end();
        });
    }
    std::vector<std::shared_ptr<MRVEvent>> lastEvents() const
    {
        const std::lock_guard lock(mutex_);
        return lastEvents_;
    }

    void authorize(const URLRequest& request, bool isGoogle, const std::shared_ptr<MRVAccount>&,
        std::function<void(URLRequest)> completion) override
    {
        auto authorized = request;
        authorized.headers.set(MRVHeaderAuthorization, isGoogle ? "Bearer token" : credential);
        completion(std::move(authorized));
    }

    std::optional<std::vector<std::shared_ptr<MRVCalendar>>> calendars(
        const std::shared_ptr<MRVClient>&) override
    {
        return heldCalendars;
    }
    std::optional<std::vector<std::shared_ptr<MRVEvent>>> events(
        const std::shared_ptr<MRVCalendar>&) override
    {
        return heldEvents;
    }
    std::optional<std::vector<std::shared_ptr<MRVNotification>>> notifications(
        const std::shared_ptr<MRVClient>&) override
    {
        return heldNotifications;
    }

    void calendarsDeleted(const Calendars& list) override { hear("calendarsDeleted", list); }
    void calendarsAdded(const Calendars& list) override { hear("calendarsAdded", list); }
    void calendarsEdited(const Calendars& list) override { hear("calendarsEdited", list); }
    void calendarSyncFinished() override { add("calendarSyncFinished"); }
    void eventsAdded(const Events& list, const std::shared_ptr<MRVCalendar>& calendar,
        const std::shared_ptr<MRVAccount>&, const std::shared_ptr<MRVClient>&) override
    {
        hear("eventsAdded", list, *calendar);
    }
    void eventsEdited(const Events& list, const std::shared_ptr<MRVCalendar>& calendar,
        const std::shared_ptr<MRVAccount>&, const std::shared_ptr<MRVClient>&) override
    {
        hear("eventsEdited", list, *calendar);
    }
    void eventsDeleted(const Events& list, const std::shared_ptr<MRVCalendar>& calendar,
        const std::shared_ptr<MRVAccount>&, const std::shared_ptr<MRVClient>&) override
    {
        hear("eventsDeleted", list, *calendar);
    }
    void eventsSyncFinished(const std::optional<Error>& error,
        const std::shared_ptr<MRVCalendar>& calendar, const std::shared_ptr<MRVClient>&) override
    {
        add("eventsSyncFinished " + calendar->href + (error ? " with an error" : ""));
    }
    void notificationsRemoved(const Notifications& list, const std::shared_ptr<MRVClient>&) override
    {
        hear("notificationsRemoved", list);
    }

private:
    static const std::string& name(const MRVEvent& event) { return event.uid; }
    static const std::string& name(const auto& item) { return item.href; }

    void add(std::string line)
    {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }
    void hear(std::string line, const auto& list, const char* separator = " ")
    {
        for (const auto& item : list)
            line.append(std::exchange(separator, ", ")).append(name(*item));
        add(std::move(line));
    }
    void hear(const std::string& what, const Events& list, const MRVCalendar& calendar)
    {
        hear(what + " " + calendar.href, list, ": ");
        const std::lock_guard lock(mutex_);
        lastEvents_ = list;
    }

    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<std::shared_ptr<MRVEvent>> lastEvents_;
};

/// An account on server.example whose locations are known.
inline std::shared_ptr<MRVAccount> knownAccount()
{
    return std::make_shared<MRVAccount>(MRVAccount {
        .identifier = "account",
        .email = "alice@example.com",
        .serverURL = "https://server.example/",
        .principalURL = "/principal/",
        .calendarHomeURL = "/home/",
    });
}

inline std::shared_ptr<MRVCalendar> calendarAt(
    std::string href, const std::shared_ptr<MRVAccount>& account, std::string cTag = "1")
{
    return std::make_shared<MRVCalendar>(MRVCalendar {
        .calID = account->identifier + href,
        .href = href,
        .displayName = "Work",
        .cTag = std::move(cTag),
        .syncToken = "t",
        .owner = "/principal/",
        .account = account,
    });
}

inline std::shared_ptr<MRVEvent> eventAt(
    std::string href, std::string eTag, const std::shared_ptr<MRVCalendar>& calendar)
{
    return std::make_shared<MRVEvent>(MRVEvent {
        .uid = "uid of " + href,
        .href = href,
        .eTag = std::move(eTag),
        .calendarData = "",
        .status = "CONFIRMED",
        .summary = "",
        .calendar = calendar,
    });
}

} // namespace Tessel::Test
